// The tree that is to be is made beside the one that is, and changes places with it when it is whole.
#include "ltlib/fileregistry/store/load_merge.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/tree/folded_name.h"

namespace LTLib::detail {
namespace {

// Goes through a tree from the top down, parents ahead of their children and these in their order,
// and hands each section to `take` with what `take` gave for its parent. Without recursion: a tree is
// as deep as its file says.
template <class Taken, class Take>
void walkDown(const QSCfgTree& tree, Taken forTop, Take take) {
  std::vector<std::pair<const QSCfgDataSection*, Taken>> pending;
  pending.emplace_back(&tree.top(), std::move(forTop));
  while (!pending.empty()) {
    const auto [section, taken] = std::move(pending.back());
    pending.pop_back();
    const std::size_t first = pending.size();
    for (std::size_t i = 0; i < section->sectionCount(); ++i) {
      const QSCfgDataSection& child = section->sectionAt(i);
      pending.emplace_back(&child, take(child, taken));
    }
    std::reverse(pending.begin() + static_cast<std::ptrdiff_t>(first), pending.end());
  }
}

// A copy stands in no line.
void copyField(const QSCfgDataField& field, QSCfgTree& tree, QSCfgDataSection& section) {
  using Form = QSCfgDataField::Form;
  section.fields().append({tree.texts().keep(field.name()), field.type(),
                           tree.texts().keep(field.getValue()),
                           field.form() == Form::kLacks ? Form::kLacks : Form::kHas});
}

std::unique_ptr<QSCfgTree> copyOf(const QSCfgTree& tree) {
  auto copy = std::make_unique<QSCfgTree>(tree.top().name());
  walkDown(tree, &copy->top(), [&](const QSCfgDataSection& child, QSCfgDataSection* parent) {
    QSCfgDataSection& made = copy->addSection(*parent, child.name());
    for (std::size_t i = 0; i < child.fields().size(); ++i) {
      copyField(child.fields().at(i), *copy, made);
    }
    return &made;
  });
  return copy;
}

// A section of the tree, and its folded path. A line feed stands in no name that was read, so that it
// parts path and name.
struct Place {
  QSCfgDataSection* section;
  std::string path;
};

// Adds what earlier readings did not bring, and notes what this one does. Counts by name and not by
// place: whoever mends the file may move lines about.
void addNewFields(const QSCfgDataSection& from, const Place& to, QSCfgTree& tree,
                  const QSCfgDelivered& earlier, QSCfgDelivered& delivered) {
  for (std::size_t i = 0; i < from.fields().size(); ++i) {
    const QSCfgDataField& field = from.fields().at(i);
    const std::string key = to.path + '\n' + foldedName(field.name());
    const auto before = earlier.find(key);
    if (++delivered[key] > (before != earlier.end() ? before->second : 0)) {
      copyField(field, tree, *to.section);
    }
  }
}

}  // namespace

void takeOverReading(QSCfgRoot& root, std::unique_ptr<QSCfgTree> read, bool whole) {
  // The usual case, a first load into an empty tree.
  if (whole && root.delivered.empty() && root.tree->top().sectionCount() == 0) {
    root.tree = std::move(read);
    return;
  }
  std::unique_ptr<QSCfgTree> merged = copyOf(*root.tree);
  QSCfgDelivered delivered;
  walkDown(*read, Place{&merged->top(), {}},
           [&](const QSCfgDataSection& child, const Place& parent) {
             Place place{&merged->findOrAddSection(*parent.section, child.name()),
                         parent.path + '\\' + foldedName(child.name())};
             addNewFields(child, place, *merged, root.delivered, delivered);
             return place;
           });
  // An attempt that broke off early delivers less than one before it.
  for (const auto& [key, count] : root.delivered) {
    std::size_t& most = delivered[key];
    most = std::max(most, count);
  }
  // No attempt follows a whole load.
  if (whole) {
    delivered.clear();
  }
  root.delivered.swap(delivered);
  root.tree = std::move(merged);
}

}  // namespace LTLib::detail
