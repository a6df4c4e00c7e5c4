// Names of keys and values compare without regard to the case of the ASCII letters; every other
// byte counts as it is, and the locale plays no part.
#ifndef LTLIB_FILEREGISTRY_TREE_FOLDED_NAME_H
#define LTLIB_FILEREGISTRY_TREE_FOLDED_NAME_H

#include <cstdint>
#include <string>
#include <string_view>

namespace LTLib::detail {

/// Whether two names are the same name.
[[nodiscard]] bool equalNames(std::string_view left, std::string_view right) noexcept;

/// The name with its letters a to z made capital.
[[nodiscard]] std::string foldedName(std::string_view name);

/// Equal for equal names.
[[nodiscard]] std::uint64_t hashOfName(std::string_view name) noexcept;

/// The hash of a text that comes in parts: equal for equal names however they are cut, so that a path's
/// goes on from that of a shorter one.
class PathHash {
 public:
  void add(std::string_view part) noexcept;
  [[nodiscard]] std::uint64_t value() const noexcept;

 private:
  std::uint64_t m_eights = 0;  // of all whole eights of bytes
  std::uint64_t m_rest = 0;    // the folded bytes behind them, the first one lowest
  std::uint32_t m_size = 0;    // of the whole text, modulo its type
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_FOLDED_NAME_H
