// Where the seeding of the identifiers gets its randomness, replaceable for tests.
#ifndef LTLIB_FOUNDATION_UID_SEED_H
#define LTLIB_FOUNDATION_UID_SEED_H

namespace LTLib::detail {

/// One word from a random device, and the device's own entropy figure.
struct EntropyDraw {
  unsigned int word = 0;
  double entropy = 0;
};

using EntropySource = EntropyDraw (*)();

/// The source in force, at first the standard random device; a source may throw. It is asked once
/// in a process, at the first UID::Generate, so that a change after that has no effect.
[[nodiscard]] EntropySource& entropySource() noexcept;

}  // namespace LTLib::detail

#endif  // LTLIB_FOUNDATION_UID_SEED_H
