// Registries as JSON, which keeps all types.
//
//   {"format": "ltreg-export", "version": 1,
//    "keys": [{"key": "HKEY_LOCAL_MACHINE\\A\\B",
//              "values": [{"name": "n", "type": "ulong", "value": 1}]}]}
//
// A key's default value has the empty name. The value of a number's type is a number, that of a list
// an array of texts, that of all others the bytes as a text. Where bytes are no UTF-8, a text is
// {"base64": "..."}. A key or a value with "deleted": true is one to delete.
#ifndef LTREG_EXCHANGE_JSON_TEXT_H
#define LTREG_EXCHANGE_JSON_TEXT_H

#include <string>

#include "ltreg/exchange/document.h"

namespace ltreg {

/// `file` is for messages. Throws Failure with the line where the text is no JSON, of another format
/// or version, or no registry.
[[nodiscard]] Document readJsonText(const std::string& text, const std::string& file);

/// A line for each key and each value.
[[nodiscard]] std::string writeJsonText(const Document& document);

}  // namespace ltreg

#endif  // LTREG_EXCHANGE_JSON_TEXT_H
