#include "ltlib/fileregistry/text_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/text_tree.h"

namespace {

using namespace std::string_literals;

using LTLib::detail::ReadResult;
using LTLib::Testing::Reading;
using LTLib::Testing::readText;
using LTLib::Testing::showTree;

constexpr char kQuoteMessage[] =
    "#***** ERROR ***** : Syntax error in command line # %\n"
    "\tString value is delimited by quotes\n\t";
constexpr char kPlainMessage[] = "#***** ERROR ***** : Syntax error in command line # %\n\t";

std::string message(std::string form, int line, const std::string& text) {
  form.replace(form.find('%'), 1, std::to_string(line));
  return form + text + "\n\n";
}

struct Case {
  const char* label;
  std::string text;
  std::string tree;
  std::string messages;
};

void expectTrees(const std::vector<Case>& cases) {
  for (const Case& row : cases) {
    SCOPED_TRACE(row.label);
    const Reading reading = readText(row.text);
    EXPECT_EQ(showTree(*reading.root), row.tree);
    EXPECT_EQ(reading.messages, row.messages);
    EXPECT_EQ(reading.result, ReadResult::kWhole);
    EXPECT_FALSE(reading.threw);
  }
}

TEST(TextReader, ReadsASampleOfEverything) {
  const Reading reading = readText(R"(; store file of one root
[Software\Example\Settings]
"Default"=string:"0"
"Title"=string:"Hello, world"
"InstallDir"=dir:"C:\Program Files\Example\"
"Retries"=ulong:3
"Mode"=dword:2
"Blob"=binary:00 1F A0
"Paths"=liststring:"one",\
"two",\
"three"

[Software\Example\Settings\Sub]
"Long"=string:"first half \
second half"
)");
  EXPECT_EQ(showTree(*reading.root),
            "Software\n"
            "Software/Example\n"
            "Software/Example/Settings|Default|1|0\n"
            "Software/Example/Settings|Title|1|Hello, world\n"
            "Software/Example/Settings|InstallDir|2|C:\\Program Files\\Example\\\n"
            "Software/Example/Settings|Retries|0|3\n"
            "Software/Example/Settings|Mode|0|2\n"
            "Software/Example/Settings|Blob|3|00 1F A0\n"
            "Software/Example/Settings|Paths|4|\"one\",\"two\",\"three\"\n"
            "Software/Example/Settings/Sub|Long|1|first half second half\n");
  EXPECT_EQ(reading.messages, "");
  EXPECT_EQ(reading.lineCount, 15);
}

TEST(TextReader, TakesOrSkipsLinesByTheirFirstByte) {
  expectTrees({
      {"empty file", "", "", ""},
      {"line feeds only", "\n\n\n", "", ""},
      {"no line feed at the end", "[A]\n\"n\"=ulong:1", "A|n|0|1\n", ""},
      {"comments", "# x\n//\n;[B]\n[A]\nn=1\n", "A\n", ""},
      {"indented header", "[A]\n  [B]\n\"n\"=ulong:1\n", "A|n|0|1\n", ""},
      {"indented value", "[A]\n \"n\"=ulong:1\n", "A\n", ""},
      {"byte order mark", "\xEF\xBB\xBF[A]\n\"n\"=ulong:1\n", "", ""},
      {"value ahead of the first header", "\"n\"=string:\"x\\\n[B]\"\n[A]\n", "A\n", ""},
      {"carriage returns are bytes", "[A]\r\n\"n\"=ulong:1\r\n", "A|n|0|1\r\n", ""},
      {"NUL at the front of a line", "[A]\n\0\"n\"=ulong:1\n\"m\"=ulong:2\n"s, "A|m|0|2\n", ""},
      {"NUL in a line",
       "[A]\n\"n\"=ulong:12\0"
       "34\n"s,
       "A|n|0|12\n", ""},
  });
}

TEST(TextReader, FindsSectionsByTheirHeaders) {
  expectTrees({
      {"one component", "[A]\n\"n\"=ulong:1\n", "A|n|0|1\n", ""},
      {"blanks belong to names", "[ A \\ B ]\n", " A \n A / B \n", ""},
      {"bytes behind the bracket", "[A\\B] trailing words\n", "A\nA/B\n", ""},
      {"letter case of the first arrival", "[A\\B]\n\"n\"=ulong:1\n[a\\b]\n\"m\"=ulong:2\n",
       "A\nA/B|n|0|1\nA/B|m|0|2\n", ""},
      {"bytes above 0x7F are exact", "[\xC3\xA4]\n[\xC3\x84]\n", "\xC3\xA4\n\xC3\x84\n", ""},
      {"other ASCII is exact", "[a{]\n[a[]\n", "a{\na[\n", ""},
      {"bracket in a parent", "[A]x\\B]\n", "A]x\nA]x/B\n", ""},
      {"leading backslash", "[\\A\\B]\n", "\\A\\B\n", ""},
      {"a backslash alone", "[\\]\n", "\\\n", ""},
      {"two backslashes lose one", "[A\\\\B]\n", "A\nA/B\n", ""},
      {"three backslashes lose one", "[A\\\\\\B]\n", "A\nA/\\B\n", ""},
      {"two backslashes end the components", "[A\\\\B\\C]\n", "A\nA/B\\C\n", ""},
      {"backslash at the end of the line", "[A\\B]\\\n", "A\nA/B\n", ""},
      {"repeated headers are one section",
       "[A\\B]\n\"n\"=ulong:1\n[C]\n[A\\D]\n[A\\B]\n\"m\"=ulong:2\n",
       "A\nA/B|n|0|1\nA/B|m|0|2\nA/D\nC\n", ""},
  });
}

// Nothing behind such a header is read, what came before it stays, and no message is printed.
TEST(TextReader, StopsAtAHeaderThatNamesNoSection) {
  const struct {
    const char* header;
    const char* left;
  } cases[] = {
      {"[]", ""},
      {"[", ""},
      {"[A", ""},
      {"[A\\]", "A\n"},
      {"[A\\B", "A\n"},
      {"[A\\\\]", "A\n"},
      {"[\\", ""},
      {"[A] x\\y", "A] x\n"},
      {"[A\\B] trailing\\words", "A\nA/B] trailing\n"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.header);
    const Reading reading = readText(std::string("[K]\n\"n\"=ulong:1\n") + row.header + "\n[L]\n");
    EXPECT_EQ(reading.result, ReadResult::kBadHeader);
    EXPECT_EQ(showTree(*reading.root), std::string("K|n|0|1\n") + row.left);
    EXPECT_EQ(reading.messages, "");
    EXPECT_EQ(reading.lineCount, 3);
  }
}

Case value(const char* label, const std::string& lines, const std::string& fields,
           const std::string& messages = {}) {
  return {label, "[A]\n" + lines + "\n", fields, messages};
}

TEST(TextReader, FindsNameAndTypeOfAValue) {
  expectTrees({
      value("no closing quote", "\"a=ulong:1", "A\n"),
      value("empty name", "\"\"=ulong:1", "A\n"),
      value("no equals sign", "\"a\" ulong:1", "A\n"),
      value("no colon", "\"a\"=ulong 1", "A\n"),
      value("empty type word", "\"a\"=:1", "A\n"),
      value("unknown type word", "\"a\"=float:1", "A\n"),
      value("type word in other case", "\"a\"=Ulong:5", "A\n"),
      value("blank in the type word", "\"a\"= ulong:5", "A\n"),
      value("unknown type takes no continuation", "\"a\"=x:1\\\n\"b\"=ulong:2", "A|b|0|2\n"),
      value("words between name and equals sign", "\"a\" is set =ulong:1", "A|a|0|1\n"),
      value("the same name twice", "\"a\"=ulong:1\n\"A\"=ulong:2", "A|a|0|1\nA|A|0|2\n"),
      value("equals sign in the name", "\"a=b\"=ulong:1", "A|a=b|0|1\n"),
      value("colon in the name", "\"a:b\"=string:\"x\"", "A|a:b|1|x\n"),
      value("type word in the name", "\"my string\"=string:\"x\"", "A|my string|1|x\n"),
      value("type word and quotes between", "\"a\" ulong =ulong:5", "A|a|0|=ulong:5\n"),
      value("name of a bracket", "\"[B]\"=ulong:1", "A|[B]|0|1\n"),
  });
}

TEST(TextReader, ReadsQuotedValues) {
  expectTrees({
      value("empty", "\"a\"=string:\"\"", "A|a|1|\n"),
      value("quotes inside", "\"a\"=string:\"say \"hi\" now\"", "A|a|1|say \"hi\" now\n"),
      value("bytes behind the last quote", "\"a\"=string:\"abc\" junk", "A|a|1|abc\n"),
      value("bytes ahead of the first quote", "\"a\"=dir:  x\"abc\"", "A|a|2|abc\n"),
      value("backslash ahead of the last quote", "\"a\"=string:\"C:\\temp\\\"",
            "A|a|1|C:\\temp\\\n"),
      value("continued without a separator", "\"a\"=string:\"one \\ignored\n  two\"",
            "A|a|1|one   two\n"),
      value("backslash behind the last quote", "\"a\"=string:\"x\" \\\n y\"", "A|a|1|x\"  y\n"),
      value("an unclosed path is continued", "\"a\"=string:\"C:\\temp\nrest\"", "A|a|1|C:rest\n"),
      value("continuation of header's look", "\"a\"=string:\"one\\\n[B]\"", "A|a|1|one[B]\n"),
      value("an old quote ends the value", "\"a\"=string:\"x\"y\\\nz", "A|a|1|x\n"),
      value("an old backslash continues again", "\"a\"=string:\"x\\y\\\nz\nw\"", "A|a|1|xw\n"),
      value("empty continuation, old backslash", "\"a\"=string:\"x\\\\\n\nw\"", "A|a|1|xw\n"),
  });
}

TEST(TextReader, ReadsBareValues) {
  expectTrees({
      value("blanks are kept", "\"a\"=binary: 00 1F ", "A|a|3| 00 1F \n"),
      value("any text is a number's text", "\"a\"=dword:ff", "A|a|0|ff\n"),
      value("quotes are kept", "\"a\"=liststring:\"x\",\"y\"", "A|a|4|\"x\",\"y\"\n"),
      value("continued", "\"a\"=binary:1\\\n[2\\\n\"3", "A|a|3|1[2\"3\n"),
      value("two backslashes at the end", "\"a\"=binary:1\\\\\n2", "A|a|3|1\\2\n"),
      value("nothing but a backslash", "\"a\"=binary:\\\n\n\"b\"=ulong:2", "A|a|3|\nA|b|0|2\n"),
  });
}

TEST(TextReader, KeepsWhatItHasAtTheEndOfTheFile) {
  expectTrees({
      {"quoted", "[A]\n\"a\"=string:\"one\\", "A|a|1|one\n", ""},
      {"quoted with an old quote", "[A]\n\"a\"=string:\"o\"ne\\", "A|a|1|o\"ne\n", ""},
      {"bare", "[A]\n\"a\"=binary:1\\", "A|a|3|1\n", ""},
      {"bare with two", "[A]\n\"a\"=binary:1\\\\", "A|a|3|1\\\n", ""},
  });
}

TEST(TextReader, ReportsValuesWithoutText) {
  const std::string longLine = "\"a\"=string:" + std::string(400, 'x');
  const std::string report = message(kQuoteMessage, 2, longLine).substr(0, 255);
  expectTrees({
      value("no quotes", "\"a\"=string:abc", "A|a|1|\n",
            message(kQuoteMessage, 2, "\"a\"=string:abc")),
      value("one quote", "\"a\"=string:\"", "A|a|1|\n",
            message(kQuoteMessage, 2, "\"a\"=string:\"")),
      value("nothing behind the colon", "\"a\"=ulong:", "A|a|0|\n",
            message(kPlainMessage, 2, "\"a\"=ulong:")),
      value("continuation lines count", "\"a\"=string:\"x\\\ny\"\n\"b\"=binary:",
            "A|a|1|xy\nA|b|3|\n", message(kPlainMessage, 4, "\"b\"=binary:")),
      value("percent signs are text", "\"%s%n\"=ulong:", "A|%s%n|0|\n",
            message(kPlainMessage, 2, "\"%s%n\"=ulong:")),
      value("a long line is cut", longLine, "A|a|1|\n", report),
  });
}

TEST(TextReader, RaisesOnAQuotedValueThatNeverEnds) {
  for (const char* lines : {"\"a\"=string:\"abc", "\"a\"=string:\"x\\\nabc\nmore\"",
                            "\"a\"=string:\"\\\n\nmore\"", "\"a\"=dir:\"abc\n\"b\"=ulong:1"}) {
    SCOPED_TRACE(lines);
    const Reading reading = readText(std::string("[K]\n\"n\"=ulong:1\n[A]\n") + lines + "\n");
    EXPECT_TRUE(reading.threw);
    EXPECT_EQ(showTree(*reading.root), "K|n|0|1\nA\n");
    EXPECT_EQ(reading.messages, "");
  }
}

TEST(TextReader, KnowsNoLongestLine) {
  for (const std::size_t length : {8190u, 8191u, 8192u, 16382u, 65535u, 65536u, 200000u}) {
    const std::string text(length, 'x');
    const Reading reading = readText("[A]\n\"a\"=ulong:" + text + "\n\"b\"=ulong:2\n");
    EXPECT_EQ(showTree(*reading.root), "A|a|0|" + text + "\nA|b|0|2\n") << length;
  }
}

// A line is taken in pieces of 8191 bytes, and a NUL ends its piece alone.
TEST(TextReader, NulEndsItsPieceOfTheLine) {
  std::string line = "\"a\"=ulong:" + std::string(30000, 'x');
  line[8191] = '\0';
  line[20000] = '\0';
  const std::size_t kept = 8191 + (20000 - 2 * 8191) + (line.size() - 3 * 8191);
  const Reading reading = readText("[A]\n" + line + "\n\"b\"=ulong:2\n");
  EXPECT_EQ(showTree(*reading.root), "A|a|0|" + std::string(kept - 10, 'x') + "\nA|b|0|2\n");
}

TEST(TextReader, CountsLinesInSixteenBits) {
  const Reading reading = readText(std::string(65536 + 7, '\n'));
  EXPECT_EQ(reading.lineCount, 7);
}

}  // namespace
