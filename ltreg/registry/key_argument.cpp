#include "ltreg/registry/key_argument.h"

#include <algorithm>

#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/references.h"

namespace ltreg {
namespace {

struct ShortForm {
  const char* name;
  enumRegRoot root;
};

constexpr ShortForm kShortForms[] = {
    {"HKCU", REG_ROOT_CURRENT_USER}, {"HKCC", REG_ROOT_CURRENT_CONFIG}, {"HKU", REG_ROOT_USERS},
    {"HKCR", REG_ROOT_CLASSES_ROOT}, {"HKLM", REG_ROOT_LOCAL_MACHINE},
};

constexpr char kAdvice[] =
    " (known are HKLM, HKCU, HKCC, HKU, HKCR and the long forms such as HKEY_LOCAL_MACHINE; a key"
    " is written as 'HKLM\\Software\\Demo', in quotes for the shell)";

// Takes one trailing backslash off.
std::string tidyPath(std::string_view path) {
  if (path.starts_with('\\') || path.find("\\\\") != std::string_view::npos) {
    throw Failure(ExitCode::kBadInput, "the path " + inQuotes(path) +
                                           " has an empty component; write one backslash between"
                                           " two components and none in front");
  }
  // Typed by completion of a shell, or copied from where paths end so.
  path.remove_suffix(path.ends_with('\\') ? 1 : 0);
  return std::string(path);
}

}  // namespace

enumRegRoot parseRoot(std::string_view text) {
  for (const ShortForm& form : kShortForms) {
    if (sameName(text, form.name) || sameName(text, LTLib::registryRootName(form.root))) {
      return form.root;
    }
  }
  throw Failure(ExitCode::kBadInput, inQuotes(text) + " is no root of the registry" +
                                         didYouMean(text, {"HKLM", "HKCU", "HKCC", "HKU", "HKCR"}) +
                                         kAdvice);
}

KeyArgument parseKey(std::string_view text) {
  const std::size_t end = text.find('\\');
  KeyArgument key;
  key.root = parseRoot(text.substr(0, end));
  if (end != std::string_view::npos) {
    key.path = tidyPath(text.substr(end + 1));
  }
  return key;
}

std::string expandPath(const std::string& path) {
  std::string expanded;
  try {
    expanded = expandReferences(path);
  } catch (const Failure& failure) {
    const bool hasHint = failure.code() == ExitCode::kBadInput;
    throw Failure(failure.code(),
                  std::string(failure.what()) +
                      (hasHint ? "; --literal takes percent signs in KEY as they are" : ""));
  }
  return tidyPath(expanded);
}

std::string fullName(enumRegRoot root, std::string_view path) {
  std::string name = LTLib::registryRootName(root);
  if (!path.empty()) {
    name.append("\\").append(path);
  }
  return name;
}

std::string_view lastComponent(std::string_view path) {
  return path.substr(path.rfind('\\') + 1);
}

std::string_view parentPath(std::string_view path) {
  const std::size_t end = path.rfind('\\');
  return end != std::string_view::npos ? path.substr(0, end) : std::string_view{};
}

std::string pathBelow(const std::string& path, std::string_view top) {
  return path.substr(std::min(top.empty() ? 0 : top.size() + 1, path.size()));
}

bool isAtOrBelow(std::string_view path, std::string_view top) {
  return top.empty() || sameName(path, top) ||
         (path.size() > top.size() && path[top.size()] == '\\' &&
          sameName(path.substr(0, top.size()), top));
}

}  // namespace ltreg
