// Values: what reads, writes and deletions give, in every form of each.
#include <cstring>

#include "tests/registry/registry_fixture.h"

namespace {

using LTLib::kFailure;
using LTLib::resultFromSystemError;
using LTLib::Testing::contentOf;
using LTLib::Testing::kUser;
using LTLib::Testing::namesOf;
using LTLib::Testing::RawKey;

using Data = CQSRegValue::e_data_struct;
using DataType = CQSRegValue::e_data_type;

class RegValue : public LTLib::Testing::RegistryObjects {
 protected:
  // A text of its own for each name, so that a read shows which value it met.
  void writeNamed(const char* name) const {
    const RawKey raw(path("K"));
    EXPECT_EQ(raw.set(name, REG_SZ, std::string(name != nullptr ? name : "null") + '\0'), 0);
  }
};

// A record over a caller's bytes, which it does not free.
class Lent {
 public:
  Lent(DataType type, const std::string& bytes) {
    m_data.type = type;
    m_data.size = static_cast<std::uint32_t>(bytes.size());
    m_data.pData = const_cast<char*>(bytes.data());
  }
  ~Lent() { m_data.type = CQSRegValue::DATA_NONE; }
  Lent(const Lent&) = delete;
  Lent& operator=(const Lent&) = delete;

  Data m_data;
};

std::string textOf(CQSRegValue& value, const char* name) {
  char* text = nullptr;
  return value.Read(name, text) == 0 ? text : "<none>";
}

TEST_F(RegValue, ConstructorsDropWhatFails) {
  const CQSRegKey key(kUser, "K");
  const CQSRegValue empty{};
  const CQSRegValue nullPath(kUser, nullptr, "n");
  const CQSRegValue nullName(kUser, "K", nullptr);
  const CQSRegValue unexpanded(kUser, "%CompanyName%\\%Nowhere%", "n");
  const CQSRegValue ofKey(key, nullptr);
  const struct {
    const CQSRegValue& value;
    enumRegRoot root;
    const char* path;
    const char* name;
  } cases[] = {
      {empty, REG_ROOT_NONE, "", ""}, {nullPath, REG_ROOT_NONE, "", "n"},
      {nullName, kUser, "K", ""},     {unexpanded, kUser, "Tarn Quillmere\\%Nowhere%", "n"},
      {ofKey, kUser, "K", ""},
  };
  for (const auto& row : cases) {
    CQSRegKey out(REG_ROOT_USERS, "Old");
    EXPECT_EQ(row.value.GetKey(out), 0);
    EXPECT_EQ(out.GetRootKEY(), row.root) << row.path;
    EXPECT_STREQ(out.GetPath(), row.path);
    EXPECT_STREQ(row.value.GetPath(), row.path);
    EXPECT_STREQ(row.value.GetName(), row.name);
  }
  CQSRegValue value(kUser, "K", "n");
  EXPECT_EQ(value.SetName(nullptr), LTLib::kNullArgument);
  EXPECT_EQ(value.SetKey(kUser, nullptr), kFailure);
  EXPECT_EQ(value.SetKey(kUser, "%Nowhere%"), kFailure);
  EXPECT_EQ(value.SetKey(CQSRegKey(kUser, "%Nowhere%")), kFailure);
  EXPECT_EQ(std::string(value.GetPath()) + value.GetName(), "%Nowhere%n");
  EXPECT_EQ(value.SetName(value.GetPath()), 0);
  EXPECT_EQ(value.SetName(value.GetName() + 1), 0);
  EXPECT_STREQ(value.GetName(), "Nowhere%");
}

TEST_F(RegValue, NullAndEmptyNamesMeanDifferentValues) {
  writeNamed(nullptr);
  writeNamed("own");
  writeNamed("other");
  CQSRegValue unnamed = value("K", nullptr);
  CQSRegValue named = value("K", "own");
  char* text = nullptr;
  EXPECT_EQ(textOf(unnamed, nullptr), "null");
  EXPECT_EQ(textOf(unnamed, "other"), "other");
  EXPECT_EQ(textOf(named, nullptr), "own");
  EXPECT_EQ(textOf(named, "other"), "other");
  ASSERT_EQ(named.Read(text), 0);
  EXPECT_STREQ(text, "own");
  EXPECT_EQ(textOf(unnamed, m_facts.defaultName), "null");
  // The form without a name goes by the own one even when that is empty.
  const bool emptyIsDefault = std::strcmp(m_facts.defaultName, "") == 0;
  EXPECT_EQ(unnamed.Read(text), emptyIsDefault ? 0 : kFailure);
  EXPECT_EQ(unnamed.Write("empty"), m_facts.writeEmptyName);
  EXPECT_EQ(textOf(named, ""), emptyIsDefault ? "empty" : "<none>");
  EXPECT_EQ(textOf(unnamed, nullptr), emptyIsDefault ? "empty" : "null");
  EXPECT_EQ(named.Delete(nullptr), 0);
  EXPECT_EQ(textOf(named, nullptr), "<none>");
  EXPECT_EQ(unnamed.Delete(nullptr), 0);
  EXPECT_EQ(textOf(unnamed, nullptr), "<none>");
  EXPECT_EQ(unnamed.Delete(""), resultFromSystemError(m_facts.missing));
  EXPECT_EQ(namesOf(CQSRegEnumValue(key("K"))), std::vector<std::string>{"other"});
}

using namespace std::string_literals;

struct TypeCase {
  const char* label;
  unsigned int registryType;
  std::string bytes;
  std::string content;  // of what comes back in a buffer
  DataType onFile;
  DataType onSystem;
  QSResult resultOnSystem;
};

// The file backend makes a text of every type that it does not know.
const TypeCase kTypes[] = {
    {"text", REG_SZ, "text\0"s, "text", CQSRegValue::DATA_STRING, CQSRegValue::DATA_STRING, 0},
    {"expandable", REG_EXPAND_SZ, "%PATH%\0"s, "%PATH%", CQSRegValue::DATA_STRING,
     CQSRegValue::DATA_EXPAND_STRING, 0},
    {"list", REG_MULTI_SZ, "a\0b\0\0"s, "a\0b"s, CQSRegValue::DATA_MULTI_STRING,
     CQSRegValue::DATA_MULTI_STRING, 0},
    {"number", REG_DWORD, "\5\0\0\0"s, "", CQSRegValue::DATA_DWORD, CQSRegValue::DATA_DWORD, 0},
    {"bytes", REG_BINARY, "ab"s, "ab", CQSRegValue::DATA_BINARY, CQSRegValue::DATA_BINARY, 0},
    {"link", REG_LINK, "text\0"s, "text", CQSRegValue::DATA_STRING, CQSRegValue::DATA_NONE, 0},
    {"none", REG_NONE, "xyz"s, "xyz", CQSRegValue::DATA_STRING, CQSRegValue::DATA_NONE, 0},
    {"64 bits", REG_QWORD, "\5\0\0\0\0\0\0\0"s, "\5", CQSRegValue::DATA_STRING,
     CQSRegValue::DATA_DWORD, 0},
    {"too large", REG_QWORD, "\5\0\0\0\1\0\0\0"s, "\5", CQSRegValue::DATA_STRING,
     CQSRegValue::DATA_DWORD, resultFromSystemError(13)},
};

TEST_F(RegValue, EveryTypeThroughEveryFormOfRead) {
  for (const TypeCase& row : kTypes) {
    const RawKey raw(path("K"));
    make("K");
    const CQSRegKey whole = key("K");
    EXPECT_EQ(raw.set(row.label, row.registryType, row.bytes), 0) << row.label;
    const DataType type = m_facts.keepsForeignTypes ? row.onSystem : row.onFile;
    const QSResult result = m_facts.keepsForeignTypes ? row.resultOnSystem : 0;
    const auto only = [&](bool fits) { return result != 0 ? result : fits ? 0 : kFailure; };
    CQSRegValue value(whole, row.label);
    Data data;
    unsigned long number = 0;
    char* text = nullptr;
    void* bytes = nullptr;
    unsigned long size = 0;
    EXPECT_EQ(value.Read(data), result) << row.label;
    EXPECT_EQ(data.type, type) << row.label;
    EXPECT_EQ(value.Read(row.label, data), result) << row.label;
    EXPECT_EQ(value.Read(number), only(type == CQSRegValue::DATA_DWORD)) << row.label;
    EXPECT_EQ(value.Read(text), only(type == CQSRegValue::DATA_STRING)) << row.label;
    EXPECT_EQ(value.Read(bytes, size),
              only(type == CQSRegValue::DATA_BINARY || type == CQSRegValue::DATA_NONE))
        << row.label;
    if (type == CQSRegValue::DATA_DWORD && result == 0) {
      EXPECT_EQ(number, 5u);
      EXPECT_EQ(data.dwValue, 5u);
      EXPECT_EQ(text, nullptr) << "a number is no pointer";
    } else if (type == CQSRegValue::DATA_DWORD) {
      EXPECT_EQ(data.dwValue, 0u);
    } else if (type == CQSRegValue::DATA_NONE) {
      EXPECT_EQ(bytes, nullptr);
      EXPECT_EQ(size, row.bytes.size()) << "the size that the backend reported";
    } else {
      EXPECT_EQ(contentOf(data), row.content);
      EXPECT_NE(text, nullptr) << "set, whatever the result";
    }
  }
}

TEST_F(RegValue, WhatIsNotThere) {
  make("K");
  const struct {
    const char* below;
    QSResult read;
    QSResult deletion;
  } cases[] = {
      {"K", kFailure, resultFromSystemError(m_facts.missing)},
      {"Gone", m_facts.readMissingKey, m_facts.deleteUnderMissing},
  };
  for (const auto& row : cases) {
    CQSRegValue value = this->value(row.below, "v");
    Data data;
    unsigned long number = 7;
    char* text = nullptr;
    void* bytes = &number;
    unsigned long size = 7;
    EXPECT_EQ(value.Read(data), row.read) << row.below;
    EXPECT_EQ(value.Read(number), row.read) << row.below;
    EXPECT_EQ(value.Read(text), row.read) << row.below;
    EXPECT_EQ(value.Read(bytes, size), row.read) << row.below;
    EXPECT_EQ(value.Delete("v"), row.deletion) << row.below;
    EXPECT_EQ(data.type, CQSRegValue::DATA_NONE);
    EXPECT_EQ(number + size, 14u) << "a failed read leaves its arguments alone";
    EXPECT_EQ(bytes, &number);
  }
}

TEST_F(RegValue, WritesOfEveryForm) {
  CQSRegValue value = this->value("New\\Key", "own");
  const unsigned long number = 0xFFFFFFFFul;
  const struct {
    const char* label;
    QSResult result;
    std::string expected;
  } cases[] = {
      {"text", value.Write("text", "a text"), "a text"},
      {"null", value.Write("null", static_cast<const char*>(nullptr)), ""},
      {"bytes", value.Write("bytes", "\1\2", 2ul), "\1\2"},
      {"list", value.Write("list", Lent(CQSRegValue::DATA_MULTI_STRING, "a\0b\0\0"s).m_data),
       "a\0b"s},
      {"own", value.Write("the own name"), "the own name"},
  };
  for (const auto& row : cases) {
    Data data;
    EXPECT_EQ(row.result, 0) << row.label;
    EXPECT_EQ(value.Read(row.label, data), 0) << row.label;
    EXPECT_EQ(contentOf(data), row.expected) << row.label;
  }
  unsigned long read = 0;
  EXPECT_EQ(value.Write("number", number), 0);
  EXPECT_EQ(value.Read("number", read), 0);
  EXPECT_EQ(read, number);
  EXPECT_EQ(value.Write("no bytes", nullptr, 0ul), 0);
  EXPECT_TRUE(key("New\\Key").IsCreated());
}

TEST_F(RegValue, WritesThatAreRefused) {
  CQSRegValue value = this->value("K", "v");
  for (const int type : {0, 6, -1}) {
    EXPECT_EQ(value.Write(Lent(static_cast<DataType>(type), "text").m_data), kFailure) << type;
  }
  if constexpr (sizeof(unsigned long) > 4) {
    EXPECT_EQ(value.Write(static_cast<const void*>("x"), static_cast<unsigned long>(1ull << 32)),
              kFailure);
    // Only the low half of a number has a place.
    EXPECT_EQ(value.Write(static_cast<unsigned long>(0x700000005ull)), 0);
    unsigned long number = 0;
    EXPECT_EQ(value.Read(number), 0);
    EXPECT_EQ(number, 5u);
  }
}

TEST_F(RegValue, BuffersBelongToTheObjectUntilItsNextRead) {
  CQSRegValue value = this->value("K", "first");
  EXPECT_EQ(value.Write("first", "second"), 0);
  EXPECT_EQ(value.Write("second", "third"), 0);
  EXPECT_EQ(value.Write("third", "end"), 0);
  char* text = nullptr;
  ASSERT_EQ(value.Read(text), 0);
  char* const before = text;
  Data data;
  ASSERT_EQ(value.Read("third", data), 0);
  EXPECT_STREQ(before, "second") << "a read into a record leaves the own buffer alone";
  EXPECT_EQ(value.Write("fourth", before), 0);
  EXPECT_STREQ(before, "second") << "and so does a write";
  // The text of one read may name the value of the next.
  ASSERT_EQ(value.Read(text, text), 0);
  EXPECT_STREQ(text, "third");
  ASSERT_EQ(value.Read(text, text), 0);
  EXPECT_STREQ(text, "end");
  ASSERT_EQ(value.Read("second", data), 0);
  ASSERT_EQ(value.Read(static_cast<const char*>(data.pData), data), 0);
  EXPECT_STREQ(static_cast<const char*>(data.pData), "end");
}

TEST_F(RegValue, ARecordOwnsWhatAReadPutIntoIt) {
  Data data;
  {
    CQSRegValue value = this->value("K", "v");
    EXPECT_EQ(value.Write("text"), 0);
    EXPECT_EQ(value.Read(data), 0);
  }
  EXPECT_STREQ(static_cast<const char*>(data.pData), "text");
  data.Clear();
  EXPECT_EQ(data.type, CQSRegValue::DATA_NONE);
  EXPECT_EQ(data.size, 0u);
  EXPECT_EQ(data.pData, nullptr);
  data.Clear();
  // A failed read clears the record all the same.
  EXPECT_EQ(value("K", "v").Read(data), 0);
  EXPECT_LT(value("K", "gone").Read(data), 0);
  EXPECT_EQ(data.type, CQSRegValue::DATA_NONE);
  EXPECT_EQ(data.pData, nullptr);
}

TEST_F(RegValue, LargeValuesComeBackWhole) {
  const std::string large(10u << 20, 'x');
  std::string items;
  for (int item = 0; item < 10000; ++item) {
    items += "item " + std::to_string(item) + '\0';
  }
  CQSRegValue value = this->value("K", "v");
  char* text = nullptr;
  EXPECT_EQ(value.Write("large", large.c_str()), 0);
  ASSERT_EQ(value.Read("large", text), 0);
  EXPECT_EQ(text, large);
  Data data;
  EXPECT_EQ(value.Write("list", Lent(CQSRegValue::DATA_MULTI_STRING, items + '\0').m_data), 0);
  ASSERT_EQ(value.Read("list", data), 0);
  EXPECT_EQ(contentOf(data) + '\0', items);
}

TEST_F(RegValue, NamesAndTextsOfEveryLetterComeBack) {
  const char* const names[] = {"\xC3\xA4\xE2\x82\xAC", "with space",  "a=b",
                               "50%CompanyName%",      "back\\slash", "UPPER"};
  for (const char* name : names) {
    CQSRegValue value = this->value("K\xC3\xB6", name);
    EXPECT_EQ(value.Write(name), 0) << name;
    EXPECT_EQ(textOf(value, nullptr), name);
  }
  EXPECT_EQ(value("K\xC3\xB6", "upper").Write("lower"), 0);
  CQSRegValue upper = value("k\xC3\xB6", "UPPER");
  EXPECT_EQ(textOf(upper, nullptr), "lower") << "names compare without case";
}

}  // namespace
