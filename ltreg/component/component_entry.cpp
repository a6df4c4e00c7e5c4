#include "ltreg/component/component_entry.h"

#include <filesystem>
#include <system_error>

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

// What has no folder the system looks for in its own places, and what depends on the folder of a
// process may be there for others.
bool isLibraryGone(const Value& entry) {
  const std::filesystem::path library = fileOf(entry.data);
  std::error_code error;
  return entry.type == REG_SZ && library.is_absolute() &&
         !std::filesystem::exists(library, error) && !error;
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
      if (sameName(each.name, kLibraryValue)) {
        classes.push_back({id, each.value});
        break;
      }
    }
  }
  return classes;
}

}  // namespace ltreg
