#include "ltlib/platform/files.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using namespace LTLib::Platform;
using std::string_literals::operator""s;

class Files : public testing::Test {
 protected:
  std::string read(const std::string& path, std::size_t piece) {
    FileHandle file;
    if (openFile(path, Links::kRefused, file) != FileResult::kDone) {
      return "<not opened>";
    }
    std::string text;
    std::string buffer(piece, '?');
    std::size_t taken = 0;
    do {
      EXPECT_EQ(m_calls.read(*file, buffer.data(), piece, &taken), FileResult::kDone);
      text.append(buffer, 0, taken);
    } while (taken != 0);
    return text;
  }

  const LTLib::Testing::TempFolder m_folder;
  const std::string m_one = m_folder.write("one", "1\n");
  const std::string m_new = m_folder.path("new");
  FileCalls& m_calls = fileCalls();
};

// Whatever a system makes of line ends, and however it is asked for.
TEST_F(Files, TextsComeBackAsTheyWereWritten) {
  EXPECT_EQ(read(m_one, 64), "1\n") << "a file of another system";
  std::string text = "\r\n\x1A\0\n"s;
  for (int i = 0; i < 20000; ++i) {
    text += i % 3 == 0 ? "\r\n" : "x\n";
  }
  text += '\r';
  File* file = nullptr;
  ASSERT_EQ(m_calls.create(m_new.c_str(), nullptr, &file), FileResult::kDone);
  EXPECT_EQ(m_calls.write(*file, text.data(), text.size()), FileResult::kDone);
  EXPECT_EQ(m_calls.close(file), FileResult::kDone);
  for (const std::size_t piece : {1u, 7u, 65536u}) {
    EXPECT_TRUE(read(m_new, piece) == text) << "in pieces of " << piece;
  }
}

TEST_F(Files, FoldersAndAbsentFilesAreTold) {
  FileStatus found{true, {}};
  File* file = nullptr;
  const char* const folder = m_folder.path().c_str();
  EXPECT_EQ(read(folder, 1), "<not opened>");
  EXPECT_EQ(m_calls.status(folder, &found), FileResult::kDone);
  EXPECT_FALSE(found.regular);
  EXPECT_EQ(m_calls.create(m_one.c_str(), nullptr, &file), FileResult::kFailed) << "it is there";
  for (const std::string& absent : {m_folder.path("no/such"), m_one + "/below"}) {
    EXPECT_EQ(m_calls.open(absent.c_str(), Links::kRefused, &file), FileResult::kAbsent);
    EXPECT_EQ(m_calls.status(absent.c_str(), &found), FileResult::kAbsent);
    EXPECT_EQ(m_calls.rename(absent.c_str(), m_one.c_str()), FileResult::kAbsent);
  }
}

TEST_F(Files, OpenFilesAreRenamedAndLinkedWithoutLoss) {
  fs::permissions(m_one, fs::perms(0600));
  File* files[2] = {};
  ASSERT_EQ(m_calls.create(m_new.c_str(), m_one.c_str(), &files[0]), FileResult::kDone);
  ASSERT_EQ(m_calls.open(m_new.c_str(), Links::kRefused, &files[1]), FileResult::kDone);
  EXPECT_EQ(fs::status(m_new).permissions(), fs::status(m_one).permissions());
  const std::string second = m_folder.path("second");
  EXPECT_EQ(m_calls.link(m_one.c_str(), m_new.c_str()), FileResult::kFailed);
  EXPECT_EQ(m_calls.link(m_one.c_str(), second.c_str()), FileResult::kDone);
  EXPECT_EQ(m_calls.rename(m_new.c_str(), m_one.c_str()), FileResult::kDone);
  EXPECT_EQ(m_calls.remove(m_one.c_str()), FileResult::kDone);
  EXPECT_EQ(read(second, 64), "1\n");
  for (File* file : files) {
    EXPECT_EQ(m_calls.close(file), FileResult::kDone);
  }
}

}  // namespace
