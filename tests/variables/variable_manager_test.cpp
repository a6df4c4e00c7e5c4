#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <optional>
#include <stdexcept>
#include <thread>

#include "ltlib/platform/files.h"
#include "ltlib/variables/first_use_load.h"
#include "ltlib/variables/variable_manager_impl.h"
#include "tests/support/latch.h"

namespace {

using LTLib::VariableOrigin;
namespace Platform = LTLib::Platform;

constexpr QSResult kFailure = LTLib::kFailure;
constexpr QSResult kAlreadyPresent = LTLib::kAlreadyPresent;
constexpr QSResult kNotFound = LTLib::kNotFound;

class VariableManager : public testing::Test {
 protected:
  VariableManager() { EXPECT_EQ(m_manager.AddVariables(LTLib::detail::s_defaultVariables), 0); }

  std::string expanded(std::string text) {
    m_result = m_manager.ExpandString(text);
    return text;
  }

  // What the first expansion finds, and the order in which it asks: c for the file, p for the
  // public variables.
  std::optional<std::string> m_configuration;
  std::function<void(QSConfigVariableManager&)> m_publicVariables;
  std::string m_asked;

  QSConfigVariableManagerImpl m_manager{{.readConfigFile =
                                             [this] {
                                               m_asked += 'c';
                                               return m_configuration;
                                             },
                                         .loadPublicVariables =
                                             [this](QSConfigVariableManager& manager) {
                                               m_asked += 'p';
                                               if (m_publicVariables) {
                                                 m_publicVariables(manager);
                                               }
                                             }}};
  QSResult m_result = 0;
};

TEST_F(VariableManager, DefaultTableExpands) {
  const char* const cases[][2] = {
      {"%SharedRoot%", "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared"},
      {"%CLASSID%\\x", "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared\\CLASSID\\x"},
      {"%PublicVariables%", "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Shared\\PublicVars"},
      {"%ClientRoot%", "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Quillmere"},
      {"%PortalRoot%", "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Lumenpane"},
      {"%MarlinRoot%", "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\Netsieve"},
      {"%PortalVersion% %MarlinVersion%", "3.0 1.0"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(expanded(row[0]), row[1]);
    EXPECT_EQ(m_result, 0) << row[0];
  }
  EXPECT_EQ(expanded("%companyname%"), "%companyname%");
  EXPECT_EQ(m_result, kFailure);
}

TEST_F(VariableManager, DefinesChangesAndRemoves) {
  bool defined = true;
  EXPECT_EQ(m_manager.IsVariableDefined("New", defined), 0);
  EXPECT_FALSE(defined);
  EXPECT_EQ(m_manager.SetVariable("New", "1"), kNotFound);
  EXPECT_EQ(m_manager.RemoveVariable("New"), kNotFound);
  EXPECT_EQ(m_manager.AddVariable("N%w", "1"), kFailure);
  EXPECT_EQ(m_manager.AddVariable("New", "1"), 0);
  EXPECT_EQ(m_manager.AddVariable("New", "2"), kAlreadyPresent);
  EXPECT_EQ(m_manager.AddVariable("", "nameless"), 0);
  EXPECT_EQ(expanded("%New%%%"), "1nameless");
  EXPECT_EQ(m_manager.SetVariable("New", "%Later%"), 0);
  EXPECT_EQ(expanded("%New%"), "%Later%");
  EXPECT_EQ(m_manager.AddVariable("Later", "3"), 0);
  EXPECT_EQ(expanded("%New%"), "3");
  EXPECT_EQ(m_manager.IsVariableDefined("New", defined), 0);
  EXPECT_TRUE(defined);
  EXPECT_EQ(m_manager.RemoveVariable("New"), 0);
  EXPECT_EQ(expanded("%New%"), "%New%");
}

TEST_F(VariableManager, TablesStopAtADefinedNameAndSkipMarks) {
  QSREGISTRYVARIABLE skipping[] = {{"A", "1"}, {"B%", "2"}, {"C", "3"}, {nullptr, nullptr}};
  QSREGISTRYVARIABLE stopping[] = {{"D", "4"}, {"A", "5"}, {"E", "6"}, {nullptr, nullptr}};
  QSREGISTRYVARIABLE empty[] = {{nullptr, "x"}};
  EXPECT_EQ(m_manager.AddVariables(nullptr), 0);
  EXPECT_EQ(m_manager.AddVariables(empty), 0);
  EXPECT_EQ(m_manager.AddVariables(skipping), 0);
  EXPECT_EQ(m_manager.AddVariables(stopping), kAlreadyPresent);
  EXPECT_EQ(expanded("%A%%C%%D%%E%"), "134%E%");
  EXPECT_EQ(m_manager.AddVariables(skipping), kAlreadyPresent);
}

class Resolver : public QSVariableResolver {
 public:
  using Answer = std::function<QSResult(std::string& replacement)>;
  explicit Resolver(Answer answer) : m_answer(std::move(answer)) {}

  QSResult Resolve(const std::string& name, const std::string& value,
                   std::string& replacement) override {
    calls.push_back(name + "=" + value + "/" + replacement);
    return m_answer(replacement);
  }

  std::vector<std::string> calls;

 private:
  Answer m_answer;
};

TEST_F(VariableManager, ResolversFormAChain) {
  Resolver failing([](std::string& text) { return text += "!", kFailure; });
  Resolver taking([](std::string& text) { return text = "<" + text + ">", 1; });
  Resolver hidden([](std::string&) { return 0; });
  EXPECT_EQ(m_manager.AddResolver(nullptr), LTLib::kNullArgument);
  EXPECT_EQ(m_manager.RemoveResolver(&failing), kNotFound);
  for (Resolver* resolver : {&failing, &taking, &hidden}) {
    EXPECT_EQ(m_manager.AddResolver(resolver), 0);
  }
  EXPECT_EQ(m_manager.AddResolver(&taking), kAlreadyPresent);

  EXPECT_EQ(m_manager.AddVariable("A", "%B%"), 0);
  EXPECT_EQ(m_manager.AddVariable("B", "b"), 0);
  EXPECT_EQ(expanded("%A%"), "<<b!>!>");
  EXPECT_EQ(failing.calls, (std::vector<std::string>{"A=%B%/%B%", "B=b/b"}));
  EXPECT_EQ(taking.calls, (std::vector<std::string>{"A=%B%/%B%!", "B=b/b!"}));
  EXPECT_TRUE(hidden.calls.empty());

  EXPECT_EQ(m_manager.RemoveResolver(&taking), 0);
  EXPECT_EQ(expanded("%B%"), "b!");
  EXPECT_EQ(hidden.calls, (std::vector<std::string>{"B=b/b!"}));
}

TEST_F(VariableManager, ResolversMayUseTheManager) {
  EXPECT_EQ(m_manager.AddVariable("A", "%B%%C%"), 0);
  EXPECT_EQ(m_manager.AddVariable("B", "b"), 0);
  Resolver busy([this](std::string& text) {
    std::string nested = "%CompanyName%";
    m_manager.RemoveVariable("A");
    return m_manager.AddVariable("C", "late") == 0 && m_manager.ExpandString(nested) == 0
               ? (text += nested.substr(0, 4), 0)
               : kFailure;
  });
  EXPECT_EQ(m_manager.AddResolver(&busy), 0);
  EXPECT_EQ(expanded("%A%"), "blateTarn");
}

TEST_F(VariableManager, ResolversCannotHangOrTear) {
  EXPECT_EQ(m_manager.AddVariable("A", "a"), 0);
  EXPECT_EQ(m_manager.AddVariable("B", "b"), 0);
  Resolver answer([](std::string&) { return 0; });
  struct Case {
    Resolver::Answer answer;
    const char* text;
    const char* left;
  };
  const Case cases[] = {
      {[](std::string& text) { return text = "%A%", 0; }, "x%A%", "x%A%"},
      {[](std::string& text) { return text = text == "a" ? "%B%" : "%A%", 0; }, "%A%", "%A%"},
      {[](std::string& text) { return text = text == "a" ? "A" : "y", 0; }, "%B%%A%", "y%A%"},
  };
  for (const Case& row : cases) {
    Resolver resolver(row.answer);
    EXPECT_EQ(m_manager.AddResolver(&resolver), 0);
    EXPECT_EQ(expanded(row.text), row.left);
    EXPECT_EQ(m_result, kFailure) << row.text;
    EXPECT_EQ(m_manager.RemoveResolver(&resolver), 0);
  }
  Resolver throwing([](std::string& text) -> QSResult {
    return text == "b" ? throw std::runtime_error("resolver") : 0;
  });
  EXPECT_EQ(m_manager.AddResolver(&throwing), 0);
  std::string text = "%A%%B%%A%";
  EXPECT_THROW(m_manager.ExpandString(text), std::runtime_error);
  EXPECT_EQ(text, "a%B%%A%");
}

TEST_F(VariableManager, TheFirstExpansionAsksBothSourcesOnce) {
  m_configuration = "filed";
  m_publicVariables = [this](QSConfigVariableManager& manager) {
    std::string key = "%PublicVariables%";
    EXPECT_EQ(manager.ExpandString(key), 0);
    EXPECT_EQ(key, "Software\\Tarn Quillmere\\Suite RZ 7.0\\filed\\Shared\\PublicVars");
    EXPECT_EQ(manager.AddVariable("Mine", "public"), kAlreadyPresent);
    EXPECT_EQ(manager.AddVariable("Pub%lic", ""), kFailure);
    EXPECT_EQ(manager.AddVariable("Public", "%Mine%"), 0);
  };
  m_manager.AddVariable("Mine", "<%CurrentConfig%>");
  EXPECT_EQ(m_manager.SetVariable("Public", ""), kNotFound);
  EXPECT_EQ(m_asked, "");
  EXPECT_EQ(expanded(""), "");
  EXPECT_EQ(m_asked, "cp");
  EXPECT_EQ(expanded("%Public%"), "<filed>");
  EXPECT_EQ(m_manager.SetVariable("CurrentConfig", "mine"), 0);
  EXPECT_EQ(expanded("%Public%"), "<mine>");
  EXPECT_EQ(m_manager.RemoveVariable("Public"), 0);
  EXPECT_EQ(m_asked, "cp");
  QSREGISTRYVARIABLE late[] = {{"L1", "1"}, {"L2", "2"}, {"Mine", "3"}, {"L4", ""}, {}};
  EXPECT_EQ(m_manager.AddVariables(late), kAlreadyPresent);
  EXPECT_EQ(expanded("%L1%%L2%%L4%"), "12%L4%");
}

TEST_F(VariableManager, AProgramsConfigurationComesBeforeTheFile) {
  m_configuration = "filed";
  EXPECT_EQ(m_manager.SetVariable("CurrentConfig", "mine"), 0);
  EXPECT_EQ(expanded("%CurrentConfig%"), "mine");
  EXPECT_EQ(m_asked, "p");
}

TEST_F(VariableManager, AnEmptyConfigurationIsOne) {
  m_configuration = "";
  EXPECT_EQ(expanded("<%CurrentConfig%>"), "<>");
}

// The load is not tried again, and what it brought stays.
TEST_F(VariableManager, AFailedLoadReachesTheCallerOnce) {
  m_publicVariables = [](QSConfigVariableManager& manager) {
    manager.AddVariable("Public", "first");
    throw std::runtime_error("registry");
  };
  std::string text = "%Public%";
  EXPECT_THROW(m_manager.ExpandString(text), std::runtime_error);
  EXPECT_EQ(text, "%Public%");
  EXPECT_EQ(expanded("%Public%"), "first");
  EXPECT_EQ(m_asked, "cp");
}

TEST_F(VariableManager, ReportsWhereValuesCameFrom) {
  m_configuration = "filed";
  m_publicVariables = [](QSConfigVariableManager& manager) { manager.AddVariable("Public", ""); };
  m_manager.AddVariable("Mine", "%CompanyName%");
  m_manager.SetVariable("PortalVersion", "4.0");
  expanded("");
  const auto all = m_manager.report();
  EXPECT_EQ(all.size(), 15u);
  const auto find = [&all](const char* name) {
    return *std::find_if(all.begin(), all.end(),
                         [name](const auto& row) { return row.name == name; });
  };
  EXPECT_EQ(find("Mine").value, "%CompanyName%");
  EXPECT_EQ(find("Mine").origin, VariableOrigin::kRegistered);
  EXPECT_EQ(find("CompanyRoot").origin, VariableOrigin::kDefault);
  EXPECT_EQ(find("PortalVersion").origin, VariableOrigin::kChanged);
  EXPECT_EQ(find("CurrentConfig").value, "filed");
  EXPECT_EQ(find("CurrentConfig").origin, VariableOrigin::kConfigFile);
  EXPECT_EQ(find("Public").origin, VariableOrigin::kPublicVariable);
}

// Expansions see one state of the table each, while others define, change and remove.
TEST_F(VariableManager, ReadersAndWritersMeet) {
  constexpr int kReaders = 4;
  LTLib::Testing::Latch start(kReaders + 2);
  std::atomic<int> torn{0};
  m_manager.AddVariable("State", "0");
  m_manager.AddVariable("Pair", "%State%=%State%");
  std::vector<std::thread> threads;
  threads.reserve(kReaders + 1);
  for (int reader = 0; reader < kReaders; ++reader) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int round = 0; round < 500; ++round) {
        std::string text = "%Pair%";
        const QSResult result = m_manager.ExpandString(text);
        const std::size_t middle = text.size() / 2;
        torn += result != 0 || text.substr(0, middle) != text.substr(middle + 1);
      }
    });
  }
  threads.emplace_back([&] {
    start.arrive_and_wait();
    for (int round = 0; round < 500; ++round) {
      m_manager.SetVariable("State", std::to_string(round));
      m_manager.AddVariable("Other", "x");
      m_manager.RemoveVariable("Other");
    }
  });
  start.arrive_and_wait();
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(torn, 0);
  EXPECT_EQ(expanded("%Pair%"), "499=499");
}

// A thread that expands while another is inside the load goes on with what is defined so far.
TEST_F(VariableManager, OneThreadLoadsAndNobodyWaits) {
  LTLib::Testing::Latch inside(1);
  LTLib::Testing::Latch leave(1);
  m_publicVariables = [&](QSConfigVariableManager& manager) {
    manager.AddVariable("Early", "seen");
    inside.count_down();
    leave.wait();
    manager.AddVariable("Late", "unseen");
  };
  std::thread loader([this] {
    std::string text;
    m_manager.ExpandString(text);
  });
  inside.wait();
  EXPECT_EQ(expanded("%Early%%Late%"), "seen%Late%");
  leave.count_down();
  loader.join();
  EXPECT_EQ(expanded("%Early%%Late%"), "seenunseen");
  EXPECT_EQ(m_asked, "cp");
}

// A program that sets the configuration while the file is being read has the last word.
TEST_F(VariableManager, AConfigurationSetDuringTheReadingStays) {
  QSConfigVariableManagerImpl* manager = nullptr;
  QSConfigVariableManagerImpl racing(
      {.readConfigFile =
           [&manager] {
             std::thread([&manager] { manager->SetVariable("CurrentConfig", "mine"); }).join();
             return std::optional<std::string>("filed");
           },
       .loadPublicVariables = [](QSConfigVariableManager&) {}});
  manager = &racing;
  racing.AddVariables(LTLib::detail::s_defaultVariables);
  std::string text = "%CurrentConfig%";
  EXPECT_EQ(racing.ExpandString(text), 0);
  EXPECT_EQ(text, "mine");
}

TEST(TableLock, AWriterComesBeforeLaterReaders) {
  LTLib::detail::TableLock lock;
  std::string order;
  lock.lock_shared();
  std::thread writer([&] {
    lock.lock();
    order += 'w';
    lock.unlock();
  });
  while (!lock.writersWait()) {
    std::this_thread::yield();
  }
  LTLib::Testing::Latch asked(1);
  std::thread reader([&] {
    asked.count_down();
    lock.lock_shared();
    order += 'r';
    lock.unlock_shared();
  });
  asked.wait();
  lock.unlock_shared();
  writer.join();
  reader.join();
  EXPECT_EQ(order, "wr");
}

// What stands for config.dat: the calls in force give the content in pieces of three bytes.
class ConfigFile {
 public:
  ConfigFile() : m_calls(Platform::fileCalls()) {
    s_content = nullptr;
    Platform::FileCalls& calls = Platform::fileCalls();
    calls.openForReading = [](const char* path) -> Platform::File* {
      s_path = path;
      s_read = 0;
      return s_content != nullptr ? reinterpret_cast<Platform::File*>(&s_read) : nullptr;
    };
    calls.read = [](Platform::File&, char* buffer, std::size_t, std::size_t* taken) {
      *taken = s_content->copy(buffer, 3, s_read);
      s_read += *taken;
      return Platform::FileResult::kDone;
    };
    calls.close = [](Platform::File*) { return Platform::FileResult::kDone; };
  }
  ~ConfigFile() { Platform::fileCalls() = m_calls; }
  ConfigFile(const ConfigFile&) = delete;
  ConfigFile& operator=(const ConfigFile&) = delete;

  static inline const std::string* s_content;
  static inline std::size_t s_read;
  static inline std::string s_path;

 private:
  Platform::FileCalls m_calls;
};

TEST(ConfigFile, GivesItsFirstWord) {
  using namespace std::string_literals;
  const std::pair<std::string, const char*> cases[] = {
      {"one", "one"}, {" \t\r\n\v\f two three", "two"},  {"", ""}, {" \n ", ""}, {"a\0b c"s, "a"},
      {"\0b"s, ""},   {"longer than a piece", "longer"},
  };
  const ConfigFile file;
  EXPECT_EQ(LTLib::detail::readConfigFile(), std::nullopt);
  EXPECT_TRUE(ConfigFile::s_path.ends_with("config.dat")) << ConfigFile::s_path;
  for (const auto& [content, expected] : cases) {
    ConfigFile::s_content = &content;
    EXPECT_EQ(LTLib::detail::readConfigFile(), expected) << content;
  }
}

}  // namespace
