// Where a key or a value comes from: all that lies between a program's call and the line in a file.
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <utility>

#include "ltlib/platform/tool_process.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/read_key.h"
#include "ltreg/component/component_entry.h"
#include "ltreg/component/library_classes.h"
#include "ltreg/exchange/described_settings.h"
#include "ltreg/registry/references.h"

namespace ltreg {
namespace {

using Columns = std::vector<std::pair<const char*, std::string>>;

// What is told, as lines of columns or as an object whose members are objects, and arrays of them
// where there may be several.
class Explanation {
 public:
  void add(const std::string& what, Columns columns) {
    m_rows.push_back({what, std::move(columns), false});
  }
  void addOneOf(const std::string& what, Columns columns) {
    m_rows.push_back({what, std::move(columns), true});
  }

  void show(bool asJson, Output& output) const {
    if (asJson) {
      output.json(versionedJson("explanation", json()));
      return;
    }
    for (const Row& row : m_rows) {
      std::string line = row.what;
      for (const auto& [name, text] : row.columns) {
        line.append("\t").append(escapeControls(text));
      }
      output.row(line, 1);
    }
  }

 private:
  struct Row {
    std::string what;
    Columns columns;
    bool oneOf;
  };

  static Json objectOf(const Columns& columns) {
    Json object;
    for (const auto& [name, text] : columns) {
      object = std::move(object).with(name, text);
    }
    return object;
  }

  [[nodiscard]] Json json() const {
    Json all;
    std::map<std::string, Json> several;
    for (const Row& row : m_rows) {
      if (row.oneOf) {
        several.try_emplace(row.what + 's', Json::array())
            .first->second.push(objectOf(row.columns));
      } else {
        all = std::move(all).with(row.what.c_str(), objectOf(row.columns));
      }
    }
    for (auto& [name, array] : several) {
      all = std::move(all).with(name.c_str(), std::move(array));
    }
    return all;
  }

  std::vector<Row> m_rows;
};

// Of the two systems one alone has a registry, and backslashes in its paths.
std::string whyThatBackend(const Request& request, bool onFiles) {
  if (request.store || request.backend) {
    return request.store ? "--store names a store file" : "--backend names it";
  }
  if (!onFiles) {
    return "no registry.dat lies beside the library";
  }
  return std::filesystem::path::preferred_separator == '\\'
             ? "registry.dat lies beside the library"
             : "this system has no registry of its own";
}

std::string whyThatStore(const Request& request, enumRegRoot root) {
  const std::string name = LTLib::registryRootName(root);
  if (request.store) {
    return "--store";
  }
  return std::getenv(name.c_str()) != nullptr ? "the environment variable " + name
                                              : "the default name in the current folder";
}

class Explainer {
 public:
  explicit Explainer(const Request& request)
      : m_request(request),
        m_given(parseKey(*request.key)),
        m_key(m_given),
        m_session(request, m_key, Access::kRead) {}

  ExitCode explain(Output& output) {
    const std::string name = fullName(m_key.root, m_key.path);
    m_all.add("key", {{"name", name}});
    if (!m_request.literal) {
      tellSteps(m_given.path, "key-step");
    }
    m_all.add("backend", {{"name", m_session.onFiles() ? kFileBackend : kSystemBackend},
                          {"why", whyThatBackend(m_request, m_session.onFiles())}});
    if (m_session.onFiles()) {
      tellStore();
    }
    const bool found = m_session.keyExists(m_key.path) && (!m_request.name || tellValue());
    tellClass();
    if (m_request.settings) {
      tellSettings(*m_request.settings);
    }
    m_all.show(m_request.json, output);
    if (!found) {
      m_session.throwAbsent(
          "the " +
          (m_request.name ? "value " + inQuotes(*m_request.name) + " of " : std::string("key ")) +
          inQuotes(name));
    }
    return ExitCode::kDone;
  }

 private:
  // Gives the text without references, or nothing where it does not expand, which is told.
  std::optional<std::string> tellSteps(const std::string& text, const char* what) {
    std::optional<std::string> expanded;
    std::vector<LTLib::ExpansionStep> steps;
    std::string why;
    try {
      expanded = text.find('%') != std::string::npos ? expandReferences(text, steps) : text;
    } catch (const Failure& failure) {
      why = failure.what();
    }
    for (const LTLib::ExpansionStep& step : steps) {
      m_all.addOneOf(what, {{"name", step.name}, {"value", step.replacement}, {"text", step.text}});
    }
    if (!expanded) {
      m_all.add("not-expanded", {{"why", why}});
    }
    return expanded;
  }

  void tellStore() {
    const std::string store = Backend(m_request, m_key.root).storeOf(m_key.root);
    m_all.add("store", {{"file", store}, {"from", whyThatStore(m_request, m_key.root)}});
    const LTLib::StorePlace place =
        LTLib::findInStore(store, m_key.path, m_request.name.value_or(""));
    if (place.header != 0) {
      m_all.add("header", {{"line", std::to_string(place.header)}});
    }
    if (place.value != 0) {
      m_all.add("line", {{"line", std::to_string(place.value)}});
    }
    for (const LTLib::StoreLock& lock : LTLib::storeLocks(store)) {
      const std::string holder =
          lock.holder != 0 ? "held by process " + std::to_string(lock.holder) + ' ' + lock.program
                           : "held by no process that the system tells";
      m_all.addOneOf("lock", {{"name", lock.name}, {"place", lock.place}, {"holder", holder}});
    }
  }

  bool tellValue() {
    const std::optional<Value> value = m_session.value(m_key.path, *m_request.name);
    if (!value) {
      return false;
    }
    m_all.add("value", {{"type", typeWord(*value)}, {"raw", onOneLine(*value)}});
    if (isText(value->type)) {
      if (const auto expanded = tellSteps(value->data, "step")) {
        m_all.add("expanded", {{"text", *expanded}});
      }
    }
    tellReads();
    return true;
  }

  // As programs read: by the objects of the library, over the backend that they get.
  void tellReads() {
    const bool same =
        m_session.onFiles() ==
        (dynamic_cast<QSFileRegistryManager*>(QSRegistryManager::GetInstance()) != nullptr);
    CQSRegValue value;
    if (!same || value.SetKey(m_given.root, m_given.path.c_str()) < 0 ||
        value.SetName(m_request.name->c_str()) < 0) {
      return;
    }
    unsigned long number = 0;
    tellRead("number", value.Read(number), [&] { return std::to_string(number); });
    char* text = nullptr;
    tellRead("text", value.Read(text), [&] { return std::string(text); });
    void* bytes = nullptr;
    unsigned long size = 0;
    tellRead("bytes", value.Read(bytes, size), [&] {
      return bytes != nullptr ? hexDigits({static_cast<const char*>(bytes), size}) : std::string();
    });
  }

  template <class Shown>
  void tellRead(const char* as, QSResult result, Shown shown) {
    m_all.addOneOf("read", {{"as", as},
                            {"result", inHexadecimal(result)},
                            {"value", result >= 0 ? shown() : std::string()}});
  }

  // Of the value, or of all that the key has or might have.
  void tellSettings(const std::string& file) {
    for (const JudgedSetting& each :
         judgeSettings(m_session, m_key.path, settingsOf(readDescribedSettings(file), m_key))) {
      const DescribedSetting& setting = each.setting;
      if (!m_request.name || sameName(setting.name, *m_request.name)) {
        m_all.addOneOf("setting", {{"name", setting.name},
                                   {"type", setting.type},
                                   {"default", setting.fallback},
                                   {"bounds", setting.bounds()},
                                   {"help", setting.help},
                                   {"verdict", each.verdict()}});
      }
    }
  }

  // A class's entry is there for its library, of which a process of its own says what a load does.
  void tellClass() {
    const std::string classes = m_key.root == REG_ROOT_LOCAL_MACHINE ? classesPath() : "";
    const std::string_view path = m_key.path;
    if (classes.empty() || path.size() <= classes.size() + 1 || path[classes.size()] != '\\' ||
        !sameName(path.substr(0, classes.size()), classes)) {
      return;
    }
    const std::string_view rest = path.substr(classes.size() + 1);
    const std::string id(rest.substr(0, rest.find('\\')));
    std::string classKey = classes;
    classKey.append("\\").append(id);
    const std::optional<Value> library = m_session.value(classKey, kLibraryValue);
    m_all.add(
        "class",
        {{"id", id}, {"library", library ? library->data : std::string()}, {"check", checkOf(id)}});
    // One without a folder is looked for in the system's own places.
    if (library && library->type == REG_SZ && fileOf(library->data).has_parent_path()) {
      tellOffer(id, library->data);
    }
  }

  void tellOffer(const std::string& id, const std::string& library) {
    for (const LTLib::ComponentOffer& offer : LTLib::libraryOffers(library).classes) {
      if (sameName(offer.id, id)) {
        m_all.add("offer", {{"interfaces", interfacesOf(offer)}, {"words", offer.words}});
        return;
      }
    }
  }

  static std::string classesPath() {
    try {
      return expandReferences(classesKey().path);
    } catch (const Failure&) {
      return {};
    }
  }

  [[nodiscard]] std::string checkOf(const std::string& id) const {
    std::vector<std::string> words{"component", "check"};
    if (m_request.store) {
      words.insert(words.end(), {"--store", *m_request.store});
    }
    if (m_request.backend) {
      words.insert(words.end(), {"--backend", *m_request.backend});
    }
    words.insert(words.end(), {"--", id});
    const std::string told =
        LTLib::Platform::runChild(LTLib::Platform::programPath(), words, std::chrono::minutes(1))
            .output;
    // One line, the class and a colon ahead of what is wrong with it.
    const std::string head = escapeControls(id) + ": ";
    return told.starts_with(head) ? told.substr(head.size(), told.find('\n') - head.size())
                                  : "the check told nothing";
  }

  const Request& m_request;
  KeyArgument m_given;
  KeyArgument m_key;
  Session m_session;
  Explanation m_all;
};

}  // namespace

ExitCode explainEntry(const Request& request, Output& output) {
  return Explainer(request).explain(output);
}

}  // namespace ltreg
