// Where the two backends answer differently: one case for each thing that a caller can see.
#include <array>
#include <cstring>
#include <filesystem>

#include "tests/registry/registry_fixture.h"

namespace {

using namespace std::string_literals;
using LTLib::predefinedRootHandle;
using LTLib::resultFromSystemError;
using LTLib::Testing::contentOf;
using LTLib::Testing::kUser;
using LTLib::Testing::RawKey;

using Data = CQSRegValue::e_data_struct;

class BackendDifferences : public LTLib::Testing::RegistryObjects {
 protected:
  BackendDifferences() { make("K"); }

  // What comes back of bytes that were set as `type`.
  std::string roundTrip(unsigned int type, const std::string& bytes) {
    const RawKey raw(path("K"));
    EXPECT_EQ(raw.set("v", type, bytes), 0);
    CQSRegValue value = this->value("K", "v");
    EXPECT_EQ(value.Read(m_data), 0);
    const std::string content = contentOf(m_data);
    EXPECT_EQ(value.Delete(nullptr), 0);
    return content;
  }

  QSRegistryManager& m_manager = *QSRegistryManager::GetInstance();
  void* const m_root = predefinedRootHandle(kUser);
  Data m_data;
};

TEST_F(BackendDifferences, MissingKeysAndNumbersOfFailure) {
  void* handle = nullptr;
  EXPECT_EQ(m_manager.regOpenKeyEx(m_root, path("Never").c_str(), 0, KEY_READ, &handle),
            m_facts.openMissingKey);
  EXPECT_EQ(handle != nullptr, m_facts.openMissingKey == 0);
  EXPECT_EQ(m_manager.regCloseKey(handle), handle != nullptr ? 0 : m_facts.nullHandle);
  EXPECT_EQ(m_manager.regDeleteKey(m_root, path("Never").c_str()), m_facts.missing);
  const RawKey raw(path("K"));
  EXPECT_EQ(m_manager.regDeleteValue(raw.get(), "gone"), m_facts.missing);
  EXPECT_EQ(m_manager.regDeleteValue(nullptr, "made"), m_facts.nullHandle);
}

TEST_F(BackendDifferences, OpeningOverAnOpenHandle) {
  void* first = nullptr;
  ASSERT_EQ(m_manager.regOpenKeyEx(m_root, path("K").c_str(), 0, KEY_READ, &first), 0);
  void* handle = first;
  EXPECT_EQ(m_manager.regOpenKeyEx(m_root, path("K").c_str(), 0, KEY_READ, &handle), 0);
  EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  // A handle that was closed already, or is still open, shows under the address sanitizer.
  if (!m_facts.closesFormerHandle) {
    EXPECT_EQ(m_manager.regCloseKey(first), 0);
  }
}

TEST_F(BackendDifferences, NamesThatDoNotFit) {
  make("K\\Subkey");
  const RawKey raw(path("K"));
  char name[8] = "-------";
  unsigned int size = 4;
  EXPECT_EQ(m_manager.regEnumKeyEx(raw.get(), 0, name, &size), m_facts.nameTooLong);
  if (m_facts.nameTooLong == 0) {
    EXPECT_STREQ(name, "Subk---");
    EXPECT_EQ(size, 6u);
  }
  char whole[16] = {};
  EXPECT_EQ(m_manager.regEnumKey(raw.get(), 0, whole, sizeof whole), m_facts.enumKey);
  EXPECT_STREQ(whole, m_facts.enumKey == 0 ? "Subkey" : "");
}

TEST_F(BackendDifferences, TypesAndSizesOfQueries) {
  const RawKey raw(path("K"));
  EXPECT_EQ(raw.set("v", REG_SZ, "12345\0"s), 0);
  char name[] = "v";
  unsigned int type = 0;
  unsigned int size = 0;
  EXPECT_EQ(m_manager.regQueryValueEx(raw.get(), name, &type, nullptr, &size), 0);
  EXPECT_EQ(type, REG_SZ);
  EXPECT_EQ(size, 5 + m_facts.textTerminators);
  std::array<unsigned char, 8> room{};
  EXPECT_EQ(m_manager.regQueryValueEx(raw.get(), name, &type, room.data(), &size), 0);
  EXPECT_STREQ(reinterpret_cast<const char*>(room.data()), "12345");
  EXPECT_EQ(size, 5 + m_facts.textTerminators);

  type = REG_DWORD;
  size = 6;
  EXPECT_EQ(m_manager.regQueryValueEx(raw.get(), name, &type, room.data(), &size), 0);
  if (m_facts.typeAsksForNumber) {
    const std::uint32_t expected = 12345;
    EXPECT_EQ(std::memcmp(room.data(), &expected, sizeof expected), 0);
  } else {
    EXPECT_EQ(type, REG_SZ);
    EXPECT_STREQ(reinterpret_cast<const char*>(room.data()), "12345");
  }
  if (m_facts.typeMayBeNull) {
    EXPECT_EQ(m_manager.regQueryValueEx(raw.get(), name, nullptr, nullptr, nullptr), 0);
  }
}

TEST_F(BackendDifferences, CreatedKeys) {
  unsigned int disposition = 99;
  void* handle = nullptr;
  EXPECT_EQ(m_manager.regCreateKeyEx(m_root, path("New\\Sub").c_str(), nullptr, 0, KEY_ALL_ACCESS,
                                     &handle, &disposition),
            0);
  EXPECT_EQ(disposition, m_facts.writesDisposition ? 1u : 99u);
  EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  CQSRegValue value = this->value("New\\Sub", nullptr);
  char* text = nullptr;
  EXPECT_EQ(value.Read(nullptr, text), m_facts.createSetsDefault ? 0 : LTLib::kFailure);
  EXPECT_EQ(value.Write(nullptr, "mine"), 0);
  handle = nullptr;
  EXPECT_EQ(m_manager.regCreateKey(m_root, path("New\\Sub").c_str(), &handle), 0);
  EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  ASSERT_EQ(value.Read(nullptr, text), 0);
  EXPECT_STREQ(text, m_facts.createSetsDefault ? "0" : "mine");
}

TEST_F(BackendDifferences, WhatBecomesOfTypes) {
  EXPECT_EQ(roundTrip(REG_EXPAND_SZ, "%PATH%\0"s), "%PATH%");
  EXPECT_EQ(m_data.type == CQSRegValue::DATA_STRING, m_facts.expandType == REG_SZ);
  CQSRegValue value = this->value("K", "v");
  EXPECT_EQ(value.Write(5ul), 0);
  EXPECT_EQ(value.Write("17 and more"), 0);
  unsigned long number = 0;
  char* text = nullptr;
  EXPECT_EQ(value.Read(number), m_facts.keepsTypeOfExisting ? 0 : LTLib::kFailure);
  EXPECT_EQ(value.Read(text), m_facts.keepsTypeOfExisting ? LTLib::kFailure : 0);
  if (m_facts.keepsTypeOfExisting) {
    EXPECT_EQ(number, 17u);
  }
}

TEST_F(BackendDifferences, WhatBecomesOfContent) {
  const bool file = m_facts.binaryEndsAtNul;
  EXPECT_EQ(roundTrip(REG_BINARY, "A\0B"s), file ? "A" : "A\0B"s);
  EXPECT_EQ(roundTrip(REG_BINARY, "\0B"s), file ? "" : "\0B"s);
  EXPECT_EQ(roundTrip(REG_MULTI_SZ, "a\\b\0c,d\0\0"s),
            m_facts.splitsListItems ? "a\0b\0c\0d"s : "a\\b\0c,d"s);
  EXPECT_EQ(roundTrip(REG_MULTI_SZ, "one\0\0"s), "one");
  EXPECT_EQ(roundTrip(REG_SZ, "\xC3\xA4\0"s), "\xC3\xA4");
  EXPECT_EQ(m_data.size, 2 + m_facts.textTerminators) << "bytes, not characters";
  EXPECT_EQ(roundTrip(REG_SZ, "\xFF\xFE\0"s) == "\xFF\xFE", m_facts.keepsBytesThatAreNoText);
}

TEST_F(BackendDifferences, StoreFiles) {
  EXPECT_EQ(GetConfigurationPathname(kUser).empty(), !m_facts.hasStoreFile);
  EXPECT_EQ(GetConfigurationPathname(REG_ROOT_NONE), "");
  // An empty pathname stands for a file of the current folder.
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(LTLib::Testing::stores().folder().path());
  std::string pathname;
  EXPECT_EQ(SaveConfiguration(kUser, pathname), 0);
  EXPECT_EQ(pathname, m_facts.hasStoreFile ? "HKEY_CURRENT_USER.cfg" : "");
  std::filesystem::current_path(before);
  EXPECT_EQ(SaveConfiguration(static_cast<enumRegRoot>(6)),
            m_facts.hasStoreFile ? LTLib::kFailure : 0);
}

}  // namespace
