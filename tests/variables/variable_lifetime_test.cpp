// The manager of the process before the library's own static objects, during the program, and
// after its teardown.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "ltlib/variables/variable_manager.h"
#include "ltlib/variables/variable_report.h"

namespace {

QSREGISTRYVARIABLE s_early[] = {{"Early", "%CompanyName%"}, {nullptr, nullptr}};
QSREGISTRYVARIABLE s_late[] = {{"Late", ""}, {nullptr, nullptr}};
QSREGISTRYVARIABLE s_clashing[] = {
    {"Mine", "1"}, {"CompanyName", "2"}, {"Other", "3"}, {nullptr, nullptr}};

// The first static object of the program: made before those of the library, destroyed after them.
struct Outermost {
  Outermost() { const QSVariableRegistrar early(s_early); }

  ~Outermost() {
    std::string text = "%CompanyName%";
    std::vector<LTLib::ExpansionStep> steps;
    const QSVariableRegistrar late(s_late);
    const bool answered = QSConfigVariableManager::GetInstance() == nullptr &&
                          QSExpandString(text) == LTLib::kFailure && text == "%CompanyName%" &&
                          LTLib::traceExpansion(text, steps) == LTLib::kFailure &&
                          LTLib::reportVariables().empty();
    if (!answered) {
      std::fputs("wrong answer after the teardown\n", stderr);
      std::_Exit(EXIT_FAILURE);
    }
  }
};

__attribute__((init_priority(101))) Outermost s_outermost;

TEST(VariableLifetime, OneManagerServesTheProcess) {
  QSConfigVariableManager* const manager = QSConfigVariableManager::GetInstance();
  ASSERT_NE(manager, nullptr);
  EXPECT_EQ(manager, QSConfigVariableManager::GetInstance());
  std::string text = "%Early%";
  EXPECT_EQ(QSExpandString(text), 0);
  EXPECT_EQ(text, "Tarn Quillmere");
}

TEST(VariableLifetime, ARegistrarsTableStaysAndClashesAreIgnored) {
  { const QSVariableRegistrar registrar(s_clashing); }
  std::string text = "%Mine%%CompanyName%";
  EXPECT_EQ(QSExpandString(text), 0);
  EXPECT_EQ(text, "1Tarn Quillmere");
  bool defined = true;
  EXPECT_EQ(QSConfigVariableManager::GetInstance()->IsVariableDefined("Other", defined), 0);
  EXPECT_FALSE(defined);
}

TEST(VariableLifetime, TracesEachReplacement) {
  std::string text = "<%CompanyRoot%>";
  std::vector<LTLib::ExpansionStep> steps;
  EXPECT_EQ(LTLib::traceExpansion(text, steps), 0);
  ASSERT_EQ(steps.size(), 2u);
  EXPECT_EQ(steps[0].name, "CompanyRoot");
  EXPECT_EQ(steps[0].replacement, "Software\\%CompanyName%");
  EXPECT_EQ(steps[0].text, "<Software\\%CompanyName%>");
  EXPECT_EQ(steps[1].name, "CompanyName");
  EXPECT_EQ(steps[1].text, text);
  EXPECT_EQ(LTLib::reportVariables().front().name, "CLASSID");
}

}  // namespace
