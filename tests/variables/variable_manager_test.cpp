// The table of variables and its resolvers, apart from the process's own manager.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <thread>
#include <tuple>

#include "ltlib/variables/variable_manager_impl.h"
#include "tests/support/threads.h"

namespace {

using LTLib::kAlreadyPresent;
using LTLib::kFailure;
using LTLib::kNotFound;
using LTLib::VariableOrigin;

// The default table, and at the first expansion whatever the test wants.
class VariableManager : public testing::Test {
 protected:
  VariableManager() { EXPECT_EQ(m_manager.AddVariables(LTLib::detail::s_defaultVariables), 0); }

  std::string expanded(std::string text) {
    m_result = m_manager.ExpandString(text);
    return text;
  }

  std::function<std::optional<std::string>()> m_configFile = [] { return std::nullopt; };
  std::function<void(const LTLib::detail::TakeVariable& take)> m_publicVariables = [](auto) {};
  QSConfigVariableManagerImpl m_manager{
      {.readConfigFile = [this] { return m_configFile(); },
       .loadPublicVariables =
           [this](const LTLib::detail::TakeVariable& take) { m_publicVariables(take); }}};
  QSResult m_result = 0;
};

TEST_F(VariableManager, DefaultTableExpands) {
  const std::string root = "Software\\Tarn Quillmere\\Suite RZ 7.0\\default\\";
  EXPECT_EQ(expanded("%CLASSID%"), root + "Shared\\CLASSID");
  EXPECT_EQ(expanded("%ClientRoot%|%PortalRoot%|%MarlinRoot%"),
            root + "Quillmere|" + root + "Lumenpane|" + root + "Netsieve");
}

TEST_F(VariableManager, DefinesChangesAndRemoves) {
  EXPECT_EQ(m_manager.SetVariable("New", "1"), kNotFound);
  EXPECT_EQ(m_manager.RemoveVariable("New"), kNotFound);
  EXPECT_EQ(m_manager.AddVariable("N%w", "1"), kFailure);
  EXPECT_EQ(m_manager.AddVariable("New", "1"), 0);
  EXPECT_EQ(m_manager.AddVariable("New", "2"), kAlreadyPresent);
  EXPECT_EQ(m_manager.AddVariable("", "nameless"), 0);
  EXPECT_EQ(expanded("%New%%%"), "1nameless");
  EXPECT_EQ(m_manager.SetVariable("New", "%Later%"), 0);
  EXPECT_EQ(expanded("%New%"), "%Later%");
  bool defined = false;
  EXPECT_EQ(m_manager.IsVariableDefined("New", defined), 0);
  EXPECT_TRUE(defined);
  EXPECT_EQ(m_manager.RemoveVariable("New"), 0);
  EXPECT_EQ(expanded("%New%"), "%New%");

  // A table stops at a name that is defined, and skips one with a mark.
  QSREGISTRYVARIABLE table[] = {{"A", "1"}, {"B%", "2"}, {"C", "3"},
                                {"A", "5"}, {"E", "6"},  {nullptr, nullptr}};
  EXPECT_EQ(m_manager.AddVariables(nullptr), 0);
  EXPECT_EQ(m_manager.AddVariables(table), kAlreadyPresent);
  EXPECT_EQ(expanded("%A%%C%%E%"), "13%E%");
  EXPECT_EQ(m_manager.IsVariableDefined("B%", defined), 0);
  EXPECT_FALSE(defined);
}

class Resolver : public QSVariableResolver {
 public:
  using Answer = std::function<QSResult(std::string& replacement)>;
  explicit Resolver(Answer answer) : m_answer(std::move(answer)) {}

  QSResult Resolve(const std::string& name, const std::string& value,
                   std::string& replacement) override {
    asked += name + "=" + value + "/" + replacement + ";";
    return m_answer(replacement);
  }

  std::string asked;

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
    EXPECT_EQ(m_manager.AddResolver(resolver), kAlreadyPresent);
  }
  EXPECT_EQ(m_manager.AddVariable("A", "%B%"), 0);
  EXPECT_EQ(m_manager.AddVariable("B", "b"), 0);
  EXPECT_EQ(expanded("%A%"), "<<b!>!>");
  EXPECT_EQ(failing.asked, "A=%B%/%B%;B=b/b;");
  EXPECT_EQ(taking.asked, "A=%B%/%B%!;B=b/b!;");
  EXPECT_EQ(m_manager.RemoveResolver(&taking), 0);
  EXPECT_EQ(expanded("%B%"), "b!");
  EXPECT_EQ(hidden.asked, "B=b/b!;");
}

// They may use the manager, throw, and answer what leads round in circles, for a while or for ever.
TEST_F(VariableManager, ResolversCannotHangOrTear) {
  int left = 5000;
  const std::tuple<const char*, const char*, QSResult, Resolver::Answer> cases[] = {
      {"%A%", "b late ", 0,
       [this](std::string& text) {
         std::string nested = "%CompanyName%";
         m_manager.RemoveVariable("A");
         return text == "b" ? m_manager.ExpandString(nested) : m_manager.AddVariable("C", " late ");
       }},
      {"%B%", "%B%", kFailure,
       [](std::string& text) { return text = text == "b" ? "%C%" : "%B%", 0; }},
      {"<%B%", "<", 0, [&left](std::string& text) { return text = left-- > 0 ? "%B%" : "", 0; }},
  };
  EXPECT_EQ(m_manager.AddVariable("A", "%B%%C%"), 0);
  EXPECT_EQ(m_manager.AddVariable("B", "b"), 0);
  for (const auto& [text, left, result, answer] : cases) {
    Resolver resolver(answer);
    EXPECT_EQ(m_manager.AddResolver(&resolver), 0);
    EXPECT_EQ(expanded(text), left);
    EXPECT_EQ(m_result, result) << text;
    EXPECT_EQ(m_manager.RemoveResolver(&resolver), 0);
  }
  Resolver throwing([](std::string& text) -> QSResult {
    return text == "b" ? throw std::runtime_error("resolver") : 0;
  });
  EXPECT_EQ(m_manager.AddResolver(&throwing), 0);
  std::string text = "%C%%B%%C%";
  EXPECT_THROW(m_manager.ExpandString(text), std::runtime_error);
  EXPECT_EQ(text, " late %B%%C%");
}

TEST_F(VariableManager, ReportsWhereValuesCameFrom) {
  m_configFile = [] { return "filed"; };
  m_manager.SetVariable("PortalVersion", "4.0");
  EXPECT_EQ(expanded(""), "");
  std::map<std::string, VariableOrigin> origins;
  for (const LTLib::VariableReport& row : m_manager.report()) {
    origins[row.name + '=' + row.value] = row.origin;
  }
  EXPECT_EQ(origins["PortalVersion=4.0"], VariableOrigin::kChanged);
  EXPECT_EQ(origins["CurrentConfig=filed"], VariableOrigin::kConfigFile);
}

// Expansions see one state of the table each, while other threads change it.
TEST_F(VariableManager, ReadersAndWritersMeet) {
  m_manager.AddVariable("State", "0");
  LTLib::Testing::runTogether(3, [this](int) {
    for (int round = 0; round < 500; ++round) {
      m_manager.SetVariable("State", std::to_string(round));
      std::string text = "%State%=%State%";
      EXPECT_EQ(m_manager.ExpandString(text), 0);
      EXPECT_EQ(text.substr(0, text.find('=')), text.substr(text.find('=') + 1));
    }
  });
}

// The first reader stays until the later one has had its chance.
TEST(TableLock, ALaterReaderWaitsBehindAWriterThatWaits) {
  LTLib::detail::TableLock lock;
  bool written = false;
  std::atomic<int> tries = 0;
  lock.lock_shared();
  std::thread writer([&] {
    lock.lock();
    written = true;
    lock.unlock();
  });
  while (!lock.hasWriter()) {
    std::this_thread::yield();
  }
  std::thread reader([&] {
    tries = 1;
    lock.lock_shared();
    EXPECT_TRUE(written);
    tries = 10000;
    lock.unlock_shared();
  });
  while (tries == 0 || tries++ < 10000) {
    std::this_thread::yield();
  }
  lock.unlock_shared();
  writer.join();
  reader.join();
}

// A thread that expands while another is inside the load goes on with what is defined so far, and a
// configuration that it sets while the file is being read stays.
TEST_F(VariableManager, OneThreadLoadsAndNobodyWaits) {
  const auto inAnotherThread = [this](std::string expected) {
    std::thread([&] { EXPECT_EQ(expanded("%Early%%Late%"), expected); }).join();
  };
  m_configFile = [this] {
    std::thread([this] { m_manager.SetVariable("CurrentConfig", "mine"); }).join();
    return "filed";
  };
  m_publicVariables = [&](auto) {
    EXPECT_EQ(m_manager.AddVariable("Early", "seen"), 0);
    inAnotherThread("seen%Late%");
    EXPECT_EQ(m_manager.AddVariable("Late", "unseen"), 0);
  };
  EXPECT_EQ(expanded("%CurrentConfig%%Early%%Late%"), "mineseenunseen");
  inAnotherThread("seenunseen");
}

// What the configuration's file does not give, the registry still does; a failure of the file leaves
// the whole load to the next expansion, one of the registry ends it.
TEST_F(VariableManager, FailuresOfTheLoadPassThrough) {
  m_configFile = []() -> std::optional<std::string> { throw std::runtime_error("file"); };
  m_publicVariables = [](auto take) {
    take("First", "1");
    throw std::runtime_error("registry");
  };
  EXPECT_THROW(expanded(""), std::runtime_error);
  m_configFile = [] { return std::nullopt; };
  EXPECT_EQ(m_manager.report().size(), 13u);
  EXPECT_THROW(expanded(""), std::runtime_error);
  EXPECT_EQ(expanded("%First%%CurrentConfig%"), "1default");
}

}  // namespace
