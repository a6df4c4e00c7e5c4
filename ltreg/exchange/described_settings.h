// The settings of programs as these describe them, and what is wrong with those that are there.
//
// A line of the file is an object of JSON, which LTLib::Group::description of ltlib/settings.h writes:
//
//   {"format":"ltlib-settings","version":1,"key":"HKEY_LOCAL_MACHINE\\%SharedRoot%\\Net","settings":[
//    {"name":"Port","type":"integer","default":["8080"],"least":"1","most":"65535","help":"..."}]}
#ifndef LTREG_EXCHANGE_DESCRIBED_SETTINGS_H
#define LTREG_EXCHANGE_DESCRIBED_SETTINGS_H

#include <optional>
#include <string>
#include <vector>

#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/session.h"
#include "ltreg/registry/value.h"

namespace ltreg {

struct DescribedSetting {
  std::string name;
  std::string type;
  std::string fallback;  // the items of a list with commas
  std::string least;     // both empty where there are no bounds
  std::string most;
  std::vector<std::string> names;  // empty where any will do
  std::string help;

  /// What a value may be, as "from 1 to 9"; empty where the type says it all.
  [[nodiscard]] std::string bounds() const;
};

struct DescribedGroup {
  KeyArgument key;  // its references as they are
  std::vector<DescribedSetting> settings;
};

/// Throws Failure, with the line where one makes no sense.
[[nodiscard]] std::vector<DescribedGroup> readDescribedSettings(const std::string& file);

/// A setting that is described, or set, or both.
struct JudgedSetting {
  DescribedSetting setting;  // with no type where it is not described
  bool isSet = false;
  std::string fault;  // empty where it is as it should be

  [[nodiscard]] std::string verdict() const {
    return !fault.empty() ? fault : isSet ? "as it should be" : "not set";
  }
};

/// What the groups of a key describe, whose references are replaced.
[[nodiscard]] std::vector<DescribedSetting> settingsOf(const std::vector<DescribedGroup>& groups,
                                                       const KeyArgument& key);

/// Those of a key, which need not be there: first as they are described, then those that are set alone.
[[nodiscard]] std::vector<JudgedSetting> judgeSettings(
    Session& session, const std::string& path, const std::vector<DescribedSetting>& described);

}  // namespace ltreg

#endif  // LTREG_EXCHANGE_DESCRIBED_SETTINGS_H
