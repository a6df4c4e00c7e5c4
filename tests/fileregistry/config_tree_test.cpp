#include "ltlib/fileregistry/config_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "ltlib/fileregistry/folded_name.h"
#include "ltlib/fileregistry/key_path.h"

namespace {

using LTLib::detail::cfgResolveSection;
using LTLib::detail::equalNames;
using LTLib::detail::foldedName;
using LTLib::detail::hashOfName;

TEST(FoldedName, FoldsAsciiLettersAlone) {
  for (int byte = 1; byte < 256; ++byte) {
    const std::string name = "prefix__" + std::string(1, static_cast<char>(byte));
    const char folded =
        byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 0x20) : static_cast<char>(byte);
    EXPECT_EQ(foldedName(name).back(), folded) << byte;
    // Every place in names that are shorter, as long and longer than what is compared at once.
    for (std::size_t place = 0; place < 19 * 19; ++place) {
      const std::size_t size = 1 + place / 19;
      std::string other(size, '_');
      std::string same(size, '_');
      other[place % 19 % size] = static_cast<char>(byte);
      same[place % 19 % size] = folded;
      EXPECT_TRUE(equalNames(other, same)) << byte;
      EXPECT_EQ(hashOfName(other), hashOfName(same)) << byte << " in " << size;
      EXPECT_EQ(equalNames(other, std::string(size, '_')), byte == '_') << byte << " in " << size;
    }
  }
  EXPECT_FALSE(equalNames("a", "ab"));
  EXPECT_FALSE(equalNames("@", "`"));
  EXPECT_FALSE(equalNames("[", "{"));
  EXPECT_FALSE(equalNames("\xC3\xA4", "\xC3\x84"));
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
    for (int step = 0; step < 300; ++step) {
      std::string name = "Name" + std::to_string(random() % names);
      if (random() % 2 == 0) {
        name = foldedName(name);
      }
      const auto same = [&](const auto& entry) { return equalNames(entry.first, name); };
      const auto found = std::find_if(model.begin(), model.end(), same);
      if (random() % 3 != 0) {
        const std::string text = std::to_string(step);
        section.addField(std::make_unique<QSCfgDataFieldString>(name, kCfgString, text));
        model.emplace_back(name, text);
      } else if (random() % 4 == 0 && !model.empty()) {
        name = model.front().first;
        ASSERT_TRUE(section.removeField(name));
        model.erase(model.begin());
      } else {
        ASSERT_EQ(section.removeField(name), found != model.end());
        if (found != model.end()) {
          model.erase(found);
        }
      }
      ASSERT_EQ(section.fieldCount(), model.size());
      if (random() % 2 == 0) {
        continue;
      }
      const auto first = std::find_if(model.begin(), model.end(), same);
      const QSCfgDataField* field = section.findField(name);
      ASSERT_EQ(field != nullptr, first != model.end());
      if (field != nullptr) {
        ASSERT_EQ(field->getValue(), first->second);
      }
    }
    for (std::size_t i = 0; i < model.size(); ++i) {
      ASSERT_EQ(section.fieldAt(i).name(), model[i].first);
      ASSERT_EQ(section.fieldAt(i).getValue(), model[i].second);
    }
  }
}

TEST(ConfigTree, RemovesOnlySectionsWithoutSubsections) {
  QSCfgDataSection root("r");
  QSCfgDataSection& a = root.addSection("A");
  a.addField(std::make_unique<QSCfgDataFieldString>("n", kCfgString, "x"));
  a.addSection("B");
  EXPECT_FALSE(root.removeSection("a"));
  EXPECT_FALSE(a.clearFields());
  EXPECT_EQ(a.fieldCount(), 1u);
  EXPECT_FALSE(a.removeSection("C"));
  EXPECT_TRUE(a.removeSection("b"));
  EXPECT_TRUE(root.removeSection("a"));
  EXPECT_EQ(root.sectionCount(), 0u);
}

TEST(ConfigTree, BaseFieldHoldsNothing) {
  QSCfgDataField field("n", kCfgDir);
  field.setValue("x");
  EXPECT_EQ(field.getValue(), "");
  EXPECT_EQ(&field.getValue(), &QSCfgDataField("m", kCfgULong).getValue());
}

TEST(ConfigTree, IsDestroyedAtAnyDepth) {
  QSCfgDataSection root("r");
  QSCfgDataSection* section = &root;
  for (int depth = 0; depth < 300000; ++depth) {
    section = &section->addSection("s");
  }
  EXPECT_EQ(section->sectionCount(), 0u);
}

std::string pathOf(const QSCfgDataSection& root) {
  std::string path;
  const QSCfgDataSection* section = &root;
  while (section->sectionCount() != 0) {
    section = &section->sectionAt(section->sectionCount() - 1);
    path += '/' + section->name();
  }
  return path;
}

TEST(KeyPath, LeadsToSections) {
  const struct {
    const char* path;
    const char* kept;     // what the walk leaves of the path
    const char* created;  // the sections that a creating walk adds
    bool leads;
  } cases[] = {
      {"A\\B", "A\\B", "/A/B", true},
      {"A\\B\\", "A\\B", "/A/B", true},
      {"A\\B\\C\\D\\E", "A\\B\\C\\D\\E", "/A/B/C/D/E", true},
      {"A/B\\C", "A/B\\C", "/A/B/C", true},
      {"A\\\\B", "A\\\\B", "/A/\\B", true},
      {"A\\B\\\\\\C", "A\\B\\\\\\C", "/A/B/\\\\C", true},
      {"A\\\\", "A\\", "/A", false},
      {"A\\B\\\\", "A\\B\\", "/A/B", false},
      {"", "", "", false},
      {"A", "A", "", false},
      {"A\\", "A", "", false},
      {"\\A\\B", "\\A\\B", "", false},
      {"\\", "", "", false},
      {"[A]", "[A]", "/A", true},
      {"x[A]y", "x[A]y", "/A", true},
      {"\\[A\\B]", "\\[A\\B]", "/A\\B", true},
      {"[]", "[]", "", false},
      {"[A", "[A", "", false},
      {"]A[", "]A[", "", false},
      {"[A]\\B", "[A]\\B", "/[A]/B", true},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.path);
    QSCfgDataSection root("r");
    std::string path = row.path;
    EXPECT_EQ(cfgResolveSection(path, root, false), nullptr);
    EXPECT_EQ(path, row.kept);
    EXPECT_EQ(root.sectionCount(), 0u);

    path = row.path;
    const QSCfgDataSection* made = cfgResolveSection(path, root, true);
    EXPECT_EQ(path, row.kept);
    EXPECT_EQ(made != nullptr, row.leads);
    EXPECT_EQ(pathOf(root), row.created);

    path = row.path;
    const QSCfgDataSection* again = cfgResolveSection(path, root, true);
    EXPECT_EQ(again != made, row.leads && LTLib::detail::lacksFirstComponent(row.kept))
        << "a bracketed name adds every time";
  }
}

}  // namespace
