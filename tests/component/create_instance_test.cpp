// Each way in which a creation can end: result, text, trace and references.
#include "ltlib/component/instance_creation.h"

#include <sstream>
#include <stdexcept>

#include "tests/component/component_fixture.h"
#include "tests/component/libraries/stage.h"

namespace LTLib::Testing {
namespace {

using Notes = std::vector<std::string>;

// The tracer asks once, at the first line.
const ScopedEnvironment s_tracing("LTTRACER", "warning");

// Collects the traces of failed creations that the scope sees.
class CreationTraces {
 public:
  CreationTraces() { testing::internal::CaptureStderr(); }

  Notes take() {
    std::istringstream text(testing::internal::GetCapturedStderr());
    Notes found;
    for (std::string line; std::getline(text, line);) {
      if (line.find("TRACE_MODULE_NAME:") == 0) {
        found.push_back(line);
      }
    }
    return found;
  }
};

std::string traceOf(const std::string& id) {
  return "TRACE_MODULE_NAME: iqsunknown:163 iqs_CoCreateInstance: "
         "QSLT: Failed to create an instance : " +
         id;
}

std::uint32_t loadCountOf(const char* id) {
  const auto report = reportClass(id);
  return report ? report->loadCount : 0;
}

struct Failure {
  const char* id;
  QSResult result;
  std::string error;
  bool isTraced;
  std::uint32_t loads;  // that the creation leaves behind
  Notes notes;
};

class CreateInstanceTest : public ComponentTest {
 protected:
  CreateInstanceTest() {
    for (const char* id :
         {"Outcome.Good", "IQS_UNKNOWN", "Outcome.Positive", "Outcome.Refuses",
          "Outcome.StoresNothing", "Outcome.ThrowsOwn", "Outcome.ThrowsStandard",
          "Outcome.ThrowsNumber", "Outcome.InitFails", "Outcome.InitThrows", "Outcome.Lingers"}) {
      enterClass(id, libraryPath("component_outcomes"));
    }
    enterClass("Quiet.Unknown", libraryPath("component_quiet"));
    enterClass("Broken.Unknown", "/nowhere");
    Stage::takeNotes();
  }
};

// With and without the text: two creations.
void expectFailure(const Failure& row) {
  const std::string shownId = row.id != nullptr ? row.id : "";
  SCOPED_TRACE(shownId);
  const std::uint32_t before = loadCountOf(row.id);
  void* out = &out;
  std::string error = "old";
  CreationTraces traces;
  const QSResult result = iqs_CoCreateInstance(nullptr, row.id, &out, error);
  const QSResult resultWithoutText = iqs_CoCreateInstance(nullptr, row.id, &out);
  EXPECT_EQ(traces.take(), Notes(row.isTraced ? 2 : 0, traceOf(shownId)));
  EXPECT_EQ(result, row.result);
  EXPECT_EQ(resultWithoutText, row.result);
  EXPECT_EQ(error, row.error.empty() ? "old" : row.error);
  EXPECT_EQ(out, &out);
  EXPECT_EQ(loadCountOf(row.id) - before, 2 * row.loads);
  Notes twice = row.notes;
  twice.insert(twice.end(), row.notes.begin(), row.notes.end());
  EXPECT_EQ(Stage::takeNotes(), twice);
}

TEST_F(CreateInstanceTest, EachFailureHasItsResultTextAndTrace) {
  // Loaded ahead, so that no row sees a library come.
  static_cast<void>(iqsDllLoader::Load("Outcome.Good", nullptr));
  static_cast<void>(iqsDllLoader::Load("Quiet.Unknown", nullptr));
  Stage::takeNotes();
  const Failure cases[] = {
      {nullptr, kNotAvailable, "", true, 0, {}},
      {"Unknown.Unknown",
       kNotAvailable,
       "No DLL registered for CLSID Unknown.Unknown",
       true,
       0,
       {}},
      {"Broken.Unknown",
       kNotAvailable,
       "DllLoader cannot load /nowhere for CLSID Broken.Unknown",
       true,
       0,
       {}},
      {"Quiet.Unknown", kNotAvailable, "", true, 1, {}},
      {"Outcome.Refuses", kFailure, "", true, 1, {}},
      {"Outcome.StoresNothing", kNotAvailable, "", true, 1, {}},
      {"Outcome.ThrowsOwn", kNotAvailable, "own exception", true, 1, {}},
      {"Outcome.ThrowsStandard", kNotAvailable, "standard exception", true, 1, {}},
      {"Outcome.InitFails", kAlreadyPresent, "", false, 1, {"made", "initialised", "ended"}},
  };
  for (const Failure& row : cases) {
    expectFailure(row);
  }
}

TEST_F(CreateInstanceTest, SuccessGivesTheOneReferenceToTheCaller) {
  for (const char* id : {"Outcome.Good", "Outcome.Positive"}) {
    SCOPED_TRACE(id);
    static_cast<void>(iqsDllLoader::Load(id, nullptr));
    const std::uint32_t before = loadCountOf(id);
    Stage::takeNotes();
    void* out = nullptr;
    std::string error = "old";
    CreationTraces traces;
    EXPECT_EQ(iqs_CoCreateInstance(nullptr, id, &out, error), 0);
    EXPECT_EQ(traces.take(), Notes{});
    EXPECT_EQ(error, "old");
    ASSERT_NE(out, nullptr);
    auto* const face = static_cast<iqsUnknown*>(out);
    EXPECT_EQ(face->AddRef(), 2u);
    EXPECT_EQ(face->Release(), 1u);
    void* same = nullptr;
    EXPECT_EQ(face->QueryInterface("IQS_UNKNOWN", &same), 0);
    EXPECT_EQ(same, out);
    EXPECT_EQ(face->Release(), 1u);
    EXPECT_EQ(Stage::takeNotes(), (Notes{"made", "initialised"}));
    EXPECT_EQ(face->Release(), 0u);
    EXPECT_EQ(Stage::takeNotes(), Notes{"ended"});
    EXPECT_EQ(loadCountOf(id), before + 1);
  }
}

TEST_F(CreateInstanceTest, ANullOutEndsTheObjectAgain) {
  static_cast<void>(iqsDllLoader::Load("Outcome.Good", nullptr));
  Stage::takeNotes();
  std::string error;
  CreationTraces traces;
  EXPECT_EQ(iqs_CoCreateInstance(nullptr, "Outcome.Good", nullptr, error), kNullArgument);
  EXPECT_EQ(traces.take(), Notes{});
  EXPECT_EQ(error, "");
  EXPECT_EQ(Stage::takeNotes(), (Notes{"made", "initialised", "ended"}));
}

TEST_F(CreateInstanceTest, AnOuterIsForTheRootClassAlone) {
  iqsCUnknown outerObject(nullptr);
  iqsCInnerUnknown outer(outerObject);
  for (const char* id : {"Outcome.Good", "iqs_unknown", "Outcome.Never", ""}) {
    void* out = &out;
    std::string error = "old";
    const std::uint32_t before = loadCountOf(id);
    CreationTraces traces;
    EXPECT_EQ(iqs_CoCreateInstance(&outer, id, &out, error), kNotAvailable) << id;
    EXPECT_EQ(iqs_CoCreateInstance(&outer, nullptr, &out, error), kNotAvailable);
    EXPECT_EQ(traces.take(), Notes{});
    EXPECT_EQ(out, &out);
    EXPECT_EQ(error, "old");
    EXPECT_EQ(loadCountOf(id), before);
  }
  EXPECT_EQ(Stage::takeNotes(), Notes{});

  void* out = nullptr;
  const std::string copyOfId = "IQS_UNKNOWN";
  EXPECT_EQ(iqs_CoCreateInstance(&outer, copyOfId.c_str(), &out), 0);
  EXPECT_EQ(Stage::takeNotes(), (Notes{"made inside", "initialised"}));
  ASSERT_NE(out, nullptr);
  EXPECT_EQ(static_cast<iqsUnknown*>(out)->Release(), 0u);
  EXPECT_EQ(Stage::takeNotes(), Notes{"ended"});
  EXPECT_EQ(iqs_CoCreateInstance(nullptr, "IQS_UNKNOWN", &out), 0);
  EXPECT_EQ(static_cast<iqsUnknown*>(out)->Release(), 0u);
}

TEST_F(CreateInstanceTest, WhatNobodyCatchesPassesThrough) {
  void* out = &out;
  std::string error;
  CreationTraces traces;
  EXPECT_THROW(iqs_CoCreateInstance(nullptr, "Outcome.ThrowsNumber", &out, error), int);
  EXPECT_THROW(iqs_CoCreateInstance(nullptr, "Outcome.InitThrows", &out, error),
               std::runtime_error);
  EXPECT_EQ(traces.take(), Notes{});
  EXPECT_EQ(error, "");
  EXPECT_EQ(out, &out);
  EXPECT_EQ(loadCountOf("Outcome.ThrowsNumber"), 1u);
  EXPECT_EQ(loadCountOf("Outcome.InitThrows"), 1u);
}

TEST_F(CreateInstanceTest, AnObjectMayOutliveItsLastRelease) {
  void* out = nullptr;
  ASSERT_EQ(iqs_CoCreateInstance(nullptr, "Outcome.Lingers", &out), 0);
  Stage::takeNotes();
  auto* const face = static_cast<iqsUnknown*>(out);
  EXPECT_EQ(face->Release(), 0u);
  EXPECT_EQ(Stage::takeNotes(), Notes{"declined"});
  EXPECT_EQ(face->Release(), 0u);
  EXPECT_EQ(Stage::takeNotes(), Notes{"ended"});
}

}  // namespace
}  // namespace LTLib::Testing
