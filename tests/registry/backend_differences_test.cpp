// Where the two backends answer differently in calls of the manager.
#include <cstring>
#include <filesystem>

#include "tests/registry/registry_fixture.h"

namespace {

using namespace std::string_literals;
using namespace LTLib::Testing;

class BackendDifferences : public RegistryObjects {
 protected:
  BackendDifferences() { make("K\\Subkey"); }

  const std::string m_path = path("K");
};

TEST_F(BackendDifferences, OpeningAndFailures) {
  void* handle = nullptr;
  EXPECT_EQ(m_manager.regOpenKeyEx(m_root, path("Never").c_str(), 0, KEY_READ, &handle),
            kOpenMissingKey());
  EXPECT_EQ(handle != nullptr, kOpenMissingKey() == 0);
  EXPECT_EQ(m_manager.regCloseKey(handle), handle != nullptr ? 0 : kNullHandle());
  EXPECT_EQ(deleteRaw("Never"), kMissing());
  const RawKey raw(m_path);
  EXPECT_EQ(m_manager.regDeleteValue(raw.get(), "gone"), kMissing());
  EXPECT_EQ(m_manager.regDeleteValue(nullptr, "made"), kNullHandle());

  // A handle that was closed already, or is still open, shows under the address sanitizer.
  void* first = nullptr;
  ASSERT_EQ(m_manager.regOpenKeyEx(m_root, m_path.c_str(), 0, KEY_READ, &first), 0);
  handle = first;
  EXPECT_EQ(m_manager.regOpenKeyEx(m_root, m_path.c_str(), 0, KEY_READ, &handle), 0);
  EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  EXPECT_EQ(kClosesFormerHandle() ? 0 : m_manager.regCloseKey(first), 0);
}

TEST_F(BackendDifferences, NamesThatDoNotFit) {
  const RawKey raw(m_path);
  char name[8] = "-------";
  unsigned int size = 4;
  EXPECT_EQ(m_manager.regEnumKeyEx(raw.get(), 0, name, &size), kNameTooLong());
  if (kNameTooLong() == 0) {
    EXPECT_STREQ(name, "Subk---");
    EXPECT_EQ(size, 6u);
  }
  char whole[16] = {};
  EXPECT_EQ(m_manager.regEnumKey(raw.get(), 0, whole, sizeof whole), kEnumKey());
  EXPECT_STREQ(whole, kEnumKey() == 0 ? "Subkey" : "");
}

TEST_F(BackendDifferences, TypesAndSizesOfQueries) {
  const RawKey raw(m_path);
  EXPECT_EQ(raw.set("v", REG_SZ, "12345\0"s), 0);
  char name[] = "v";
  for (const unsigned int asked : {unsigned{REG_NONE}, unsigned{REG_DWORD}}) {
    const bool asNumber = asked == REG_DWORD && kTypeAsksForNumber();
    unsigned int type = asked;
    unsigned int size = 0;
    EXPECT_EQ(m_manager.regQueryValueEx(raw.get(), name, &type, nullptr, &size), asNumber ? -1 : 0);
    EXPECT_EQ(size, asNumber ? 0 : 5 + kTextTerminators());
    EXPECT_EQ(type, asNumber ? REG_DWORD : REG_SZ);
    std::string data(8, '.');
    type = asked;
    size = 6;
    EXPECT_EQ(m_manager.regQueryValueEx(raw.get(), name, &type,
                                        reinterpret_cast<unsigned char*>(data.data()), &size),
              0);
    EXPECT_EQ(data, asNumber ? "\x39\x30\0\0...."s : "12345\0.."s);
  }
  if (kTypeMayBeNull()) {
    EXPECT_EQ(m_manager.regQueryValueEx(raw.get(), name, nullptr, nullptr, nullptr), 0);
  }
}

TEST_F(BackendDifferences, CreatedKeys) {
  unsigned int disposition = 99;
  void* handle = nullptr;
  EXPECT_EQ(m_manager.regCreateKeyEx(m_root, path("New\\Sub").c_str(), nullptr, 0, KEY_ALL_ACCESS,
                                     &handle, &disposition),
            0);
  EXPECT_EQ(disposition, kWritesDisposition() ? 1u : 99u);
  EXPECT_EQ(m_manager.regCloseKey(handle), 0);
  CQSRegValue value = this->value("New\\Sub", nullptr);
  const char* const null = nullptr;
  const std::string set = kDefaultOfCreated() != nullptr ? "text:"s + kDefaultOfCreated() : "";
  EXPECT_EQ(contentOf(value, null), set.empty() ? codeOf(LTLib::kFailure) : set);
  EXPECT_EQ(value.Write(null, "mine"), 0);
  makeRaw("New\\Sub");
  EXPECT_EQ(contentOf(value, null), set.empty() ? "text:mine" : set);
}

TEST_F(BackendDifferences, ValuesOfOtherTypesAndNamesOfOtherCase) {
  CQSRegValue value = this->value("K", "v");
  EXPECT_EQ(value.Write(5ul), 0);
  EXPECT_EQ(value.Write("17 and more"), 0);
  EXPECT_EQ(contentOf(value), kKeepsTypeOfExisting() ? "number:17" : "text:17 and more");
  EXPECT_EQ(this->value("k", "V").Write("lower"), 0);
  EXPECT_EQ(this->value("K", "\xE4").Write("small"), 0);
  EXPECT_EQ(this->value("K", "\xC4").Write("capital"), 0);
  EXPECT_EQ(namesOf(CQSRegEnumValue(key("K"))).size(), kFoldsAsciiAlone() ? 3u : 2u);
}

TEST_F(BackendDifferences, StoreFiles) {
  EXPECT_EQ(GetConfigurationPathname(REG_ROOT_NONE), "");
  // An empty pathname stands for a file of the current folder.
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(stores().path());
  std::string pathname;
  EXPECT_EQ(SaveConfiguration(kUser, pathname), 0);
  EXPECT_EQ(pathname, filesServe() ? "HKEY_CURRENT_USER.cfg" : "");
  std::filesystem::current_path(before);
  EXPECT_EQ(SaveConfiguration(static_cast<enumRegRoot>(6)), filesServe() ? LTLib::kFailure : 0);
}

}  // namespace
