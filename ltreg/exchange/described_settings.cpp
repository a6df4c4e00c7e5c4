#include "ltreg/exchange/described_settings.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <sstream>

#include "ltlib/settings/value.h"
#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/exchange/document.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

using nlohmann::json;

// Whether a value is one of a type and within its bounds, as the program that reads it has it.
using IsWithin = bool (*)(const DescribedSetting& setting, const LTLib::Value& value,
                          std::error_code& code);

template <class T>
bool isWithin(const DescribedSetting& setting, const LTLib::Value& value, std::error_code& code) {
  const std::optional<T> got = value.as<T>(code);
  if (!got || setting.least.empty()) {
    return got.has_value();
  }
  const auto least = LTLib::Value({REG_SZ, setting.least}).as<T>();
  const auto most = LTLib::Value({REG_SZ, setting.most}).as<T>();
  return !(least && *got < *least) && !(most && *most < *got);
}

bool isWithinIntegers(const DescribedSetting& setting, const LTLib::Value& value,
                      std::error_code& code) {
  return setting.least.starts_with('-') ? isWithin<std::int64_t>(setting, value, code)
                                        : isWithin<std::uint64_t>(setting, value, code);
}

// Its bounds are those of the number that it is kept as.
bool isBool(const DescribedSetting& /*setting*/, const LTLib::Value& value, std::error_code& code) {
  return value.as<bool>(code).has_value();
}

bool isOneOfNames(const DescribedSetting& setting, const LTLib::Value& value,
                  std::error_code& code) {
  const auto name = value.as<std::string>(code);
  return name &&
         std::find(setting.names.begin(), setting.names.end(), *name) != setting.names.end();
}

struct SettingKind {
  const char* word;
  IsWithin isWithin;
};

constexpr SettingKind kSettingKinds[] = {
    {"bool", isBool},
    {"integer", isWithinIntegers},
    {"float", isWithin<float>},
    {"double", isWithin<double>},
    {"text", isWithin<std::string>},
    {"path", isWithin<std::string>},
    {"list", isWithin<std::vector<std::string>>},
    {"bytes", isWithin<std::vector<std::byte>>},
    {"seconds", isWithin<std::chrono::seconds>},
    {"milliseconds", isWithin<std::chrono::milliseconds>},
    {"name", isOneOfNames},
};

const SettingKind* kindOfWord(const std::string& word) {
  const auto* const found =
      std::find_if(std::begin(kSettingKinds), std::end(kSettingKinds),
                   [&](const SettingKind& kind) { return word == kind.word; });
  return found != std::end(kSettingKinds) ? found : nullptr;
}

std::string faultOfSetting(const DescribedSetting& setting, const Value& value) {
  std::error_code code;
  if (kindOfWord(setting.type)->isWithin(setting, LTLib::Value({value.type, value.data}), code)) {
    return {};
  }
  const std::string shown = inQuotes(commasForTabs(onOneLine(value)));
  if (code == LTLib::SettingsErrc::kWrongType) {
    return "the " + typeWord(value) + ' ' + shown + " is no " + setting.type;
  }
  const std::string bounds = setting.bounds();
  return shown + (bounds.empty() ? " does not fit" : " is not " + bounds) +
         didYouMean(value.data, setting.names);
}

std::string withCommas(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) {
    all.append(&text == &texts.front() ? "" : ", ").append(text);
  }
  return all;
}

class DescriptionLine {
 public:
  DescriptionLine(const std::string& file, std::size_t number) : m_file(file), m_number(number) {}

  [[nodiscard]] DescribedGroup read(const std::string& text) const {
    try {
      return groupOf(json::parse(text));
    } catch (const json::exception& error) {
      const std::string what = error.what();
      bad("no description of settings: " +
          escapeControls(what.substr(std::min(what.find("] ") + 2, what.size()))));
    } catch (const Failure& failure) {
      if (failure.place().line != 0) {
        throw;
      }
      bad(failure.what());
    }
  }

 private:
  [[noreturn]] void bad(const std::string& what) const {
    throw Failure(ExitCode::kBadInput, placeIn(m_file, m_number) + what, {m_file, m_number});
  }

  [[nodiscard]] DescribedGroup groupOf(const json& object) const {
    if (object.at("format") != "ltlib-settings" || object.at("version") != 1) {
      bad("no description of settings in version 1, which alone this ltreg knows");
    }
    DescribedGroup group{parseKey(object.at("key").get<std::string>()), {}};
    for (const json& each : object.at("settings")) {
      group.settings.push_back(settingOf(each));
    }
    return group;
  }

  [[nodiscard]] DescribedSetting settingOf(const json& object) const {
    DescribedSetting setting{
        object.at("name"),         object.at("type"),        withCommas(object.at("default")),
        object.value("least", ""), object.value("most", ""), object.value("names", json::array()),
        object.value("help", "")};
    if (kindOfWord(setting.type) == nullptr) {
      bad(inQuotes(setting.type) + " is no type of a setting");
    }
    return setting;
  }

  const std::string& m_file;
  std::size_t m_number;
};

}  // namespace

std::string DescribedSetting::bounds() const {
  if (type != "name") {
    return least.empty() ? std::string() : "from " + least + " to " + most;
  }
  return "one of " + withCommas(names);
}

std::vector<DescribedGroup> readDescribedSettings(const std::string& file) {
  std::vector<DescribedGroup> groups;
  std::istringstream lines(readTextFile(file));
  std::string line;
  for (std::size_t number = 1; std::getline(lines, line); ++number) {
    if (line.find_first_not_of(" \t\r") != std::string::npos) {
      groups.push_back(DescriptionLine(file, number).read(line));
    }
  }
  return groups;
}

std::vector<DescribedSetting> settingsOf(const std::vector<DescribedGroup>& groups,
                                         const KeyArgument& key) {
  std::vector<DescribedSetting> settings;
  for (const DescribedGroup& group : groups) {
    if (group.key.root == key.root && sameName(expandPath(group.key.path), key.path)) {
      settings.insert(settings.end(), group.settings.begin(), group.settings.end());
    }
  }
  return settings;
}

std::vector<JudgedSetting> judgeSettings(Session& session, const std::string& path,
                                         const std::vector<DescribedSetting>& described) {
  std::vector<NamedValue> values =
      session.keyExists(path) ? session.values(path) : std::vector<NamedValue>();
  std::vector<JudgedSetting> judged;
  std::vector<std::string> names;
  for (const DescribedSetting& setting : described) {
    const std::string name = nameInBackend(setting.name, session.onFiles());
    const auto found = std::find_if(values.begin(), values.end(), [&](const NamedValue& value) {
      return sameName(value.name, name);
    });
    const bool isSet = found != values.end();
    judged.push_back(
        {setting, isSet, isSet ? faultOfSetting(setting, found->value) : std::string()});
    judged.back().setting.name = name;
    names.push_back(name);
    if (isSet) {
      values.erase(found);
    }
  }
  for (const NamedValue& value : values) {
    judged.push_back({{}, true, "not described" + didYouMean(value.name, names)});
    judged.back().setting.name = value.name;
  }
  return judged;
}

}  // namespace ltreg
