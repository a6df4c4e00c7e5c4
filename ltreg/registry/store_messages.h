// What a store's report says, in words.
#ifndef LTREG_REGISTRY_STORE_MESSAGES_H
#define LTREG_REGISTRY_STORE_MESSAGES_H

#include <string>

#include "ltlib/ltlib.h"

namespace ltreg {

/// A fault or warning as "FILE:LINE: what is wrong: the line's text".
[[nodiscard]] std::string placeOf(const std::string& pathname, const LTLib::StoreFault& fault);

/// Why the store does not load, and what to do. Requires: it does not.
[[nodiscard]] std::string whyNotLoaded(const std::string& pathname,
                                       const LTLib::StoreReport& report);

/// What a save would drop or write otherwise, as lines of that shape, the first of them; empty where
/// there is nothing.
[[nodiscard]] std::string whatWouldBeLost(const std::string& pathname,
                                          const LTLib::StoreReport& report);

/// That the store is missing beside what a save has left; empty where that is not so.
[[nodiscard]] std::string whatIsLeft(const std::string& pathname, const LTLib::StoreReport& report);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_STORE_MESSAGES_H
