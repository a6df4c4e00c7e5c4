// What becomes of the tool's data and messages when its standard streams fail.
#include "tests/ltreg/ltreg_fixture.h"

namespace {

using LTLib::Testing::ProgramResult;
using LTLib::Testing::Words;

constexpr char kOne[] = "[A\\B]\n\"n\"=ulong:1\n\"u\"=Ulong:5\n\"e\"=string:\n\n";
constexpr char kTwo[] = "[A\\B]\n\"n\"=ulong:2\n\"e\"=string:\"\"\n\n";

class LtregStreams : public LTLib::Testing::LtregTest {
 protected:
  [[nodiscard]] ProgramResult runRedirected(const std::string& redirection, Words words) const {
    words.insert(words.begin(), {"-c", "exec \"$0\" \"$@\" " + redirection, LTREG_PROGRAM});
    return LTLib::Testing::runProgram("/bin/sh", words, m_folder.path());
  }
};

TEST_F(LtregStreams, LostDataIsAFailure) {
  m_folder.write(kStore, kOne);
  for (const char* redirection : {">/dev/full", ">&-", ">&- 2>&- <&-"}) {
    SCOPED_TRACE(redirection);
    EXPECT_EQ(runRedirected(redirection, {"get", "HKLM\\A\\B", "n"}).exitCode, 4);
    EXPECT_EQ(runRedirected(redirection, {"get", "HKLM\\A\\B", "x"}).exitCode, 1);
    EXPECT_EQ(store(), kOne);
  }
}

// The store is opened while standard streams are missing, and messages are written.
TEST_F(LtregStreams, NothingIsWrittenToAStoreInPlaceOfAClosedStream) {
  for (const char* redirection : {"2>&-", ">&-", ">&- 2>&-", ">&- 2>&- <&-", "2>/dev/full"}) {
    SCOPED_TRACE(redirection);
    m_folder.write(kStore, kOne);
    EXPECT_EQ(runRedirected(redirection, {"set", "HKLM\\A\\B", "n", "2"}).exitCode, 0);
    EXPECT_EQ(store(), kTwo);
    EXPECT_EQ(LTLib::Testing::readFile(m_folder.path("qsconfig.dat")).size(), 46u);
  }
}

}  // namespace
