// One store with the line ends of either system: both read it, and each writes its own.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/store_fixture.h"
#include "tests/support/system.h"

namespace {

using namespace LTLib::Testing;

// As a save writes it, down to the list that is on one line after it was read.
constexpr char kStore[] =
    "[A\\B]\n"
    "\"text\"=string:\"\xC3\xA4 \"quoted\" \xF0\x9F\x98\x80 \r\"\n"
    "\"folder\"=dir:\"C:\\x\\\"\n"
    "\"number\"=ulong:-1\n"
    "\"bytes\"=binary: x = \x1A\n"
    "\"none\"=string:\"\"\n"
    "\"list\"=liststring:\"one\",\"two\"\n"
    "\n"
    "[A\\B\\C]\n"
    "\"last\"=ulong:7\n"
    "\n";

std::string withEnds(const std::string& text, const std::string& end) {
  std::string result;
  for (const char byte : text) {
    result += byte == '\n' ? end : std::string(1, byte);
  }
  return result;
}

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class LineEnds : public StoreTest {
 protected:
  void write(const std::string& bytes) const { std::ofstream(store(), std::ios::binary) << bytes; }
};

TEST_F(LineEnds, EitherSystemsStoreComesBackWithThisSystemsEnds) {
  for (const char* end : {"\n", "\r\n"}) {
    SCOPED_TRACE(end[0] == '\r' ? "pairs" : "line feeds");
    forgetStores();
    write(withEnds(kStore, end));
    ASSERT_EQ(load(), 1);
    const OpenKey key(m_manager, REG_ROOT_LOCAL_MACHINE, "A\\B\\C");
    EXPECT_EQ(key.setNumber("last", 7), 0);
    EXPECT_EQ(m_manager.saveConfiguration(REG_ROOT_LOCAL_MACHINE), 0);
    EXPECT_EQ(bytesOf(store()), withEnds(kStore, kOnWindows ? "\r\n" : "\n"));
  }
}

TEST_F(LineEnds, AContinuationDropsThePairToo) {
  write("\r\n[A\\B]\r\n\"list\"=liststring:\"one\",\\\r\n\"two\"\r\n\"bare\"=binary:x\\\r\ny\r\n");
  ASSERT_EQ(load(), 1);
  const OpenKey key(m_manager, REG_ROOT_LOCAL_MACHINE, "A\\B");
  EXPECT_EQ(key.text("list"), std::string("one\0two", 7));
  EXPECT_EQ(key.text("bare"), "xy");
}

// A carriage return at the end of a piece of the file and its line feed in the next one.
TEST_F(LineEnds, PairsMayFallBetweenTwoPieces) {
  for (std::size_t length = 65530; length < 65540; ++length) {
    forgetStores();
    const std::string head = "[A\\B]\r\n\"v\"=binary:";
    write(head + std::string(length - head.size(), 'x') + "\r\n\"w\"=binary:y\r\n");
    ASSERT_EQ(load(), 1);
    const OpenKey key(m_manager, REG_ROOT_LOCAL_MACHINE, "A\\B");
    EXPECT_EQ(key.text("v"), std::string(length - head.size(), 'x'));
    EXPECT_EQ(key.text("w"), "y");
  }
}

}  // namespace
