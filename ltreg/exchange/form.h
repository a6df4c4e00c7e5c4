// The forms in which a registry leaves and comes.
#ifndef LTREG_EXCHANGE_FORM_H
#define LTREG_EXCHANGE_FORM_H

#include <optional>
#include <string>
#include <string_view>

#include "ltreg/exchange/document.h"

namespace ltreg {

enum class Form {
  kStore,  // the text of a store file
  kJson,
  kReg,  // that of the tools of Windows
};

/// The form of a word of --format; none if it is no such word.
[[nodiscard]] std::optional<Form> formOfWord(std::string_view word);

/// The form of a text by how it begins, or else by the file's name.
[[nodiscard]] Form guessForm(std::string_view text, std::string_view file);

/// The form for a file that is to be written, by its name; the one of other tools where that tells
/// nothing.
[[nodiscard]] Form formOfFile(std::string_view file);

/// Reads a text. `file` is for messages. Throws Failure at the first line that makes no sense.
[[nodiscard]] Document readForm(Form form, std::string text, const std::string& file);

/// As readForm, and gives what the text makes of a key out of nothing, whatever the text's root is if
/// it names but one.
[[nodiscard]] Branch readKeyIn(Form form, std::string text, const std::string& file,
                               const KeyArgument& top);

}  // namespace ltreg

#endif  // LTREG_EXCHANGE_FORM_H
