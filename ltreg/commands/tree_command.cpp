// A key and all below it: as a tree for people, and line by line for scripts.
#include <algorithm>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/html_page.h"
#include "ltreg/commands/read_key.h"
#include "ltreg/registry/branch.h"
#include "ltreg/registry/key_walk.h"

namespace ltreg {
namespace {

constexpr char kBranch[] = "├─ ";
constexpr char kLastBranch[] = "└─ ";
constexpr char kTrunk[] = "│  ";
constexpr char kNoTrunk[] = "   ";

// Draws the branches that lead to each key and value. Does not recurse, since a store is as deep as
// its file says.
class Drawing {
 public:
  Drawing(ReadKey& key, Output& output) : m_key(key), m_output(output) {}

  void draw() {
    m_output.line(m_output.painted(Colour::kKey, escapeControls(m_key.name())));
    drawBelow(m_key.path(), "");
    while (!m_pending.empty()) {
      const Branch branch = std::move(m_pending.back());
      m_pending.pop_back();
      m_output.line(branch.trunk + (branch.isLast ? kLastBranch : kBranch) +
                    m_output.painted(Colour::kKey, escapeControls(lastComponent(branch.path))));
      drawBelow(branch.path, branch.trunk + (branch.isLast ? kNoTrunk : kTrunk));
    }
  }

 private:
  struct Branch {
    std::string path;
    std::string trunk;
    bool isLast;
  };

  void drawBelow(const std::string& path, const std::string& trunk) {
    const std::vector<NamedValue> values = m_key.session().values(path);
    const std::vector<std::string> children = m_key.session().subKeys(path);
    drawValues(values, trunk, !children.empty());
    for (auto child = children.rbegin(); child != children.rend(); ++child) {
      m_pending.push_back(
          {path.empty() ? *child : path + '\\' + *child, trunk, child == children.rbegin()});
    }
  }

  void drawValues(const std::vector<NamedValue>& values, const std::string& trunk, bool goesOn) {
    std::size_t width = 0;
    for (const NamedValue& value : values) {
      width = std::max(width, widthOf(escapeControls(value.name)));
    }
    for (const NamedValue& value : values) {
      const std::string name = escapeControls(value.name);
      const bool isLast = !goesOn && &value == &values.back();
      std::string line = trunk;
      line.append(isLast ? kLastBranch : kBranch).append(name).append(blanksBehind(name, width));
      line.append("  ").append(m_output.painted(Colour::kType, typeWord(value.value)));
      m_output.line(line.append("  ").append(commasForTabs(onOneLine(value.value))));
    }
  }

  ReadKey& m_key;
  Output& m_output;
  std::vector<Branch> m_pending;
};

Json jsonOfAll(ReadKey& key) {
  Json all = Json::array();
  walkKeys(key.session(), key.path(), [&](const std::string& path) {
    all.push(Json()
                 .with("key", fullName(key.root(), path))
                 .with("values", jsonOf(key.session().values(path))));
  });
  return versionedJson("keys", std::move(all));
}

}  // namespace

ExitCode showTree(const Request& request, Output& output) {
  ReadKey key(request);
  if (request.html) {
    ltreg::Branch branch;
    walkKeys(key.session(), key.path(), [&](const std::string& path) {
      branch.push_back({pathBelow(path, key.path()), key.session().values(path)});
    });
    showTreePage(output, {key.root(), key.path()}, branch);
  } else if (request.json) {
    output.json(jsonOfAll(key));
  } else if (output.look().columns) {
    Drawing(key, output).draw();
  } else {
    walkKeys(key.session(), key.path(), [&](const std::string& path) {
      output.line(escapeControls(fullName(key.root(), path)));
      for (const NamedValue& value : key.session().values(path)) {
        output.line('\t' + lineOf(value));
      }
    });
  }
  return key.outcome();
}

// Scripts take each line as it comes, and so find the full name in every one.
ExitCode listAll(const Request& request, Output& output) {
  ReadKey key(request);
  if (request.json) {
    output.json(jsonOfAll(key));
    return key.outcome();
  }
  walkKeys(key.session(), key.path(), [&](const std::string& path) {
    const std::string name = fullName(key.root(), path);
    output.row("key\t" + escapeControls(name), 1);
    for (const NamedValue& value : key.session().values(path)) {
      output.row(lineOf(value, name), 3);
    }
  });
  return key.outcome();
}

}  // namespace ltreg
