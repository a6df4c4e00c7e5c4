// All that may fail is done first, on the reading's own nodes: the tree changes by moves alone, into
// room that was made for them.
#include "ltlib/fileregistry/store/load_merge.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/tree/folded_name.h"

namespace LTLib::detail {
namespace {

// A section that was read, and the one of its path in the tree, if there is any.
struct Pair {
  QSCfgDataSection* read;
  QSCfgDataSection* kept;
  std::string path;
};

// What there is to move from the reading into the tree, which has room for all of it.
struct Plan {
  std::vector<std::pair<QSCfgDataSection*, QSCfgDataSection*>> moves;
  std::vector<std::unique_ptr<QSCfgDataSection>> parts;  // sections that the tree has as well
  QSCfgDelivered delivered;                              // by this reading
};

// A line feed stands in no name that was read, so that it parts path and name.
std::string fieldKey(const std::string& path, const QSCfgDataField& field) {
  return path + '\n' + foldedName(field.name());
}

// Counts by name and not by place: whoever mends the file may move lines about.
void leaveNewFields(const Pair& pair, const QSCfgDelivered& earlier, QSCfgDelivered& delivered) {
  for (std::unique_ptr<QSCfgDataField>& field : pair.read->releaseFields()) {
    const std::string key = fieldKey(pair.path, *field);
    const auto before = earlier.find(key);
    if (++delivered[key] > (before != earlier.end() ? before->second : 0)) {
      pair.read->addField(std::move(field));
    }
  }
}

// Takes the reading apart, and leaves in each part what the tree lacks. Works level by level: the
// tree is as deep as the file says.
Plan planMoves(QSCfgDataSection& read, QSCfgDataSection& tree, const QSCfgDelivered& earlier) {
  Plan plan;
  std::vector<Pair> pending;
  pending.push_back({&read, &tree, {}});
  while (!pending.empty()) {
    const Pair pair = std::move(pending.back());
    pending.pop_back();
    leaveNewFields(pair, earlier, plan.delivered);
    for (std::unique_ptr<QSCfgDataSection>& child : pair.read->releaseSections()) {
      QSCfgDataSection* kept =
          pair.kept != nullptr ? pair.kept->findSection(child->name()) : nullptr;
      pending.push_back({child.get(), kept, pair.path + '\\' + foldedName(child->name())});
      if (kept != nullptr) {
        plan.parts.push_back(std::move(child));
      } else {
        pair.read->adoptSection(std::move(child));
      }
    }
    if (pair.kept != nullptr) {
      pair.kept->reserveFor(*pair.read);
      plan.moves.emplace_back(pair.read, pair.kept);
    }
  }
  return plan;
}

}  // namespace

void takeOverReading(QSCfgRoot& root, QSCfgDataSection& read, bool whole) {
  QSCfgDataSection& tree = *root.section;
  // The usual case, a first load into an empty tree, takes the top sections over as they are.
  if (whole && root.delivered.empty() && tree.sectionCount() == 0) {
    tree.reserveFor(read);
    tree.takeOver(read);
    return;
  }
  Plan plan = planMoves(read, tree, root.delivered);
  // An attempt that broke off early delivers less than one before it.
  for (const auto& [key, count] : root.delivered) {
    std::size_t& most = plan.delivered[key];
    most = std::max(most, count);
  }
  for (const auto& [from, to] : plan.moves) {
    to->takeOver(*from);
  }
  // No attempt follows a whole load.
  if (whole) {
    plan.delivered.clear();
  }
  root.delivered.swap(plan.delivered);
}

}  // namespace LTLib::detail
