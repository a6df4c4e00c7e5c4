#include "ltlib/fileregistry/file_form.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "ltlib/fileregistry/list_text.h"
#include "ltlib/foundation/kqsresult.h"
#include "tests/support/text_tree.h"

namespace {

using LTLib::detail::fieldComesBack;
using LTLib::detail::headerComesBack;
using LTLib::detail::ListLines;
using LTLib::Testing::readText;
using LTLib::Testing::showTree;
using LTLib::Testing::writeText;

TEST(TextWriter, WritesBlocksInTreeOrder) {
  const std::string before =
      "[A\\B]\n\"n\"=dword:1\n\"n\"=string:\"x\"\n[C]\n\"d\"=dir:\"C:\\x\\\"\n[A\\D\\E]\n"
      "\"b\"=binary:00 1F\n\"l\"=liststring:\"one\",\\\n\"two\"\n[A\\F]\n";
  const std::string after =
      "[A\\B]\n\"n\"=ulong:1\n\"n\"=string:\"x\"\n\n[A\\D\\E]\n\"b\"=binary:00 1F\n"
      "\"l\"=liststring:\"one\",\"two\"\n\n[C]\n\"d\"=dir:\"C:\\x\\\"\n\n";
  EXPECT_EQ(writeText(*readText(before).root), after);
  EXPECT_EQ(writeText(*readText(after).root), after);
  EXPECT_EQ(writeText(QSCfgDataSection("root")), "");
}

TEST(TextWriter, WritesAListSetAnewOnSeveralLines) {
  QSCfgDataSection root("root");
  root.addSection("A").addField(std::make_unique<QSCfgDataFieldString>(
      "l", kCfgListString, LTLib::detail::quoteListItems("one\\two\\")));
  const std::string text = writeText(root);
  EXPECT_EQ(text, "[A]\n\"l\"=liststring:\"one\",\\\n\"two\"\n\n");
  EXPECT_EQ(showTree(*readText(text).root), "A|l|4|\"one\",\"two\"\n");
}

TEST(TextWriter, RefusesWhatALoadBroughtInWithoutAWayBack) {
  for (const char* text : {"[A\\\\\\B]\n\"n\"=ulong:1\n", "[A]\n\"n\"=binary:x\\\\",
                           "[A\\B\\\\\\]\n\"n\"=ulong:1\n"}) {
    EXPECT_THROW((void)writeText(*readText(text).root), QSException) << text;
  }
}

TEST(FileForm, OfSectionNames) {
  const struct {
    std::vector<std::string_view> names;
    bool comesBack;
  } cases[] = {
      {{"A"}, true},          {{"A", "B", "C"}, true},   {{" A ", "[B"}, true},
      {{"A]x", "B"}, true},   {{"A", "B]"}, false},      {{"A]"}, false},
      {{"A", "\\B"}, false},  {{"A", "B\\"}, false},     {{"A\nB"}, false},
      {{"\\A"}, true},        {{"A\\B"}, false},         {{"\"q\"", ";"}, true},
      {{"A", "B\nC"}, false}, {{"\xC3\xA4", "="}, true},
  };
  for (const auto& row : cases) {
    std::string label;
    for (const std::string_view name : row.names) {
      label.append(name) += '/';
    }
    EXPECT_EQ(headerComesBack(row.names), row.comesBack) << label;
  }
}

TEST(FileForm, OfFields) {
  const struct {
    const char* name;
    QSCfgTypeCode code;
    const char* text;
    ListLines lines;
    bool comesBack;
  } cases[] = {
      {"n", kCfgString, "", ListLines::kKept, true},
      {"n", kCfgString, "say \"hi\" \\", ListLines::kKept, true},
      {"n", kCfgDir, "C:\\x\\", ListLines::kKept, true},
      {"a=b:c", kCfgString, "x", ListLines::kKept, true},
      {"my ulong", kCfgULong, "1", ListLines::kKept, true},
      {"[n]", kCfgBinary, " [x] ", ListLines::kKept, true},
      {"n", kCfgBinary, "", ListLines::kKept, true},
      {"", kCfgString, "x", ListLines::kKept, false},
      {"a\"b", kCfgString, "x", ListLines::kKept, false},
      {"a\nb", kCfgString, "x", ListLines::kKept, false},
      {"n", kCfgString, "a\nb", ListLines::kKept, false},
      {"n", kCfgString, "a\\\nb", ListLines::kKept, false},
      {"n", kCfgString, "\"a\",\\\n\"b\"", ListLines::kKept, false},
      {"n", kCfgString, "\"a\",\\\n\"b\"", ListLines::kJoined, true},
      {"n", kCfgULong, "1\n2", ListLines::kKept, false},
      {"n", kCfgULong, "1\\", ListLines::kKept, false},
      {"n", kCfgBinary, "x\\", ListLines::kJoined, false},
      {"n", kCfgListString, "\"a\",\\\n\"b\"", ListLines::kJoined, true},
      {"n", kCfgListString, "\"a\nb\"", ListLines::kJoined, false},
      {"n", static_cast<QSCfgTypeCode>(9), "x", ListLines::kKept, false},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(fieldComesBack(row.name, row.code, row.text, row.lines), row.comesBack)
        << row.name << '|' << row.code << '|' << row.text;
  }
}

// What the check lets through comes back from a whole file, beside neighbours that it could spoil.
TEST(FileForm, HoldsForRandomNamesAndTexts) {
  const unsigned seed = std::random_device()();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  const std::string bytes = "ab\\\\\"\"[]=:,\n\r ;string";
  const auto text = [&](std::size_t longest) {
    std::string made(random() % (longest + 1), ' ');
    for (char& byte : made) {
      byte = bytes[random() % bytes.size()];
    }
    return made;
  };
  int accepted = 0;
  for (int round = 0; round < 20000; ++round) {
    const std::string parent = text(4);
    const std::string section = text(4);
    const std::string name = text(5);
    const std::string value = text(8);
    const auto code = static_cast<QSCfgTypeCode>(random() % 5);
    if (parent.empty() || section.empty() || !headerComesBack({parent, section}) ||
        !fieldComesBack(name, code, value, ListLines::kKept)) {
      continue;
    }
    ++accepted;
    QSCfgDataSection root("root");
    QSCfgDataSection& made = root.addSection(parent).addSection(section);
    made.addField(std::make_unique<QSCfgDataFieldString>(name, code, value));
    made.addField(std::make_unique<QSCfgDataFieldString>("last", kCfgULong, "1"));
    root.addSection("K").addField(std::make_unique<QSCfgDataFieldString>("k", kCfgULong, "2"));
    ASSERT_EQ(showTree(*readText(writeText(root)).root), showTree(root));
  }
  EXPECT_GT(accepted, 100);
}

}  // namespace
