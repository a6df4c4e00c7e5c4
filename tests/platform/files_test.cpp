#include "ltlib/platform/files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using LTLib::Platform::directorySeparator;
using LTLib::Platform::File;
using LTLib::Platform::FileCalls;
using LTLib::Platform::fileCalls;
using LTLib::Platform::FilePermissions;
using LTLib::Platform::FileResult;
using LTLib::Platform::FileStatus;

const bool kLineEndsHaveTwoBytes = directorySeparator() == '\\';

class Files : public testing::Test {
 protected:
  void write(const std::string& path, const std::string& text) {
    File* file = m_calls.openForWriting(path.c_str(), nullptr);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(m_calls.write(*file, text.data(), text.size()), FileResult::kDone);
    EXPECT_EQ(m_calls.flush(*file), FileResult::kDone);
    EXPECT_EQ(m_calls.close(file), FileResult::kDone);
  }

  std::string read(const std::string& path, std::size_t piece) {
    File* file = m_calls.openForReading(path.c_str());
    if (file == nullptr) {
      return "<not opened>";
    }
    std::string text;
    std::size_t taken = 1;
    while (taken != 0) {
      std::string buffer(piece, '?');
      EXPECT_EQ(m_calls.read(*file, buffer.data(), piece, &taken), FileResult::kDone);
      text += buffer.substr(0, taken);
    }
    EXPECT_EQ(m_calls.close(file), FileResult::kDone);
    return text;
  }

  static std::string bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  LTLib::Testing::TempFolder m_folder;
  FileCalls& m_calls = fileCalls();
};

// What lies in a file differs between systems by its line ends and by nothing else.
TEST_F(Files, TextsComeBackAsTheyWereWritten) {
  std::string large = "\r";
  for (int i = 0; i < 20000; ++i) {
    large += i % 3 == 0 ? "\r\n" : "x\n";
  }
  const std::string path = m_folder.path("text");
  for (const std::string& text :
       {std::string(), std::string("a\nb\n"), std::string("\x1A after\n"), std::string("\r"),
        std::string("\r\r\n\n\r"), std::string("\0\n\0", 3), large}) {
    write(path, text);
    std::string stored;
    for (const char byte : text) {
      stored += byte == '\n' && kLineEndsHaveTwoBytes ? "\r\n" : std::string(1, byte);
    }
    EXPECT_TRUE(bytesOf(path) == stored);
    for (const std::size_t piece : {1u, 2u, 7u, 65536u}) {
      EXPECT_TRUE(read(path, piece) == text) << "in pieces of " << piece;
    }
  }
}

TEST_F(Files, TextsOfOtherSystemsCanBeRead) {
  EXPECT_EQ(read(m_folder.write("lf", "a\nb\n"), 64), "a\nb\n");
  EXPECT_EQ(read(m_folder.write("crlf", "a\r\nb\r\n"), 64),
            kLineEndsHaveTwoBytes ? "a\nb\n" : "a\r\nb\r\n");
}

TEST_F(Files, FoldersAreNoFiles) {
  const std::string folder = m_folder.path("folder");
  fs::create_directory(folder);
  EXPECT_EQ(m_calls.openForReading(folder.c_str()), nullptr);
  EXPECT_EQ(m_calls.openForWriting(folder.c_str(), nullptr), nullptr);
  EXPECT_NE(m_calls.remove(folder.c_str()), FileResult::kDone);
  FileStatus found{true, 0};
  EXPECT_EQ(m_calls.status(folder.c_str(), &found), FileResult::kDone);
  EXPECT_FALSE(found.regular);
}

TEST_F(Files, AbsentFilesAreTold) {
  FileStatus found;
  for (const std::string& path : {m_folder.path("none"), m_folder.path("no/such/folder")}) {
    EXPECT_EQ(m_calls.openForReading(path.c_str()), nullptr);
    EXPECT_EQ(m_calls.status(path.c_str(), &found), FileResult::kAbsent);
    EXPECT_EQ(m_calls.remove(path.c_str()), FileResult::kAbsent);
    EXPECT_EQ(m_calls.link(path.c_str(), m_folder.path("second").c_str()), FileResult::kAbsent);
    EXPECT_EQ(m_calls.rename(path.c_str(), m_folder.path("new").c_str()), FileResult::kAbsent);
  }
}

TEST_F(Files, RenamesReplaceAndLinksDoNot) {
  const std::string one = m_folder.write("one", "1");
  const std::string other = m_folder.write("other", "2");
  EXPECT_EQ(m_calls.link(one.c_str(), other.c_str()), FileResult::kFailed);
  EXPECT_EQ(m_calls.link(one.c_str(), m_folder.path("second").c_str()), FileResult::kDone);
  EXPECT_EQ(m_calls.rename(other.c_str(), one.c_str()), FileResult::kDone);
  EXPECT_EQ(bytesOf(one), "2");
  EXPECT_EQ(bytesOf(m_folder.path("second")), "1");
  EXPECT_EQ(m_folder.names(), (std::vector<std::string>{"one", "second"}));
}

TEST_F(Files, PermissionsAreGivenOn) {
  const std::string path = m_folder.write("one", "1");
  FileStatus found;
  ASSERT_EQ(m_calls.status(path.c_str(), &found), FileResult::kDone);
  EXPECT_TRUE(found.regular);
  File* file = m_calls.openForWriting(m_folder.path("new").c_str(), &found.permissions);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(m_calls.close(file), FileResult::kDone);
  FileStatus made;
  ASSERT_EQ(m_calls.status(m_folder.path("new").c_str(), &made), FileResult::kDone);
  EXPECT_EQ(made.permissions, found.permissions);
}

TEST_F(Files, OpenFilesDenyNothingToOthers) {
  const std::string path = m_folder.path("shared");
  File* first = m_calls.openForWriting(path.c_str(), nullptr);
  File* second = m_calls.openForWriting(path.c_str(), nullptr);
  File* reader = m_calls.openForReading(path.c_str());
  ASSERT_TRUE(first != nullptr && second != nullptr && reader != nullptr);
  EXPECT_EQ(m_calls.rename(path.c_str(), m_folder.path("elsewhere").c_str()), FileResult::kDone);
  EXPECT_EQ(m_calls.remove(m_folder.path("elsewhere").c_str()), FileResult::kDone);
  for (File* file : {first, second, reader}) {
    EXPECT_EQ(m_calls.close(file), FileResult::kDone);
  }
}

}  // namespace
