// Numbers of the operating system's registry that the library itself goes by.
#ifndef LTLIB_REGISTRY_SYSTEM_NUMBERS_H
#define LTLIB_REGISTRY_SYSTEM_NUMBERS_H

namespace LTLib::detail {

inline constexpr int kNotFound = 2;
inline constexpr int kInvalidData = 13;
inline constexpr int kMoreData = 234;

/// How often a value is asked for in a row that others change between two queries.
inline constexpr int kMostQueries = 100;

}  // namespace LTLib::detail

#endif  // LTLIB_REGISTRY_SYSTEM_NUMBERS_H
