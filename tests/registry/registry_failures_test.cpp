// What the registry objects ask of a backend, and what they make of answers that the real ones
// hardly give.
#include <gtest/gtest.h>

#include "ltlib/registry/backend_choice.h"
#include "ltlib/registry/reg_enum.h"
#include "ltlib/registry/reg_value.h"
#include "ltlib/variables/variable_manager.h"
#include "tests/registry/stub_manager.h"

namespace {

using namespace std::string_literals;
using LTLib::kFailure;
using LTLib::resultFromSystemError;
using LTLib::Testing::StubManager;

using Data = CQSRegValue::e_data_struct;
using Asked = std::vector<std::string>;

constexpr enumRegRoot kMachine = REG_ROOT_LOCAL_MACHINE;
constexpr QSResult kDenied = resultFromSystemError(5);
constexpr QSResult kInvalidData = resultFromSystemError(13);

const std::string kOpenForReading = "open 80000002 K 20019";
const std::string kOpenForWriting = "open 80000002 K F003F";

class RegistryFailures : public testing::Test {
 protected:
  RegistryFailures() {
    m_stub->m_enum = 0;
    m_stub->asked();
  }
  ~RegistryFailures() override { LTLib::detail::replaceInstance(std::move(m_former)); }

  // The first expansion meets a registry without public variables.
  static StubManager* emptyStub() {
    auto* stub = new StubManager;
    stub->m_enum = 259;
    return stub;
  }

  StubManager* m_stub = emptyStub();
  std::unique_ptr<QSRegistryManagerImpl> m_former =
      LTLib::detail::replaceInstance(std::unique_ptr<QSRegistryManagerImpl>(m_stub));
  CQSRegValue m_value{kMachine, "K", "v"};
};

struct ReadCase {  // NOLINT(clang-analyzer-optin.performance.Padding): in the order of the events
  const char* label;
  int open, sizeQuery, fetch;
  unsigned int type, size;
  std::string bytes;
  QSResult result;
  CQSRegValue::e_data_type holds;
  std::uint32_t number;
  Asked asked;  // behind the open, ahead of the close
};

const Asked kSizeAlone = {"query \"v\" size, type 0"};
Asked fetched(unsigned int type) {
  return {kSizeAlone[0], "query \"v\" data, type " + std::to_string(type)};
}

const ReadCase kReads[] = {
    {"key is denied", 5, 0, 0, 1, 1, "", kDenied, CQSRegValue::DATA_NONE, 0, {}},
    {"key fails by -1", -1, 0, 0, 1, 1, "", -1, CQSRegValue::DATA_NONE, 0, {}},
    {"value is denied", 0, 5, 0, 1, 1, "", kFailure, CQSRegValue::DATA_NONE, 0, kSizeAlone},
    {"value fails by -1", 0, -1, 0, 1, 1, "", kFailure, CQSRegValue::DATA_NONE, 0, kSizeAlone},
    {"text fails", 0, 0, 5, 1, 3, "abc", kDenied, CQSRegValue::DATA_STRING, 0, fetched(1)},
    {"bytes fail", 0, 0, -1, 3, 3, "abc", -1, CQSRegValue::DATA_BINARY, 0, fetched(3)},
    {"number", 0, 0, 0, 4, 4, "\7\0\0\0"s, 0, CQSRegValue::DATA_DWORD, 7, fetched(4)},
    {"number fails", 0, 0, 5, 4, 4, "\0\0\0\0"s, kDenied, CQSRegValue::DATA_DWORD, 0, fetched(4)},
    {"number is long", 0, 0, 0, 4, 8, "\7\0\0\0\0\0\0\0"s, kInvalidData, CQSRegValue::DATA_DWORD, 0,
     kSizeAlone},
    {"number is short", 0, 0, 0, 4, 2, "\7\0"s, kInvalidData, CQSRegValue::DATA_DWORD, 0,
     kSizeAlone},
    {"64 bits", 0, 0, 0, 11, 8, "\xFF\xFF\xFF\xFF\0\0\0\0"s, 0, CQSRegValue::DATA_DWORD,
     0xFFFFFFFFu, fetched(11)},
    {"above 32 bits", 0, 0, 0, 11, 8, "\7\0\0\0\1\0\0\0"s, kInvalidData, CQSRegValue::DATA_DWORD, 0,
     fetched(11)},
    {"64 bits fail", 0, 0, 5, 11, 8, "\0\0\0\0\0\0\0\0"s, kDenied, CQSRegValue::DATA_DWORD, 0,
     fetched(11)},
    {"64 bits are short", 0, 0, 0, 11, 4, "\7\0\0\0"s, kInvalidData, CQSRegValue::DATA_DWORD, 0,
     kSizeAlone},
    {"no type", 0, 0, 0, 0, 9, "", 0, CQSRegValue::DATA_NONE, 0, kSizeAlone},
    {"other byte order", 0, 0, 0, 5, 4, "", 0, CQSRegValue::DATA_NONE, 0, kSizeAlone},
    {"link", 0, 0, 0, 6, 4, "", 0, CQSRegValue::DATA_NONE, 0, kSizeAlone},
    {"unknown type", 0, 0, 0, 99, 4, "", 0, CQSRegValue::DATA_NONE, 0, kSizeAlone},
};

TEST_F(RegistryFailures, EachRowOfAFailedRead) {
  for (const ReadCase& row : kReads) {
    m_stub->m_open = row.open;
    m_stub->m_sizeQuery = row.sizeQuery;
    m_stub->m_fetch = row.fetch;
    m_stub->m_type = row.type;
    m_stub->m_size = row.size;
    m_stub->m_bytes = row.bytes;
    Data data;
    EXPECT_EQ(m_value.Read(data), row.result) << row.label;
    EXPECT_EQ(data.type, row.holds) << row.label;
    if (row.holds == CQSRegValue::DATA_DWORD) {
      EXPECT_EQ(data.dwValue, row.number) << row.label;
    }
    Asked expected = {kOpenForReading};
    expected.insert(expected.end(), row.asked.begin(), row.asked.end());
    if (row.open == 0) {
      expected.emplace_back("close K");
    }
    EXPECT_EQ(m_stub->asked(), expected) << row.label;

    void* bytes = &data;
    unsigned long size = 1;
    const QSResult result = m_value.Read(bytes, size);
    m_stub->asked();
    if (row.result < 0) {
      EXPECT_EQ(result, row.result) << row.label;
      EXPECT_EQ(bytes, &data) << row.label;
    } else if (row.holds == CQSRegValue::DATA_NONE) {
      EXPECT_EQ(result, 0) << row.label;
      EXPECT_EQ(bytes, nullptr) << row.label;
      EXPECT_EQ(size, row.size) << row.label;
    }
  }
}

// Buffers end in a zero byte also where the backend's answer does not.
TEST_F(RegistryFailures, TextsWithoutAnEndGetOne) {
  m_stub->m_bytes = "abc";
  m_stub->m_size = 3;
  for (const unsigned int type : {REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ, REG_BINARY}) {
    m_stub->m_type = type;
    Data data;
    EXPECT_EQ(m_value.Read(data), 0);
    EXPECT_STREQ(static_cast<const char*>(data.pData), "abc");
  }
  m_stub->m_size = 0;
  Data data;
  EXPECT_EQ(m_value.Read(data), 0);
  EXPECT_STREQ(static_cast<const char*>(data.pData), "");
}

struct WriteCase {
  const char* label;
  const char* path;
  int open, create, set;
  QSResult result;
  Asked asked;
};

const WriteCase kWrites[] = {
    {"key is there", "K", 0, 0, 0, 0, {kOpenForWriting, "set \"v\" type 1", "close K"}},
    {"value is denied", "K", 0, 0, 5, kDenied, {kOpenForWriting, "set \"v\" type 1", "close K"}},
    {"value fails by -1", "K", 0, 0, -1, -1, {kOpenForWriting, "set \"v\" type 1", "close K"}},
    {"key is made",
     "K",
     2,
     0,
     0,
     0,
     {kOpenForWriting, "create 80000002 K F003F", "set \"v\" type 1", "close K"}},
    {"key cannot be made", "K", 2, 5, 0, kDenied, {kOpenForWriting, "create 80000002 K F003F"}},
    {"no path", "", 2, 0, 0, kFailure, {"open 80000002  F003F"}},
    {"no such variable", "%Nowhere%\\K", 2, 0, 0, kFailure, {"open 80000002 %Nowhere%\\K F003F"}},
};

TEST_F(RegistryFailures, EachRowOfAFailedWrite) {
  for (const WriteCase& row : kWrites) {
    m_stub->m_open = row.open;
    m_stub->m_create = row.create;
    m_stub->m_set = row.set;
    CQSRegValue value(kMachine, row.path, "v");
    EXPECT_EQ(value.Write("text"), row.result) << row.label;
    EXPECT_EQ(m_stub->asked(), row.asked) << row.label;
  }
}

TEST_F(RegistryFailures, WhatIsWritten) {
  Data data;
  for (int type = -1; type <= 6; ++type) {
    data.type = static_cast<CQSRegValue::e_data_type>(type);
    data.size = 4;
    const unsigned int registryTypes[] = {REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ, REG_DWORD,
                                          REG_BINARY};
    char bytes[] = "a\0b";
    data.pData = bytes;
    Asked expected;
    if (type >= 1 && type <= 5) {
      expected = {kOpenForWriting, "set \"v\" type " + std::to_string(registryTypes[type - 1]),
                  "close K"};
      if (type == CQSRegValue::DATA_DWORD) {
        data.dwValue = 0x00620061;
      }
    } else if (type != 0) {
      expected = {kOpenForWriting, "close K"};
    }
    EXPECT_EQ(m_value.Write(data), expected.size() == 3 ? 0 : kFailure) << type;
    EXPECT_EQ(m_stub->asked(), expected) << type;
    if (expected.size() == 3) {
      EXPECT_EQ(m_stub->m_bytes, "a\0b\0"s) << type;
    }
    data.type = CQSRegValue::DATA_NONE;
  }
  EXPECT_EQ(m_value.Write(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(m_stub->m_bytes, "\0"s);
  EXPECT_EQ(m_value.Write("name", "text"), 0);
  EXPECT_EQ(m_stub->m_bytes, "text\0"s);
  EXPECT_EQ(m_stub->asked().at(4), "set \"name\" type 1");
}

TEST_F(RegistryFailures, DeletionGoesOnWithoutAKey) {
  EXPECT_EQ(m_value.Delete(nullptr), 0);
  EXPECT_EQ(m_stub->asked(), (Asked{kOpenForWriting, "delete \"v\"", "close K"}));
  EXPECT_EQ(CQSRegValue(kMachine, "K", nullptr).Delete(nullptr), 0);
  EXPECT_EQ(m_stub->asked(), (Asked{kOpenForWriting, "delete null", "close K"}));
  m_stub->m_open = 2;
  EXPECT_EQ(m_value.Delete("w"), resultFromSystemError(6));
  EXPECT_EQ(m_stub->asked(), (Asked{kOpenForWriting, "delete \"w\" of null"}));
}

TEST_F(RegistryFailures, WalksMapNumbersAndStayWhereTheyFailed) {
  const struct {
    int open, number;
    std::size_t length;
    QSResult result;
  } cases[] = {
      {5, 0, 3, kDenied},
      {0, 259, 3, resultFromSystemError(259)},
      {0, -1, 3, -1},
      {0, 234, 3, resultFromSystemError(234)},
      {0, 0, 199, 0},
      {0, 0, 200, resultFromSystemError(234)},
      {0, 0, 4000000, resultFromSystemError(234)},
  };
  for (const auto& row : cases) {
    CQSRegEnumValue walk(kMachine, "K");
    m_stub->asked();
    m_stub->m_open = row.open;
    m_stub->m_enum = row.number;
    m_stub->m_name = std::string(row.length, 'n');
    std::string name;
    EXPECT_EQ(walk.GetNext(name), row.result);
    EXPECT_EQ(name.size(), row.result == 0 ? row.length : 0);
    m_stub->m_open = m_stub->m_enum = 0;
    m_stub->m_name = "next";
    EXPECT_EQ(walk.GetNext(name), 0);
    const Asked asked = m_stub->asked();
    EXPECT_EQ(asked.at(asked.size() - 2), row.result == 0 ? "walk 1" : "walk 0");
    EXPECT_EQ(asked.back(), "close K");
  }
}

TEST_F(RegistryFailures, RecursiveDeletionGoesDeepestFirstAndStopsAtAFailure) {
  m_stub->m_subKeys = {{"K", {"A", "B"}}, {"K\\A", {"X", "Y"}}, {"K\\A\\X", {"Z"}}};
  m_stub->m_undeletable = "K\\A\\Y";
  CQSRegKey key(kMachine, "K");
  const auto deletions = [this] {
    Asked deleted = m_stub->asked();
    std::erase_if(deleted, [](const std::string& words) { return words[0] != 'd'; });
    return deleted;
  };
  EXPECT_EQ(key.DeleteKey(true), kDenied);
  EXPECT_EQ(deletions(), (Asked{"delete 80000002 K\\A\\X\\Z", "delete 80000002 K\\A\\X",
                                "delete 80000002 K\\A\\Y"}));
  m_stub->m_undeletable = "";
  EXPECT_EQ(key.DeleteKey(true), 0);
  EXPECT_EQ(deletions(), (Asked{"delete 80000002 K\\A\\Y", "delete 80000002 K\\A",
                                "delete 80000002 K\\B", "delete 80000002 K"}));
  m_stub->m_open = 5;
  EXPECT_EQ(key.DeleteKey(true), 0) << "what cannot be listed counts as empty";
  EXPECT_EQ(key.DeleteKey(false), 0);
}

// A sub-key that leads to the key it lies in, as a backend may read it, would be followed for ever.
TEST_F(RegistryFailures, RecursiveDeletionEndsOnKeysThatLeadBack) {
  EXPECT_EQ(QSConfigVariableManager::GetInstance()->AddVariable("Back", "\\"), 0);
  for (const char* path : {"K", "K\\\\", "K\\\\\\"}) {
    m_stub->m_subKeys[path] = {"%Back%"};
  }
  EXPECT_EQ(CQSRegKey(kMachine, "K").DeleteKey(true), kFailure);
  for (const std::string& words : m_stub->asked()) {
    EXPECT_NE(words[0], 'd') << words;
  }
}

TEST_F(RegistryFailures, ExceptionsLeaveNothingOpen) {
  m_stub->m_throws = true;
  Data data;
  std::string name;
  char* text = nullptr;
  EXPECT_THROW(m_value.Read(data), QSException);
  EXPECT_THROW(m_value.Read(text), QSException);
  EXPECT_THROW(CQSRegEnumKey(kMachine, "K").GetFirst(name), QSException);
  EXPECT_THROW(CQSRegEnumValue(kMachine, "K").GetFirst(name), QSException);
  EXPECT_THROW(CQSRegKey(kMachine, "K").DeleteKey(true), QSException);
  int open = 0;
  for (const std::string& words : m_stub->asked()) {
    open += words.starts_with("open") ? 1 : words.starts_with("close") ? -1 : 0;
  }
  EXPECT_EQ(open, 0);
  m_stub->m_throws = false;
  EXPECT_EQ(m_value.Read(text), 0);
}

TEST_F(RegistryFailures, RootsAreOpenedByTheirHandles) {
  const std::pair<int, const char*> cases[] = {
      {0, "0"},        {1, "80000001"}, {2, "80000005"}, {3, "80000003"},
      {4, "80000000"}, {5, "80000002"}, {6, "0"},        {-1, "0"},
  };
  for (const auto& [root, handle] : cases) {
    EXPECT_TRUE(CQSRegKey(static_cast<enumRegRoot>(root), "P").IsCreated());
    EXPECT_EQ(m_stub->asked(), (Asked{std::string("open ") + handle + " P 20019", "close P"}));
  }
  m_stub->m_open = 2;
  EXPECT_FALSE(CQSRegKey(kMachine, "P").IsCreated());
}

}  // namespace
