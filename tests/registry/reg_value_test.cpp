// Values: what reads, writes and deletions give, in every form of each.
#include <tuple>

#include "tests/registry/registry_fixture.h"

namespace {

using namespace std::string_literals;
using namespace LTLib::Testing;
using LTLib::kFailure;
using LTLib::resultFromSystemError;
using Data = CQSRegValue::e_data_struct;

class RegValue : public RegistryObjects {};

struct Case {
  const char* name;
  unsigned int type;
  std::string bytes;
  std::string content;
};

std::vector<Case> cases() {
  const bool files = filesServe();
  return {
      {"text", REG_SZ, "some \"text\", with = and ;\0"s, "text:some \"text\", with = and ;"},
      {"50%CompanyName%", REG_SZ, "C:\\folder\\\0"s, "text:C:\\folder\\"},
      {"a = \\ b", REG_SZ, "a\x80z\0"s, files ? "text:a\x80z" : "text:a\xEF\xBF\xBDz"},
      {"expandable", REG_EXPAND_SZ, "%PATH%\0"s, kExpandable() + ":%PATH%"s},
      {"list", REG_MULTI_SZ, "a\0b c\0ddd\0\0"s, "list:a|b c|ddd"},
      {"split", REG_MULTI_SZ, "a\\b\0c,d\0\0"s, files ? "list:a|b|c|d" : "list:a\\b|c,d"},
      {"number", REG_DWORD, "\5\0\0\0"s, "number:5"},
      {"bytes", REG_BINARY, "\x01\xFF\x7F!"s, "bytes:\x01\xFF\x7F!"},
      {"a NUL", REG_BINARY, "A\0B"s, files ? "bytes:A" : "bytes:A\0B"s},
      {"link", REG_LINK, "text\0"s, files ? "text:text" : "none:5"},
      {"none", REG_NONE, "xyz"s, files ? "text:xyz" : "none:3"},
      {"64 bits", REG_QWORD, "\5\0\0\0\0\0\0\0"s, files ? "text:\5" : "number:5"},
      {"too large", REG_QWORD, "\5\0\0\0\1\0\0\0"s, files ? "text:\5" : "8007000D"},
  };
}

TEST_F(RegValue, EveryTypeComesBackThroughEveryFormOfRead) {
  make("K");
  for (const Case& row : cases()) {
    EXPECT_EQ(open("K").set(row.name, row.bytes, row.type), 0) << row.name;
    CQSRegValue value = this->value("K", row.name);
    EXPECT_EQ(contentOf(value), row.content);
  }
}

TEST_F(RegValue, WritesOfEveryFormMakeTheKey) {
  CQSRegValue value = this->value("New\\Key", "own");
  char items[] = "a\0b\0";
  Data list;
  list.type = CQSRegValue::DATA_MULTI_STRING;
  list.size = 5;
  list.pData = items;
  const auto nothing = static_cast<const char*>(nullptr);
  const std::tuple<const char*, QSResult, std::string> cases[] = {
      {"text", value.Write("text", "x"), "text:x"},
      {"null", value.Write("null", nothing), "text:"},
      {"bytes", value.Write("bytes", "\1\2", 2ul), "bytes:\1\2"},
      {"no bytes", value.Write("no bytes", nullptr, 0ul), "bytes:"},
      {"number", value.Write("number", 0xFFFFFFFFul), "number:4294967295"},
      {"list", value.Write("list", list), "list:a|b"},
      {"own", value.Write("mine"), "text:mine"},
  };
  for (const auto& [name, result, content] : cases) {
    EXPECT_EQ(result, 0) << name;
    EXPECT_EQ(contentOf(value, name), content);
  }
  list.type = CQSRegValue::DATA_NONE;  // its bytes are not its own
  EXPECT_EQ(value.Delete(nullptr) + value.Write(5ul) + value.Write("17 and more"), 0);
  EXPECT_EQ(contentOf(value), filesServe() ? "number:17" : "text:17 and more");
  EXPECT_EQ(value.Delete(nullptr), 0);
  EXPECT_EQ(value.Write(static_cast<const void*>("x"), 1ul), 0);
  EXPECT_EQ(contentOf(value), "bytes:x");
  if constexpr (sizeof(unsigned long) > 4) {
    const auto tooLong = static_cast<unsigned long>(1ull << 32);
    EXPECT_EQ(value.Write(static_cast<const void*>("x"), tooLong), kFailure);
  }
}

TEST_F(RegValue, SettersTellWhatFails) {
  CQSRegValue value(kUser, "K", "name");
  CQSRegKey key;
  EXPECT_EQ(value.SetName(nullptr), LTLib::kNullArgument);
  EXPECT_EQ(value.SetName(value.GetName() + 1), 0) << "a part of its own";
  EXPECT_EQ(value.SetKey(CQSRegKey(kUser, "%Nowhere%")), kFailure);
  EXPECT_EQ(value.GetKey(key), 0);
  EXPECT_EQ(std::string(key.GetPath()) + value.GetName(), "%Nowhere%ame");
}

TEST_F(RegValue, NullAndEmptyNamesMeanDifferentValues) {
  make("K");
  const OpenKey raw = open("K");
  for (const char* name : {static_cast<const char*>(nullptr), "own", "other"}) {
    EXPECT_EQ(raw.set(name, (name != nullptr ? name : "null") + "\0"s), 0);
  }
  CQSRegValue unnamed = value("K", nullptr);
  CQSRegValue named = value("K", "own");
  const char* const null = nullptr;
  EXPECT_EQ(contentOf(unnamed, null), "text:null");
  EXPECT_EQ(contentOf(unnamed, kDefaultName()), "text:null");
  EXPECT_EQ(contentOf(named, null), "text:own");
  EXPECT_EQ(contentOf(named, "other"), "text:other");
  // The form without a name goes by the own one even when that is empty.
  const bool emptyIsDefault = kDefaultName()[0] == '\0';
  EXPECT_EQ(contentOf(unnamed), emptyIsDefault ? "text:null" : codeOf(kFailure));
  EXPECT_EQ(unnamed.Write("empty"), kWriteEmptyName());
  EXPECT_EQ(contentOf(named, ""), emptyIsDefault ? "text:empty" : codeOf(kFailure));
  EXPECT_EQ(contentOf(unnamed, null), emptyIsDefault ? "text:empty" : "text:null");
  EXPECT_EQ(named.Delete(null), 0);
  EXPECT_EQ(unnamed.Delete(null), 0);
  EXPECT_EQ(unnamed.Delete(""), resultFromSystemError(kMissing()));
  EXPECT_EQ(namesOf(CQSRegEnumValue(key("K"))), (Names{"made", "other"}));
}

TEST_F(RegValue, WhatIsNotThere) {
  make("K");
  CQSRegValue missing = value("K", "v");
  EXPECT_EQ(contentOf(missing), codeOf(kFailure));
  EXPECT_EQ(missing.Delete("v"), resultFromSystemError(kMissing()));
  CQSRegValue nowhere = value("Gone\\Deeper", "v");
  EXPECT_EQ(contentOf(nowhere), codeOf(kReadMissingKey()));
  EXPECT_EQ(nowhere.Delete("v"), kUnknownRoot());
  EXPECT_EQ(namesOf(CQSRegEnumKey(key(""))), filesServe() ? (Names{"K", "Gone"}) : Names{"K"});
}

// A buffer belongs to the object until its next read is over, and a record owns what it holds.
TEST_F(RegValue, BuffersBelongToObjectsAndRecords) {
  Data data;
  {
    CQSRegValue value = this->value("K", "first");
    EXPECT_EQ(value.Write("first", "second"), 0);
    EXPECT_EQ(value.Write("second", "end"), 0);
    char* text = nullptr;
    ASSERT_EQ(value.Read(text), 0);
    ASSERT_EQ(value.Read("first", data), 0);
    EXPECT_EQ(value.Write("third", text), 0);
    EXPECT_STREQ(text, "second") << "reads into records and writes leave it alone";
    // The text of one read may name the value of the next.
    ASSERT_EQ(value.Read(text, text), 0);
    EXPECT_STREQ(text, "end");
    ASSERT_EQ(value.Read(static_cast<const char*>(data.pData), data), 0);
  }
  EXPECT_EQ(contentOf(data), "text:end");
  EXPECT_LT(value("K", "gone").Read(data), 0);
  EXPECT_EQ(contentOf(data), "none:0") << "a failed read clears it all the same";
  EXPECT_EQ(data.pData, nullptr);
}

}  // namespace
