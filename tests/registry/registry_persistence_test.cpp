// Values of all types in this process, and in a process that comes later.
#include <cstring>

#include "tests/registry/registry_fixture.h"
#include "tests/support/child_process.h"

namespace {

using namespace std::string_literals;
using LTLib::Testing::ChildProcess;
using LTLib::Testing::contentOf;
using LTLib::Testing::kUser;

using Data = CQSRegValue::e_data_struct;

struct Kept {
  const char* name;
  CQSRegValue::e_data_type type;
  std::string bytes;
  std::string content;
};

const Kept kKept[] = {
    {"text", CQSRegValue::DATA_STRING, "some \"text\", with = and ;\0"s,
     "some \"text\", with = and ;"},
    {"empty", CQSRegValue::DATA_STRING, "\0"s, ""},
    {"ends in backslash", CQSRegValue::DATA_STRING, "C:\\folder\\\0"s, "C:\\folder\\"},
    {"above ASCII", CQSRegValue::DATA_STRING, "\xE2\x82\xAC\0"s, "\xE2\x82\xAC"},
    {"list", CQSRegValue::DATA_MULTI_STRING, "a\0b c\0ddd\0\0"s, "a\0b c\0ddd"s},
    {"one item", CQSRegValue::DATA_MULTI_STRING, "a\0\0"s, "a"},
    {"bytes", CQSRegValue::DATA_BINARY, "\x01\xFF\x7F!"s, "\x01\xFF\x7F!"},
    {"50% = \\ name", CQSRegValue::DATA_STRING, "x\0"s, "x"},
};
constexpr unsigned long kNumbers[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

std::string numberName(unsigned long number) {
  return "number " + std::to_string(number);
}

void writeAll(const char* path) {
  CQSRegValue value(kUser, path, nullptr);
  for (const Kept& kept : kKept) {
    Data data;
    data.type = kept.type;
    data.size = static_cast<std::uint32_t>(kept.bytes.size());
    data.pData = const_cast<char*>(kept.bytes.data());
    EXPECT_EQ(value.Write(kept.name, data), 0) << kept.name;
    data.type = CQSRegValue::DATA_NONE;
  }
  for (const unsigned long number : kNumbers) {
    EXPECT_EQ(value.Write(numberName(number).c_str(), number), 0);
  }
}

// What does not read as it was written, by name.
std::string differences(const char* path) {
  std::string wrong;
  CQSRegValue value(kUser, path, nullptr);
  for (const Kept& kept : kKept) {
    Data data;
    if (value.Read(kept.name, data) != 0 || data.type != kept.type ||
        contentOf(data) != kept.content) {
      wrong += std::string(kept.name) + ';';
    }
  }
  for (const unsigned long number : kNumbers) {
    unsigned long read = 0;
    if (value.Read(numberName(number).c_str(), read) != 0 || read != number) {
      wrong += numberName(number) + ';';
    }
  }
  return wrong;
}

const LTLib::Testing::Scenario s_reader("reader", [](const std::vector<std::string>& arguments) {
  LTLib::Testing::tellParent("wrong: " + differences(arguments.at(0).c_str()));
  return 0;
});

class RegistryPersistence : public LTLib::Testing::RegistryObjects {};

TEST_F(RegistryPersistence, AllTypesComeBackHereAndInTheNextProcess) {
  const std::string place = path("K");
  writeAll(place.c_str());
  EXPECT_EQ(differences(place.c_str()), "");
  ChildProcess early("reader", {place});
  EXPECT_EQ(early.hear() == "wrong: ", m_facts.durableAtOnce);
  EXPECT_EQ(early.wait(), 0);
  EXPECT_EQ(SaveConfiguration(kUser), 0);
  ChildProcess late("reader", {place});
  EXPECT_EQ(late.hear(), "wrong: ");
  EXPECT_EQ(late.wait(), 0);
}

// Types that only a file can hold, and one line for each of the others.
TEST_F(RegistryPersistence, StoreFilesOfForeignHands) {
  if (!m_facts.hasStoreFile) {
    GTEST_SKIP() << "no store files here";
  }
  LTLib::Testing::stores().folder().write("HKEY_USERS.cfg",
                                          "[A\\B]\n"
                                          "\"Folder\"=dir:\"C:\\Files\\\"\n"
                                          "\"Text\"=string:\"t\"\n"
                                          "\"Number\"=ulong:4294967295\n"
                                          "\"Odd\"=ulong:none\n"
                                          "\"List\"=liststring:\"a\",\\\n\"b\"\n"
                                          "\"Default\"=string:\"d\"\n");
  CQSRegValue value(REG_ROOT_USERS, "A\\B", nullptr);
  char* text = nullptr;
  ASSERT_EQ(value.Read("Folder", text), 0);
  EXPECT_STREQ(text, "C:\\Files\\");
  ASSERT_EQ(value.Read("Text", text), 0);
  EXPECT_STREQ(text, "t");
  ASSERT_EQ(value.Read(nullptr, text), 0);
  EXPECT_STREQ(text, "d");
  unsigned long number = 0;
  EXPECT_EQ(value.Read("Number", number), 0);
  EXPECT_EQ(number, 0xFFFFFFFFu);
  EXPECT_EQ(value.Read("Odd", number), 0);
  EXPECT_EQ(number, 0u);
  Data data;
  EXPECT_EQ(value.Read("List", data), 0);
  EXPECT_EQ(contentOf(data), "a\0b"s);
}

}  // namespace
