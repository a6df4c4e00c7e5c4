// What people type who know the system's own tool, by the commands that do it.
#include <array>
#include <utility>

#include "ltreg/commands/commands.h"
#include "ltreg/registry/backend.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/value.h"

namespace ltreg {
namespace {

constexpr std::array<std::pair<const char*, const char*>, 7> kSystemTypes{{
    {"REG_SZ", "string"},
    {"REG_DWORD", "ulong"},
    {"REG_BINARY", "binary"},
    {"REG_MULTI_SZ", "list"},
    {"REG_EXPAND_SZ", "expand"},
    {"REG_QWORD", "qword"},
    {"REG_NONE", "none"},
}};

std::optional<std::string> ownTypeWord(const std::optional<std::string>& type) {
  for (const auto& [systems, own] : kSystemTypes) {
    if (type == systems) {
      return own;
    }
  }
  return type;
}

// The default value, which has no name for that tool, is named in store files.
std::string nameOf(const Request& request, const std::string& name) {
  const bool onFiles = Backend(request, parseKey(*request.key).root).onFiles();
  return name.empty() && onFiles ? "Default" : name;
}

// That tool parts the items of a list by a backslash and a zero.
std::vector<std::string> itemsIn(const std::string& data) {
  std::vector<std::string> items;
  for (std::size_t start = 0; start < data.size();) {
    const std::size_t end = std::min(data.find("\\0", start), data.size());
    items.push_back(data.substr(start, end - start));
    start = end + 2;
  }
  return items;
}

}  // namespace

std::vector<std::string> typeWordsOfAdd() {
  std::vector<std::string> words = typeWords();
  for (const auto& [systems, own] : kSystemTypes) {
    words.emplace_back(systems);
  }
  return words;
}

ExitCode queryKey(const Request& request, Output& output) {
  const std::optional<std::string>& name = request.valueName ? request.valueName : request.name;
  if (!name) {
    return listKey(request, output);
  }
  Request get = request;
  get.values = {nameOf(request, *name)};
  return getValues(get, output);
}

ExitCode addValue(const Request& request, Output& output) {
  // With --value in its place, what stands behind the key is the text.
  std::vector<std::string> words = request.values;
  if (request.valueName && request.name) {
    words.insert(words.begin(), *request.name);
  }
  const std::optional<std::string>& name = request.valueName ? request.valueName : request.name;
  if (!name) {
    throw Failure(ExitCode::kUsage, "a value's NAME is missing; a key comes with its first value");
  }
  Request set = request;
  set.name = nameOf(request, *name);
  set.type = ownTypeWord(request.type);
  set.values = std::move(words);
  if (request.data) {
    set.values = set.type == "list" ? itemsIn(*request.data) : std::vector{*request.data};
  }
  return setValue(set, output);
}

}  // namespace ltreg
