// The backend over the operating system's registry, or over the double that stands for it, and the
// registry objects over that backend when calls fail. This program also runs the tests of the
// objects over it.
#include <optional>
#include <tuple>

#include "ltlib/platform/os_registry.h"
#include "ltlib/registry/backend_choice.h"
#include "ltlib/registry/win32_registry_manager.h"
#include "tests/registry/registry_fixture.h"
#include "tests/support/os_registry_double.h"
#include "tests/support/system.h"

namespace {

using namespace std::string_literals;
using namespace LTLib::Testing;
namespace OsRegistry = LTLib::Platform::OsRegistry;
using LTLib::kFailure;
using LTLib::resultFromSystemError;

class FailingManager : public QSWin32RegistryManager {
 public:
  int m_fetch = 0;         // the number that a read gives, if not its own
  bool m_throws = false;   // from a query
  bool m_outside = false;  // answers as a manager that has no answer in one step

  int queryWholeValue(void* key, const char* valueName, LTLib::RegistryValue& value) override {
    if (m_throws) {
      throw QSException("failing_manager", __LINE__, kFailure, "registry read failed");
    }
    const int result = m_outside ? QSRegistryManagerImpl::queryWholeValue(key, valueName, value)
                                 : QSWin32RegistryManager::queryWholeValue(key, valueName, value);
    return m_fetch != 0 ? m_fetch : result;
  }
};

FailingManager* s_manager = nullptr;

// No test leaves a key open, those of the objects included.
struct HandleCheck : testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo&) override { EXPECT_EQ(openHandles, 0); }
};

// Serves from before the first test to behind the last.
class SystemServes : public testing::Environment {
  void SetUp() override {
    auto manager = std::make_unique<FailingManager>();
    s_manager = manager.get();
    m_former = LTLib::detail::replaceInstance(std::move(manager));
    testing::UnitTest::GetInstance()->listeners().Append(new HandleCheck);
  }
  void TearDown() override { LTLib::detail::replaceInstance(std::move(m_former)); }

  std::unique_ptr<QSRegistryManagerImpl> m_former;
};

testing::Environment* const s_system = testing::AddGlobalTestEnvironment(new SystemServes);

class SystemBackend : public RegistryObjects {
 protected:
  SystemBackend() { make("K"); }
  ~SystemBackend() override {
    s_manager->m_fetch = 0;
    s_manager->m_throws = false;
    s_manager->m_outside = false;
    beforeQuery = nullptr;
  }

  int set(const char* name, unsigned int type, const std::string& bytes) const {
    return open("K").set(name, bytes, type);
  }

  // A query for the size, or with a capacity for the data, as "result|type|size|data".
  std::string query(const char* name, unsigned int capacity) {
    const OpenKey key = open("K");
    std::string own = name;
    std::string data(capacity + 16, '.');
    unsigned int type = 77;
    const int result = m_manager.regQueryValueEx(
        key.get(), own.data(), &type,
        capacity != 0 ? reinterpret_cast<unsigned char*>(data.data()) : nullptr, &capacity);
    return std::to_string(result) + '|' + std::to_string(type) + '|' + std::to_string(capacity) +
           '|' + data.substr(0, data.find_last_not_of('.') + 1);
  }

  // What the system stores, past the conversions of the backend, and with bytes puts it there.
  std::u16string stored(const char16_t* name, std::u16string text = {}, unsigned int bytes = 0) {
    const OpenKey key = open("K");
    if (bytes != 0) {
      EXPECT_EQ(OsRegistry::setValue(key.get(), name, REG_SZ,
                                     reinterpret_cast<const unsigned char*>(text.data()), bytes),
                0);
    }
    text.resize(64);
    unsigned int type = 0;
    unsigned int size = 128;
    EXPECT_EQ(OsRegistry::queryValue(key.get(), name, &type,
                                     reinterpret_cast<unsigned char*>(text.data()), &size),
              0);
    return text.substr(0, size / 2);
  }
};

TEST_F(SystemBackend, StoresTextsWideAndGivesThemAsUtf8) {
  const std::pair<std::string, std::u16string> cases[] = {
      {"\0"s, u"\0"s},
      {"\xF0\x9F\x98\x80\0"s, u"\xD83D\xDE00\0"s},
      {"one\0two\0\0"s, u"one\0two\0\0"s},
      {"abc", u"abc"},
  };
  for (const unsigned int type : {REG_SZ, REG_EXPAND_SZ, REG_LINK, REG_MULTI_SZ}) {
    for (const auto& [text, wide] : cases) {
      EXPECT_EQ(set("n", type, text), 0);
      EXPECT_TRUE(stored(u"n") == wide) << text;
      const std::string size = std::to_string(text.size());
      EXPECT_EQ(query("n", 0), "0|" + std::to_string(type) + '|' + size + '|');
      EXPECT_EQ(query("n", static_cast<unsigned int>(text.size())),
                "0|" + std::to_string(type) + '|' + size + '|' + text);
    }
    EXPECT_EQ(set("none", type, ""), 0) << "a text of no bytes is not written";
    EXPECT_EQ(query("none", 0).substr(0, 2), "2|");
  }
  (void)stored(u"n", u"abcd", 7);
  EXPECT_EQ(query("n", 3), "0|1|3|abc") << "half a character more";
  // Names pass through the system's code page.
  const std::string name = LTLib::Platform::hasSystemRegistry() ? "n\xE4" : "n\xC3\xA4";
  EXPECT_EQ(set(name.c_str(), REG_SZ, "text"), 0);
  EXPECT_TRUE(stored(u"n\u00E4") == u"text");
}

// Texts are cut to the caller's capacity, at a character; for all other types the size of the value
// goes to the system instead.
TEST_F(SystemBackend, Capacities) {
  EXPECT_EQ(set("n", REG_SZ, "a\xE2\x82\xAC"s + "bc\0"s), 0);
  EXPECT_EQ(query("n", 1), "0|1|7|a");
  EXPECT_EQ(query("n", 4), "0|1|7|a\xE2\x82\xAC");
  EXPECT_EQ(query("n", 6), "0|1|7|a\xE2\x82\xAC"s + "bc");
  EXPECT_EQ(set("n", REG_BINARY, "\0\xFF\x80 more"s), 0);
  EXPECT_EQ(query("n", 2), "0|3|8|\0\xFF\x80 more"s);
  EXPECT_EQ(set("n", REG_DWORD, ""), 0);
  EXPECT_EQ(query("n", 4), "0|4|0|");
}

TEST_F(SystemBackend, FailuresOfReadsAndWrites) {
  CQSRegValue value = this->value("K", "v");
  EXPECT_EQ(set("v", REG_SZ, "text"), 0);
  const std::pair<int, QSResult> failures[] = {
      {5, resultFromSystemError(5)}, {kNotThere, kFailure}, {-1, kFailure}};
  for (const auto& [number, result] : failures) {
    s_manager->m_fetch = number;
    EXPECT_EQ(contentOf(value), codeOf(result)) << number;
  }
  s_manager->m_fetch = 5;
  CQSRegValue gone = this->value("K", "gone");
  EXPECT_EQ(contentOf(gone), codeOf(kFailure)) << "whatever the number";
  s_manager->m_fetch = 0;
  s_manager->m_throws = true;
  char* text = nullptr;
  EXPECT_THROW(value.Read(text), QSException);
  EXPECT_TRUE(CQSRegKey(key("K")).IsCreated()) << "and its end closes the key";
  EXPECT_EQ(openHandles, 0);
  EXPECT_EQ(CQSRegValue(REG_ROOT_NONE, "", "v").Write("text"), kFailure) << "no key to make";
  EXPECT_EQ(CQSRegValue(kUser, "%Nowhere%\\K", "v").Write("text"), kFailure);
  for (const int type : {-1, 0, 6}) {
    CQSRegValue::e_data_struct data;
    data.type = static_cast<CQSRegValue::e_data_type>(type);
    EXPECT_EQ(value.Write(data), kFailure) << type;
    data.type = CQSRegValue::DATA_NONE;
  }
  EXPECT_EQ(this->value("Never", "v").Write(CQSRegValue::e_data_struct()), kFailure);
  EXPECT_FALSE(key("Never").IsCreated()) << "nothing is opened for nothing";
}

TEST_F(SystemBackend, StoredBytesThatAreNotOfTheirType) {
  const std::tuple<unsigned int, std::string, const char*> cases[] = {
      {REG_DWORD, "\7\0\0\0\0\0\0\0"s, "8007000D"},
      {REG_QWORD, "\7\0\0\0"s, "8007000D"},
      {REG_QWORD, "\xFF\xFF\xFF\xFF\0\0\0\0"s, "number:4294967295"},
      {99, "123456789", "none:9"},
  };
  CQSRegValue value = this->value("K", "v");
  for (const auto& [type, bytes, content] : cases) {
    EXPECT_EQ(set("v", type, bytes), 0);
    EXPECT_EQ(contentOf(value), content) << type;
  }
  // Buffers end in a zero byte also where what is stored does not.
  for (const unsigned int type : {REG_SZ, REG_EXPAND_SZ, REG_BINARY}) {
    EXPECT_EQ(set("v", type, "abc"), 0);
    CQSRegValue::e_data_struct data;
    EXPECT_EQ(value.Read(data), 0);
    EXPECT_STREQ(static_cast<const char*>(data.pData), "abc");
  }
}

// What somebody makes of a value; without a type it is deleted.
struct Form {
  std::optional<unsigned int> type;
  std::string bytes;
};

// The registry changes at each query, until the last form stays.
class ChangingValue : public SystemBackend {
 protected:
  ChangingValue() {
    s_key = &m_key;
    s_forms.clear();
    beforeQuery = [] {
      if (!s_forms.empty()) {
        const Form& form = s_forms.front();
        EXPECT_EQ(form.type ? s_key->set("v", form.bytes, *form.type) : s_key->remove("v"), 0);
        s_forms.erase(s_forms.begin());
      }
    };
  }
  void SetUp() override {
    if (kOnWindows) {
      GTEST_SKIP() << "it takes the double";
    }
  }

  static inline const OpenKey* s_key;
  static inline std::vector<Form> s_forms;
  const OpenKey m_key = open("K");
};

// All begin with what is too large for a first guess at the room. A manager that answers in two
// steps looks more often, and is asked until both answers are of one value.
TEST_F(ChangingValue, IsReadAsOneOfItsForms) {
  const std::string large(60000, 'x');
  const Form bytes{REG_BINARY, std::string(600, 'f')};
  const Form text{REG_SZ, bytes.bytes};
  const Form gone;
  std::vector<Form> growing;
  for (std::size_t i = 0; i < 300; ++i) {
    growing.push_back({REG_BINARY, std::string(600 + 2 * i, 'g')});
  }
  const std::tuple<bool, std::vector<Form>, std::string> cases[] = {
      {false, {bytes, {REG_BINARY, large}}, "bytes:" + large},
      {false, {text, {REG_SZ, "ab\0"s}}, "text:ab"},
      {false, {bytes, {REG_DWORD, "\5\0\0\0"s}}, "number:5"},
      {false, {text, gone}, codeOf(kFailure)},
      {false, growing, codeOf(resultFromSystemError(kMoreData))},
      {true, {bytes, bytes, {REG_BINARY, large}}, "bytes:" + large},
      {true, {text, text, {REG_SZ, large + '\0'}}, "text:" + large},
      {true, {text, text, gone}, codeOf(kFailure)},
      {true, growing, codeOf(resultFromSystemError(kMoreData))},
  };
  CQSRegValue value = this->value("K", "v");
  for (const auto& [outside, forms, content] : cases) {
    s_manager->m_outside = outside;
    s_forms = forms;
    CQSRegValue::e_data_struct data;
    const QSResult result = value.Read(data);
    EXPECT_TRUE((result < 0 ? codeOf(result) : contentOf(data)) == content)
        << outside << content.substr(0, 20);
  }
}

// A raw query repeats what concerns texts; the room for all else is the caller's to have.
TEST_F(ChangingValue, IsQueriedAsOneOfItsForms) {
  const Form first{REG_SZ, std::string(600, 'f')};
  const Form second{REG_SZ, "\xE2\x82\xAC" + std::string(900, 'x')};
  const Form bytes{REG_BINARY, std::string(2000, 'b')};
  const std::tuple<std::vector<Form>, unsigned int, std::string> cases[] = {
      {{first, second}, 2000, "0|1|903|" + second.bytes},
      {{first, second}, 0, "0|1|903|"},
      {{first, bytes}, 2000, "0|3|2000|" + bytes.bytes},
      {{bytes, second}, 2000, "0|1|903|" + second.bytes},
  };
  for (const auto& [forms, capacity, answer] : cases) {
    s_forms = forms;
    EXPECT_TRUE(query("v", capacity).starts_with(answer)) << answer.substr(0, 10);
  }
}

}  // namespace
