// Why a store file cannot hold something.
#ifndef LTREG_REGISTRY_VALUE_FORM_H
#define LTREG_REGISTRY_VALUE_FORM_H

#include <string>
#include <string_view>
#include <vector>

namespace ltreg {

/// What is wrong with a key, a value's name or its words for the file backend, with advice; empty
/// if nothing is. The format has no escapes, so that some bytes cannot stand in some places.
[[nodiscard]] std::string whyNoKeyForm(std::string_view path);
[[nodiscard]] std::string whyNoNameForm(std::string_view name);
[[nodiscard]] std::string whyNoValueForm(unsigned int type, const std::vector<std::string>& words);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_VALUE_FORM_H
