// Names, the lists of named nodes, the ways to them, and the end of a tree.
#include "ltlib/fileregistry/tree/config_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/tree/folded_name.h"

namespace {

using LTLib::detail::equalNames;
using LTLib::detail::FieldList;
using LTLib::detail::foldedName;
using LTLib::detail::hashOfName;

// In every place of names that are shorter, as long and longer than what is compared at once.
TEST(FoldedName, FoldsAsciiLettersAlone) {
  for (int byte = 1; byte < 256; ++byte) {
    for (std::size_t place = 0; place < 20 * 20; ++place) {
      std::string name(1 + place / 20, '_');
      std::string folded = name;
      char& changed = name[place % name.size()];
      changed = static_cast<char>(byte);
      folded[place % name.size()] =
          static_cast<char>(byte >= 'a' && byte <= 'z' ? byte - 0x20 : byte);
      ASSERT_EQ(foldedName(name), folded) << byte;
      ASSERT_TRUE(equalNames(name, folded) && !equalNames(name, folded + "_")) << byte;
      ASSERT_EQ(hashOfName(name), hashOfName(folded)) << byte;
      changed = '\1';
      ASSERT_EQ(equalNames(name, folded), byte == 1) << byte;
    }
  }
}

// Lists of values and of keys against the simplest thing that can be right, with names that repeat and
// fold.
TEST(ConfigTree, BehavesAsAPlainVector) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 60; ++round) {
    QSCfgTree tree("t");
    QSCfgDataSection& top = tree.top();
    FieldList& fields = top.fields();
    std::vector<std::pair<std::string, std::string>> model;
    std::vector<const QSCfgDataSection*> keys;
    const std::size_t names = 1 + random() % 80;
    const std::size_t removals = 2 + random() % 5;
    for (int step = 0; step < 400; ++step) {
      std::string name = "Name" + std::to_string(random() % 4 == 0 ? 0 : random() % names);
      name = random() % 2 == 0 ? foldedName(name) : name;
      const auto first = std::find_if(model.begin(), model.end(), [&](const auto& entry) {
        return equalNames(entry.first, name);
      });
      const auto place = static_cast<std::size_t>(first - model.begin());
      const std::size_t found = fields.find(name, random() % 90);
      QSCfgDataSection* const key = tree.findSection(top, name);
      ASSERT_EQ(found != FieldList::kNowhere, first != model.end());
      ASSERT_EQ(key, first != model.end() ? keys[place] : nullptr);
      if (first == model.end() || random() % removals == 0) {
        const std::string& text = model.emplace_back(name, std::to_string(step)).second;
        fields.append(QSCfgDataField::copyOf(name, kCfgString, text));
        keys.push_back(&tree.addSection(top, name));
      } else if (random() % 3 == 0) {
        first->second.append(random() % 20, 'x').resize(random() % 25, 'y');
        fields.field(found).setValue(first->second);
      } else {
        ASSERT_EQ(fields.field(found).getValue(), first->second);
        fields.remove(found);
        tree.removeSection(*key);
        model.erase(first);
        keys.erase(keys.begin() + static_cast<std::ptrdiff_t>(place));
      }
      ASSERT_EQ(fields.size() + top.sectionCount(), 2 * model.size());
      if (!model.empty()) {
        const std::size_t position = random() % model.size();
        if (step % 4 == 0) {
          fields.countPlaces();
          top.countPlaces();
        }
        ASSERT_EQ(std::string(fields.at(position).getValue()), model[position].second);
        ASSERT_EQ(fields.field(fields.placeOf(position)).name(), model[position].first);
        ASSERT_EQ(&top.sectionAt(position), keys[position]);
      }
    }
  }
}

// A section is found by what is a path of names, not by a text that happens to look like one.
TEST(ConfigTree, TellsPathsApartThatReadAlike) {
  QSCfgTree tree("t");
  QSCfgDataSection& a = tree.addSection(tree.top(), "A");
  QSCfgDataSection& odd = tree.addSection(a, "B\\C");
  EXPECT_EQ(tree.findPath("a\\b\\c"), nullptr);
  QSCfgDataSection& plain = tree.addSection(tree.addSection(a, "B"), "C");
  EXPECT_EQ(tree.findPath("a\\b\\c"), &plain);
  EXPECT_EQ(tree.findSection(a, "b\\c"), &odd);
  const std::uint64_t generation = tree.generation();
  tree.removeSection(plain);
  EXPECT_NE(tree.generation(), generation);
  EXPECT_EQ(tree.findPath("a\\b\\c"), nullptr);
}

// Long paths are walked from where the last one ended.
TEST(ConfigTree, FollowsLongPathsDownAndUp) {
  const std::string name(200, 'n');
  QSCfgTree tree("t");
  std::string held;
  std::vector<std::string> paths{name};
  std::vector<QSCfgDataSection*> sections{&tree.addSection(tree.top(), name)};
  for (int depth = 1; depth < 5; ++depth) {
    paths.push_back(paths.back() + "\\" + foldedName(name));
    sections.push_back(&tree.addSection(*sections.back(), name));
  }
  for (std::size_t round = 0; round < 2; ++round) {
    for (std::size_t i = 1; i < paths.size(); ++i) {
      EXPECT_EQ(tree.findPath(paths[i]), sections[i]);
      EXPECT_EQ(tree.findPath(paths[4]), sections[4]) << "some names further";
      EXPECT_TRUE(equalNames(sections[i]->path(held), paths[i]));
      EXPECT_EQ(tree.findPath(paths[i] + "\\" + name + "x"), nullptr);
      EXPECT_EQ(tree.findPath(paths[i] + "\\\\" + name), nullptr);
    }
  }
  for (std::size_t i = paths.size(); i-- > 0;) {
    EXPECT_EQ(tree.findPath(paths[i]), i > 0 ? sections[i] : nullptr);
    tree.removeSection(*sections[i]);
    EXPECT_EQ(tree.findPath(paths[i]), nullptr);
  }
}

TEST(ConfigTree, IsDestroyedAtAnyDepth) {
  QSCfgTree tree("t");
  QSCfgDataSection* section = &tree.top();
  for (int depth = 0; depth < 300000; ++depth) {
    section = &tree.addSection(*section, "s");
  }
  EXPECT_EQ(section->sectionCount(), 0u);
}

}  // namespace
