#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <latch>
#include <stdexcept>
#include <thread>

#include "ltlib/platform/files.h"
#include "ltlib/variables/variable_manager_impl.h"
#include "tests/support/environment.h"

namespace {

using LTLib::VariableOrigin;
namespace Platform = LTLib::Platform;

constexpr QSResult kFailure = LTLib::kFailure;
constexpr QSResult kAlreadyPresent = LTLib::kAlreadyPresent;
constexpr QSResult kNotFound = LTLib::kNotFound;

// What stands for config.dat: the calls in force give `content` in pieces of three bytes.
class ConfigFile {
 public:
  ConfigFile() : m_calls(Platform::fileCalls()) {
    s_content = nullptr;
    s_opened = 0;
    Platform::FileCalls& calls = Platform::fileCalls();
    calls.openForReading = [](const char* path) -> Platform::File* {
      s_path = path;
      ++s_opened;
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
  static inline int s_opened;
  static inline std::string s_path;

 private:
  Platform::FileCalls m_calls;
};

class VariableManager : public testing::Test {
 protected:
  VariableManager() { EXPECT_EQ(m_manager.AddVariables(LTLib::detail::s_defaultVariables), 0); }

  std::string expanded(std::string text) {
    m_result = m_manager.ExpandString(text);
    return text;
  }

  // The registry is empty and reads no file, and its own expansions go through the process's
  // manager, whose load is over.
  LTLib::Testing::ScopedEnvironment m_noStore{"HKEY_LOCAL_MACHINE", ""};
  std::string m_empty;
  QSResult m_processLoad = QSExpandString(m_empty);
  ConfigFile m_config;
  QSConfigVariableManagerImpl m_manager;
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

TEST_F(VariableManager, ConfigFileNamesTheConfiguration) {
  using namespace std::string_literals;
  const std::pair<std::string, const char*> cases[] = {
      {"one", "one"},
      {" \t\r\n\v\f two three", "two"},
      {"", ""},
      {" \n ", ""},
      {"%CompanyName%\nx", "Tarn Quillmere"},
      {"a\0b c"s, "a"},
      {"longer than a piece", "longer"},
  };
  for (const auto& [content, expected] : cases) {
    QSConfigVariableManagerImpl manager;
    manager.AddVariables(LTLib::detail::s_defaultVariables);
    ConfigFile::s_content = &content;
    ConfigFile::s_opened = 0;
    std::string text = "plain";
    EXPECT_EQ(manager.ExpandString(text), 0);
    text = "%CurrentConfig%";
    EXPECT_EQ(manager.ExpandString(text), 0);
    EXPECT_EQ(text, expected);
    EXPECT_EQ(ConfigFile::s_opened, 1);
    EXPECT_TRUE(ConfigFile::s_path.ends_with("/config.dat")) << ConfigFile::s_path;
  }
}

TEST_F(VariableManager, OnlyAnExpansionReadsTheConfigFileAndOnlyOnce) {
  const std::string content = "filed";
  ConfigFile::s_content = &content;
  bool defined = false;
  m_manager.IsVariableDefined("CurrentConfig", defined);
  m_manager.AddVariable("A", "%CurrentConfig%");
  m_manager.SetVariable("A", "<%CurrentConfig%>");
  EXPECT_EQ(ConfigFile::s_opened, 0);
  EXPECT_EQ(expanded(""), "");
  EXPECT_EQ(ConfigFile::s_opened, 1);
  EXPECT_EQ(m_manager.SetVariable("CurrentConfig", "mine"), 0);
  EXPECT_EQ(expanded("%A%"), "<mine>");
  EXPECT_EQ(ConfigFile::s_opened, 1);
}

TEST_F(VariableManager, AProgramsConfigurationComesBeforeTheFile) {
  const std::string content = "filed";
  ConfigFile::s_content = &content;
  EXPECT_EQ(m_manager.SetVariable("CurrentConfig", "mine"), 0);
  EXPECT_EQ(expanded("%CurrentConfig%"), "mine");
  EXPECT_EQ(ConfigFile::s_opened, 0);
}

TEST_F(VariableManager, ReportsWhereValuesCameFrom) {
  const std::string content = "filed";
  ConfigFile::s_content = &content;
  m_manager.AddVariable("Mine", "%CompanyName%");
  m_manager.SetVariable("PortalVersion", "4.0");
  expanded("");
  const auto all = m_manager.report();
  EXPECT_EQ(all.size(), 14u);
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
}

// Expansions see one state of the table each, while others define, change and remove.
TEST_F(VariableManager, ReadersAndWritersMeet) {
  constexpr int kReaders = 4;
  std::latch start(kReaders + 2);
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
  static std::latch inside(1);
  static std::latch leave(1);
  static std::atomic<int> loads{0};
  Platform::fileCalls().openForReading = [](const char*) -> Platform::File* {
    ++loads;
    inside.count_down();
    leave.wait();
    return nullptr;
  };
  std::thread loader([this] { expanded(""); });
  inside.wait();
  std::string text = "%CurrentConfig%";
  EXPECT_EQ(m_manager.ExpandString(text), 0);
  EXPECT_EQ(text, "default");
  EXPECT_EQ(m_manager.SetVariable("CurrentConfig", "mine"), 0);
  leave.count_down();
  loader.join();
  EXPECT_EQ(expanded("%CurrentConfig%"), "mine");
  EXPECT_EQ(loads, 1);
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
  std::latch asked(1);
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

}  // namespace
