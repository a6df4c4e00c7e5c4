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

Value textValue(const std::string& text) {
  return {{REG_SZ}, text};
}

Value wantedValue(const Request& request, ReadKey& key, const std::string& name) {
  if (std::optional<Value> value = key.session().value(key.path(), name)) {
    return std::move(*value);
  }
  if (!request.fallback) {
    key.session().throwAbsent("the value " + inQuotes(name) + " of " + inQuotes(key.name()));
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

ExitCode getValues(const Request& request, Output& output) {
  Json all = Json::array();
  for (const NamedValue& value : wantedValues(request)) {
    if (request.json) {
      all.push(jsonOf(value));
    } else {
      showText(value.value, output);
    }
  }
  if (request.json) {
    output.line((request.values.size() == 1 ? std::move(all).first() : std::move(all)).text());
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
