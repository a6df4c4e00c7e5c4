// What the two backends answer differently. The tests of the registry objects hold for both, and
// take from here what to expect of the one that serves.
#ifndef LTLIB_TESTS_REGISTRY_BACKEND_FACTS_H
#define LTLIB_TESTS_REGISTRY_BACKEND_FACTS_H

#include "ltlib/ltlib.h"

namespace LTLib::Testing {

/// Whether the backend over store files serves this process. Its binary data ends at a NUL, lists
/// split at backslashes and commas, a value keeps its first type and a type of other systems becomes
/// a text; reading adds keys, and what it lists comes in the order of arrival.
inline bool filesServe() {
  return !GetConfigurationPathname(REG_ROOT_CURRENT_USER).empty();
}

/// One difference.
template <class Answer>
struct Fact {
  Answer file;
  Answer system;  // over the operating system's registry

  Answer operator()() const { return filesServe() ? file : system; }
};

// The system's own numbers, and as results.
inline constexpr int kNotThere = 2;
inline constexpr int kMoreData = 234;
inline constexpr QSResult kKeyNotThere = resultFromSystemError(kNotThere);
inline constexpr QSResult kNoHandle = resultFromSystemError(6);

// Keys and values that are not there, and handles that are none.
inline constexpr Fact<QSResult> kReadMissingKey{kFailure, kKeyNotThere};
inline constexpr Fact<int> kMissing{-1, kNotThere};  // the number of a deletion
inline constexpr Fact<QSResult> kUnknownRoot{-1, kNoHandle};
inline constexpr Fact<QSResult> kKeyHasSubKeys{-1, resultFromSystemError(5)};

// Walks.
inline constexpr Fact<QSResult> kEndOfWalk{-1, resultFromSystemError(259)};
inline constexpr Fact<QSResult> kWalkOfMissingKey{-1, kKeyNotThere};

// Values.
inline constexpr Fact<unsigned int> kTextTerminators{0, 1};  // counted in the size of a text
inline constexpr Fact<unsigned int> kListTerminators{0, 2};  // and of a list, behind its last item
inline constexpr Fact<const char*> kExpandable{"text", "expandable"};  // what REG_EXPAND_SZ becomes
inline constexpr Fact<const char*> kDefaultName{"Default", ""};        // means what null means
inline constexpr Fact<QSResult> kWriteEmptyName{-1, 0};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_REGISTRY_BACKEND_FACTS_H
