// Names, the list of named nodes, and the end of a tree.
#include "ltlib/fileregistry/tree/config_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "ltlib/fileregistry/tree/folded_name.h"

namespace {

using LTLib::detail::equalNames;
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

// The list against the simplest thing that can be right, with names that repeat and fold.
TEST(NodeList, BehavesAsAPlainVector) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 50; ++round) {
    QSCfgDataSection section("s");
    std::vector<std::pair<std::string, std::string>> model;
    const std::size_t names = 1 + random() % 40;
    const std::size_t removals = 2 + random() % 5;
    for (int step = 0; step < 300; ++step) {
      std::string name = "Name" + std::to_string(random() % 4 == 0 ? 0 : random() % names);
      name = random() % 2 == 0 ? foldedName(name) : name;
      const auto first = std::find_if(model.begin(), model.end(), [&](const auto& entry) {
        return equalNames(entry.first, name);
      });
      if (random() % 6 == 0) {
        const QSCfgDataField* field = section.findField(name);
        ASSERT_EQ(field != nullptr ? field->getValue() : "none",
                  first != model.end() ? first->second : "none");
      } else if (random() % removals != 0) {
        const std::string& text = model.emplace_back(name, std::to_string(step)).second;
        section.addField(std::make_unique<QSCfgDataFieldString>(name, kCfgString, text));
      } else {
        ASSERT_EQ(section.removeField(name), first != model.end());
        model.erase(first, first + (first != model.end() ? 1 : 0));
      }
      ASSERT_EQ(section.fieldCount(), model.size());
      if (const std::size_t place = random(); step % 8 != 0 && !model.empty()) {
        ASSERT_EQ(section.fieldAt(place % model.size()).getValue(),
                  model[place % model.size()].second);
      }
    }
  }
}

TEST(ConfigTree, IsDestroyedAtAnyDepth) {
  QSCfgDataSection root("r");
  QSCfgDataSection* section = &root;
  for (int depth = 0; depth < 300000; ++depth) {
    section = &section->addSection("s");
  }
  EXPECT_EQ(section->sectionCount(), 0u);
}

}  // namespace
