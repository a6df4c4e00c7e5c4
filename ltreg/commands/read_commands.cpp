#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/read_key.h"
#include "ltreg/registry/key_walk.h"

namespace ltreg {
namespace {

std::string lineOf(const NamedValue& value) {
  return typeWord(value.value) + '\t' + escapeControls(value.name) + '\t' + onOneLine(value.value);
}

Json jsonOf(const std::vector<NamedValue>& values) {
  Json all = Json::array();
  for (const NamedValue& value : values) {
    all.push(jsonOf(value));
  }
  return all;
}

}  // namespace

ExitCode listKey(const Request& request, Output& output) {
  ReadKey key(request);
  const std::vector<std::string> subKeys = key.session().subKeys(key.path());
  const std::vector<NamedValue> values = key.session().values(key.path());
  if (request.json) {
    output.line(
        Json().with("key", key.name()).with("keys", subKeys).with("values", jsonOf(values)).text());
    return key.outcome();
  }
  for (const std::string& name : subKeys) {
    output.line("key\t" + escapeControls(name));
  }
  for (const NamedValue& value : values) {
    output.line(lineOf(value));
  }
  return key.outcome();
}

ExitCode showTree(const Request& request, Output& output) {
  ReadKey key(request);
  Json all = Json::array();
  walkKeys(key.session(), key.path(), [&](const std::string& path) {
    const std::string name = fullName(key.root(), path);
    const std::vector<NamedValue> values = key.session().values(path);
    if (request.json) {
      all.push(Json().with("key", name).with("values", jsonOf(values)));
      return;
    }
    output.line(escapeControls(name));
    for (const NamedValue& value : values) {
      output.line('\t' + lineOf(value));
    }
  });
  if (request.json) {
    output.line(all.text());
  }
  return key.outcome();
}

ExitCode getValue(const Request& request, Output& output) {
  ReadKey key(request);
  const std::optional<Value> value = key.session().value(key.path(), *request.name);
  if (!value) {
    key.session().throwAbsent("the value " + inQuotes(*request.name) + " of " +
                              inQuotes(key.name()));
  }
  if (request.json) {
    output.line(jsonOf(NamedValue{*request.name, *value}).text());
  } else if (value->type == REG_MULTI_SZ) {
    for (const std::string& item : itemsOf(*value)) {
      output.line(item);
    }
  } else {
    output.line(isText(value->type) ? value->data : onOneLine(*value));
  }
  return ExitCode::kDone;
}

ExitCode showPath(const Request& request, Output& output) {
  const enumRegRoot root = parseRoot(*request.key);
  const Backend backend(request, root);
  if (!backend.onFiles()) {
    throw Failure(ExitCode::kAbsent, std::string(LTLib::registryRootName(root)) +
                                         " lies in the operating system's registry, not in a file");
  }
  output.line(backend.storeOf(root));
  return ExitCode::kDone;
}

}  // namespace ltreg
