#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/read_key.h"
#include "ltreg/registry/absent.h"

namespace ltreg {
namespace {

Value textValue(const std::string& text) {
  return {{REG_SZ}, text};
}

Value wantedValue(const Request& request, ReadKey& key, const std::string& name) {
  if (std::optional<Value> value = key.session().value(key.path(), name)) {
    return std::move(*value);
  }
  if (!request.fallback) {
    throwAbsentValue(key.session(), key.key(), name);
  }
  return textValue(*request.fallback);
}

// The default stands for what is absent, be it the value, its key or its store, and for nothing else.
std::vector<NamedValue> wantedValues(const Request& request) {
  std::vector<NamedValue> wanted;
  try {
    ReadKey key(request);
    for (const std::string& name : request.values) {
      wanted.push_back({name, wantedValue(request, key, name)});
      Value& value = wanted.back().value;
      value.inHex = value.inHex && !(request.asText && value.type == REG_BINARY);
    }
  } catch (const Failure& failure) {
    if (failure.code() != ExitCode::kAbsent || !request.fallback) {
      throw;
    }
    for (const std::string& name : request.values) {
      wanted.push_back({name, textValue(*request.fallback)});
    }
  }
  return wanted;
}

void showText(const Value& value, Output& output) {
  if (value.type == REG_MULTI_SZ) {
    for (const std::string& item : itemsOf(value)) {
      output.line(item);
    }
  } else {
    output.line(isText(value.type) ? value.data : onOneLine(value));
  }
}

}  // namespace

ExitCode listKey(const Request& request, Output& output) {
  if (request.recursive) {
    return listAll(request, output);
  }
  ReadKey key(request);
  const std::vector<std::string> subKeys = key.session().subKeys(key.path());
  const std::vector<NamedValue> values = key.session().values(key.path());
  if (request.json) {
    output.json(
        versionedJson("key", key.name()).with("keys", subKeys).with("values", jsonOf(values)));
    return key.outcome();
  }
  for (const std::string& name : subKeys) {
    output.row("key\t" + escapeControls(name), 2);
  }
  for (const NamedValue& value : values) {
    output.row(lineOf(value), 2);
  }
  return key.outcome();
}

ExitCode getValues(const Request& request, Output& output) {
  const std::vector<NamedValue> values = wantedValues(request);
  if (request.json) {
    output.json(versionedJson("values", jsonOf(values)));
    return ExitCode::kDone;
  }
  for (const NamedValue& value : values) {
    showText(value.value, output);
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
  if (request.json) {
    output.json(
        versionedJson("root", LTLib::registryRootName(root)).with("file", backend.storeOf(root)));
  } else {
    output.line(backend.storeOf(root));
  }
  return ExitCode::kDone;
}

}  // namespace ltreg
