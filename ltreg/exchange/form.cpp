#include "ltreg/exchange/form.h"

#include <array>

#include "ltreg/cli/shown_text.h"
#include "ltreg/exchange/json_text.h"
#include "ltreg/exchange/reg_text.h"
#include "ltreg/exchange/store_text.h"

namespace ltreg {
namespace {

struct FormRow {
  std::string_view word;
  Form form;
  std::string_view extension;
};

constexpr std::array<FormRow, 3> kForms{
    {{"store", Form::kStore, ".cfg"}, {"json", Form::kJson, ".json"}, {"reg", Form::kReg, ".reg"}}};

std::optional<Form> formByName(std::string_view file) {
  const std::string folded = foldedName(file);
  for (const FormRow& row : kForms) {
    if (folded.ends_with(row.extension)) {
      return row.form;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<Form> formOfWord(std::string_view word) {
  for (const FormRow& row : kForms) {
    if (row.word == word) {
      return row.form;
    }
  }
  return std::nullopt;
}

Form guessForm(std::string_view text, std::string_view file) {
  if (looksLikeRegText(text)) {
    return Form::kReg;
  }
  if (const std::size_t first = text.find_first_not_of("\xEF\xBB\xBF \t\r\n");
      first != std::string_view::npos && text[first] == '{') {
    return Form::kJson;
  }
  return formByName(file).value_or(Form::kStore);
}

Form formOfFile(std::string_view file) {
  return formByName(file).value_or(Form::kReg);
}

Document readForm(Form form, std::string text, const std::string& file) {
  switch (form) {
    case Form::kJson:
      return readJsonText(text, file);
    case Form::kReg:
      return readRegText(std::move(text), file);
    case Form::kStore:
      break;
  }
  return documentOf({}, StoreText(std::move(text), file).content(""));
}

Branch readKeyIn(Form form, std::string text, const std::string& file, const KeyArgument& top) {
  return form == Form::kStore
             ? StoreText(std::move(text), file).content(top.path)
             : branchOf(partOf(readForm(form, std::move(text), file), top), top.path);
}

}  // namespace ltreg
