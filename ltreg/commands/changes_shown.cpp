#include "ltreg/commands/changes_shown.h"

#include "ltreg/cli/json.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/branch.h"

namespace ltreg {
namespace {

class Lines {
 public:
  Lines(Output& output, const std::string& defaultName)
      : m_output(output), m_defaultName(defaultName) {}

  void show(const std::string& key, const KeyDifference& difference) {
    // A key that holds nothing of its own shows by itself.
    if (difference.values.empty()) {
      m_output.row((difference.isThere ? "+\t" : "-\t") + escapeControls(key), 4);
    }
    for (const ValueDifference& value : difference.values) {
      show("-\t", key, value.before);
      show("+\t", key, value.after);
    }
  }

 private:
  void show(const char* sign, const std::string& key, const std::optional<NamedValue>& value) {
    if (value) {
      m_output.row(sign + escapeControls(key) + '\t' +
                       escapeControls(value->name.empty() ? m_defaultName : value->name) + '\t' +
                       typeWord(value->value) + '\t' + onOneLine(value->value),
                   4);
    }
  }

  Output& m_output;
  const std::string& m_defaultName;
};

Json jsonOfSide(const std::optional<NamedValue>& value) {
  return value ? Json().with("type", typeWord(value->value)).with("value", jsonOf(value->value))
               : Json();
}

Json jsonOf(const std::string& key, const KeyDifference& difference,
            const std::string& defaultName) {
  Json values = Json::array();
  for (const ValueDifference& value : difference.values) {
    const std::string& name = (value.before ? value.before : value.after)->name;
    values.push(Json()
                    .with("name", name.empty() ? defaultName : name)
                    .with("before", jsonOfSide(value.before))
                    .with("after", jsonOfSide(value.after)));
  }
  const char* change = !difference.wasThere ? "added" : !difference.isThere ? "deleted" : "changed";
  return Json().with("key", key).with("change", change).with("values", std::move(values));
}

}  // namespace

void showDifference(const Request& request, Output& output, const KeyArgument& top,
                    const Difference& difference, const std::string& defaultName) {
  Lines lines(output, defaultName);
  Json all = Json::array();
  for (const KeyDifference& key : difference) {
    const std::string name = fullName(top.root, joinPaths(top.path, key.below));
    if (request.json) {
      all.push(jsonOf(name, key, defaultName));
    } else {
      lines.show(name, key);
    }
  }
  if (request.json) {
    output.json(versionedJson("differences", std::move(all)));
  }
}

ExitCode conclude(const Request& request, Output& output, Session& session, enumRegRoot root) {
  if (Rehearsal* rehearsal = session.rehearsal()) {
    showDifference(request, output, {root, ""}, rehearsal->takeDifference(), "");
  } else {
    session.save();
  }
  return ExitCode::kDone;
}

}  // namespace ltreg
