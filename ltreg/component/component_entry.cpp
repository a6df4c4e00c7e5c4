#include "ltreg/component/component_entry.h"

#include <exception>

#include "ltreg/cli/shown_text.h"

namespace ltreg {
namespace {

constexpr char kClasses[] = "%CLASSID%";

}  // namespace

KeyArgument classesKey() {
  return {REG_ROOT_LOCAL_MACHINE, kClasses};
}

KeyArgument classKey(const std::string& id) {
  if (id.empty()) {
    throw Failure(ExitCode::kBadInput, "a class has an identifier; the empty text is none");
  }
  return {REG_ROOT_LOCAL_MACHINE, std::string(kClasses) + '\\' + id};
}

// A narrow text of its own the standard library would take for one of another encoding.
std::filesystem::path fileOf(const std::string& text) {
  try {
    return std::u8string(text.begin(), text.end());
  } catch (const std::exception&) {
    return text;
  }
}

std::string textOf(const std::filesystem::path& file) {
  const std::u8string text = file.u8string();
  return {text.begin(), text.end()};
}

std::vector<ClassEntry> classesBelow(Session& session, const std::string& path) {
  std::vector<ClassEntry> classes;
  if (!session.keyExists(path)) {
    return classes;
  }
  for (const std::string& id : session.subKeys(path)) {
    std::string key = path;
    key.append("\\").append(id);
    for (const NamedValue& each : session.values(key)) {
      if (each.value.type == REG_SZ && sameName(each.name, kLibraryValue)) {
        classes.push_back({id, each.value.data});
        break;
      }
    }
  }
  return classes;
}

}  // namespace ltreg
