// Store texts: the trees and messages that the reader makes of them.
#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "tests/support/text_tree.h"

namespace {

using namespace std::string_literals;
using LTLib::Testing::Reading;
using LTLib::Testing::readText;
using LTLib::Testing::showTree;

// Each text is read to its end, without a message, and in the same way however it arrives.
void expectTrees(std::initializer_list<std::pair<std::string, std::string>> cases) {
  for (const auto& [text, tree] : cases) {
    for (const std::size_t pieceSize : {std::size_t{1}, std::size_t{3}, std::string::npos}) {
      const Reading reading = readText(text, pieceSize);
      EXPECT_EQ(showTree(*reading.tree), tree) << text;
      EXPECT_EQ(reading.end + reading.messages, "whole") << text;
    }
  }
}

TEST(TextReader, ReadsLinesAndHeaders) {
  expectTrees({
      {"", ""},
      {"# x\n//\n;[B]\n[A]\nn=1\n", "A\n"},
      {"\xEF\xBB\xBF[A]\n\"n\"=ulong:1\n", ""},
      {"\"n\"=string:\"x\\\n[B]\"\n[A]\n", "A\n"},  // ahead of the first header
      {"[A]\n\0\"n\"=ulong:1\n\"m\"=ulong:2\n"s, "A|m|0|2\n"},
      {"[A]\n\"n\"=ulong:12\0 34\n"s, "A|n|0|12\n"},
      // The first line tells the line ends of all.
      {"[A]\r\n\"n\"=binary:1\\\r\n2\r\n\"m\"=ulong:1\n", "A|n|3|12\nA|m|0|1\n"},
      {"\r\n[A]\n\"n\"=binary:1\r\r\n", "A|n|3|1\r\n"},
      {"[A]\n\"n\"=binary:1\r\n", "A|n|3|1\r\n"},

      {"[ A \\ B ]\n", " A \n A / B \n"},
      {"[A\\B]\n\"n\"=ulong:1\n[a\\b]\n\"m\"=ulong:2\n", "A\nA/B|n|0|1\nA/B|m|0|2\n"},
      {"[A]x\\B]\n", "A]x\nA]x/B\n"},
      {"[\\A\\B]\n", "\\A\\B\n"},
      {"[A\\\\\\B]\n", "A\nA/\\B\n"},
      {"[A\\B]\n[C]\n[A\\D]\n[A\\B]\n\"m\"=ulong:2\n", "A\nA/B|m|0|2\nA/D\nC\n"},
  });
}

TEST(TextReader, ReadsValues) {
  expectTrees({
      {"[A]\n\"a=ulong:1\n\"\"=ulong:1\n\"a\" ulong:1\n\"a\"=ulong 1\n\"a\"=:1\n", "A\n"},
      {"[A]\n\"a\"=float:1\n\"a\"=Ulong:5\n\"a\"= ulong:5\n", "A\n"},
      {"[A]\n\"a\"=x:1\\\n\"b\"=ulong:2\n", "A|b|0|2\n"},  // taking no continuation
      {"[A]\n\"a\" is set =ulong:1\n", "A|a|0|1\n"},
      {"[A]\n\"a\"=ulong:1\n\"A\"=ulong:2\n", "A|a|0|1\nA|A|0|2\n"},
      {"[A]\n\"a\" ulong =ulong:5\n", "A|a|0|=ulong:5\n"},

      {"[A]\n\"a\"=string:\"say \"hi\" now\"\n", "A|a|1|say \"hi\" now\n"},
      {"[A]\n\"a\"=dir:  x\"abc\"\n", "A|a|2|abc\n"},
      {"[A]\n\"a\"=string:\"C:\\temp\\\"\n", "A|a|1|C:\\temp\\\n"},
      {"[A]\n\"a\"=string:\"one \\ignored\n  two\"\n", "A|a|1|one   two\n"},
      {"[A]\n\"a\"=string:\"C:\\temp\nrest\"\n", "A|a|1|C:rest\n"},
      // The rules look at all the text so far: an old quote ends it, an old backslash continues it.
      {"[A]\n\"a\"=string:\"x\"y\\\nz\n", "A|a|1|x\n"},
      {"[A]\n\"a\"=string:\"x\\y\\\nz\nw\"\n", "A|a|1|xw\n"},
      {"[A]\n\"a\"=string:\"one\\", "A|a|1|one\n"},

      {"[A]\n\"a\"=binary: 00 1F \n", "A|a|3| 00 1F \n"},
      {"[A]\n\"a\"=liststring:\"x\",\\\n\"y\"\n", "A|a|4|\"x\",\"y\"\n"},
      {"[A]\n\"a\"=binary:1\\\n[2\\\n\"3\n", "A|a|3|1[2\"3\n"},
      {"[A]\n\"a\"=binary:\\\n\n\"b\"=ulong:2\n", "A|a|3|\nA|b|0|2\n"},
  });
}

// What came before a bad header stays, nothing behind it is read, and no message is printed; the
// same goes for a quoted value that never ends.
TEST(TextReader, StopsAtWhatNamesNoSectionOrNeverEnds) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"[]", "bad header", ""},
      {"[A\\]", "bad header", "A\n"},
      {"[A\\B", "bad header", "A\n"},
      {"[A] x\\y", "bad header", "A] x\n"},
      {"\"a\"=string:\"abc", "parse error", ""},
      {"\"a\"=string:\"x\\\nabc\nmore\"", "parse error", ""},
  };
  for (const auto& [lines, end, left] : cases) {
    const Reading reading = readText("[K]\n\"n\"=ulong:1\n"s + lines + "\n[L]\n");
    EXPECT_EQ(reading.end + reading.messages, end) << lines;
    EXPECT_EQ(showTree(*reading.tree), "K|n|0|1\n"s + left) << lines;
  }
}

// The line number counts continuations, and a message that does not fit is cut.
TEST(TextReader, ReportsValuesWithoutText) {
  const std::string quotes = "\tString value is delimited by quotes\n";
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"\"a\"=string:abc", quotes, "a|1|"},
      {"\"%s%n\"=binary:", "", "%s%n|3|"},
      {"\"a\"=string:" + std::string(400, 'x'), quotes, "a|1|"},
  };
  for (const auto& [line, hint, field] : cases) {
    const Reading reading = readText("[A]\n\"c\"=string:\"x\\\ny\"\n" + line + "\n");
    const std::string message =
        "#***** ERROR ***** : Syntax error in command line # 4\n" + hint + "\t" + line + "\n\n";
    EXPECT_EQ(reading.messages, message.substr(0, 255));
    EXPECT_EQ(showTree(*reading.tree), "A|c|1|xy\nA|" + field + "\n");
  }
}

// A line is taken in pieces of 8191 bytes, and a NUL ends its piece alone.
TEST(TextReader, KnowsNoLongestLineAndCountsInSixteenBits) {
  const std::string begin = "\"a\"=ulong:";
  for (const std::size_t length : {8190u, 8191u, 8192u, 65536u}) {
    const std::string text(length, 'x');
    expectTrees({{"[A]\n" + begin + text + "\n\"b\"=ulong:2", "A|a|0|" + text + "\nA|b|0|2\n"}});
  }
  std::string cut(9000 - begin.size(), 'x');
  cut[4000] = '\0';
  expectTrees({{"[A]\n" + begin + cut, "A|a|0|" + std::string(4000 + 9000 - 8191, 'x') + "\n"}});
  EXPECT_EQ(readText(std::string(65536 + 7, '\n')).lineCount, 7);
}

}  // namespace
