#include <algorithm>
#include <cstdint>

#include "ltreg/cli/json.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/exchange/described_settings.h"
#include "ltreg/registry/backend.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/store_access.h"
#include "ltreg/registry/store_messages.h"

namespace ltreg {
namespace {

constexpr enumRegRoot kAllRoots[] = {REG_ROOT_CURRENT_USER, REG_ROOT_CURRENT_CONFIG, REG_ROOT_USERS,
                                     REG_ROOT_CLASSES_ROOT, REG_ROOT_LOCAL_MACHINE};

Json faultJson(const LTLib::StoreFault& fault) {
  return Json()
      .with("line", fault.line == 0 ? Json() : Json(std::uint64_t{fault.line}))
      .with("message", LTLib::describeStoreFault(fault.kind))
      .with("text", fault.text);
}

// Takes the reports of store files and the faults of settings, and tells of them, one by one or as a
// whole.
class Reports {
 public:
  Reports(const Request& request, Output& output) : m_request(request), m_output(output) {}

  ExitCode add(const std::string& pathname) {
    const LTLib::StoreReport report = checkedStore(pathname);
    if (m_request.json) {
      m_all.push(jsonOf(pathname, report));
    } else {
      tell(pathname, report);
    }
    return !report.loads() ? ExitCode::kStoreFailed
           : report.exists ? ExitCode::kDone
                           : ExitCode::kAbsent;
  }

  // Settings are looked at where the stores load.
  ExitCode finish(ExitCode code, enumRegRoot root) {
    if (m_request.settings && code != ExitCode::kStoreFailed) {
      addSettings(root);
    }
    if (m_request.json) {
      Json all = versionedJson("stores", std::move(m_all));
      m_output.json(m_request.settings ? std::move(all).with("settings", std::move(m_faults))
                                       : std::move(all));
    }
    return m_isWrong ? ExitCode::kBadInput : code;
  }

 private:
  static Json jsonOf(const std::string& pathname, const LTLib::StoreReport& report) {
    Json warnings = Json::array();
    for (const LTLib::StoreFault& warning : report.warnings) {
      warnings.push(faultJson(warning));
    }
    return Json()
        .with("file", pathname)
        .with("exists", report.exists)
        .with("loads", report.loads())
        .with("fault", report.fault ? faultJson(*report.fault) : Json())
        .with("lines", std::uint64_t{report.lineCount})
        .with("values", std::uint64_t{report.valueCount})
        .with("warningCount", std::uint64_t{report.warningCount})
        .with("warnings", std::move(warnings))
        .with("left", report.left);
  }

  // Of all roots where none is given. A key that several groups share is one.
  void addSettings(enumRegRoot root) {
    const std::vector<DescribedGroup> groups = readDescribedSettings(*m_request.settings);
    Request quiet(m_request);
    quiet.quiet = true;
    std::vector<std::string> seen;
    for (const DescribedGroup& group : groups) {
      if (root != REG_ROOT_NONE && root != group.key.root) {
        continue;
      }
      KeyArgument key = group.key;
      Session session(quiet, key, Access::kRead);
      const std::string name = fullName(key.root, key.path);
      if (std::find(seen.begin(), seen.end(), foldedName(name)) == seen.end()) {
        seen.push_back(foldedName(name));
        for (const JudgedSetting& each :
             judgeSettings(session, key.path, settingsOf(groups, key))) {
          tellFault(name, each);
        }
      }
    }
  }

  void tellFault(const std::string& key, const JudgedSetting& each) {
    if (each.fault.empty()) {
      return;
    }
    m_isWrong = true;
    const std::string& name = each.setting.name;
    if (m_request.json) {
      m_faults.push(Json().with("key", key).with("name", name).with("fault", each.fault));
    } else {
      m_output.line(escapeControls(key) + '\t' + escapeControls(name) + '\t' +
                    escapeControls(each.fault));
    }
  }

  // The warnings, and a line that sums up.
  void tell(const std::string& pathname, const LTLib::StoreReport& report) {
    for (const LTLib::StoreFault& warning : report.warnings) {
      m_output.line(placeOf(pathname, warning));
    }
    if (const std::string left = whatIsLeft(pathname, report); !left.empty()) {
      m_output.line(left);
    }
    std::string sum = "does not exist";
    if (!report.loads()) {
      complain(whyNotLoaded(pathname, report));
      sum = "does not load";
    } else if (report.exists) {
      sum = "loads, " + countOf(report.lineCount, "line") + ", " +
            countOf(report.valueCount, "value") + ", " + countOf(report.warningCount, "warning");
    }
    m_output.line(escapeControls(pathname) + ": " + sum);
  }

  const Request& m_request;
  Output& m_output;
  Json m_all = Json::array();
  Json m_faults = Json::array();
  bool m_isWrong = false;  // a setting
};

}  // namespace

ExitCode checkStores(const Request& request, Output& output) {
  const enumRegRoot root = request.key ? parseRoot(*request.key) : REG_ROOT_NONE;
  const Backend backend(request, root != REG_ROOT_NONE ? root : REG_ROOT_LOCAL_MACHINE);
  Reports reports(request, output);
  if (!backend.onFiles()) {
    const char kNoStore[] =
        "there is no store to check: the roots lie in the operating system's registry";
    request.json ? complain(kNoStore) : output.line(kNoStore);
    return reports.finish(request.key ? ExitCode::kAbsent : ExitCode::kDone, root);
  }
  if (request.store) {
    return reports.finish(reports.add(*request.store), root);
  }
  if (root != REG_ROOT_NONE) {
    return reports.finish(reports.add(backend.storeOf(root)), root);
  }
  // That a root has no store file yet is nothing wrong.
  ExitCode worst = ExitCode::kDone;
  for (const enumRegRoot each : kAllRoots) {
    const std::string pathname = backend.manager().GetConfigurationPathname(each);
    if (!pathname.empty() && reports.add(pathname) == ExitCode::kStoreFailed) {
      worst = ExitCode::kStoreFailed;
    }
  }
  return reports.finish(worst, root);
}

}  // namespace ltreg
