// Each way in which a creation can end: result, text, trace and references.
#include <stdexcept>

#include "lttracer/tracer.h"
#include "tests/component/component_fixture.h"

namespace LTLib::Testing {
namespace {

// The tracer asks once, at the first line.
const ScopedEnvironment s_tracing("LTTRACER", "warning");

// What a creation gives and shows.
struct Creation {
  QSResult result = 0;
  void* out = nullptr;
  std::string error = "old";
  std::string trace;
  std::string notes;
};

Creation create(iqsUnknown* outer, const char* id) {
  Creation made;
  testing::internal::CaptureStderr();
  made.result = iqs_CoCreateInstance(outer, id, &made.out, made.error);
  const std::string shown = testing::internal::GetCapturedStderr();
  if (const std::size_t at = shown.find("TRACE_MODULE_NAME:"); at != std::string::npos) {
    made.trace = shown.substr(at, shown.find_last_not_of("\r\n") + 1 - at);
  }
  made.notes = Stage::takeNotes();
  return made;
}

class CreateInstanceTest : public ComponentTest {
 protected:
  CreateInstanceTest() {
    for (const char* id :
         {"Outcome.Positive", "Outcome.Refuses", "Outcome.None", "Outcome.StoresNothing",
          "Outcome.Plain", "Outcome.ThrowsOwn", "Outcome.ThrowsStandard", "Outcome.ThrowsNumber",
          "Outcome.InitFails", "Outcome.InitThrows", "IQS_UNKNOWN"}) {
      enterClass(id, libraryPath("outcomes"));
    }
    enterClass("No.Library", "/nowhere");
  }
};

// Every creation that found the library leaves a load behind. Once there is an object, nothing is
// traced any more.
TEST_F(CreateInstanceTest, EachFailureHasItsResultTextAndTrace) {
  struct Case {
    const char* id;
    QSResult result;
    const char* state;
    const char* error = "old";
    const char* notes = "";
  };
  const Case cases[] = {
      {nullptr, kNotAvailable, "none"},
      {"No.Entry", kNotAvailable, "none", "No DLL registered for CLSID No.Entry"},
      {"No.Library", kNotAvailable, "0 - -", "DllLoader cannot load /nowhere for CLSID No.Library"},
      {"Outcome.None", kNotAvailable, "2 loaded -"},
      {"Outcome.Plain", kNotAvailable, "2 loaded factory"},
      {"Outcome.Refuses", kFailure, "2 loaded factory"},
      {"Outcome.StoresNothing", kNotAvailable, "2 loaded factory"},
      {"Outcome.ThrowsOwn", kNotAvailable, "2 loaded factory", "own exception"},
      {"Outcome.ThrowsStandard", kNotAvailable, "2 loaded factory", "standard exception"},
      {"Outcome.InitFails", kAlreadyPresent, "2 loaded factory", "old", "made, initialised, ended"},
  };
  const std::string trace =
      "TRACE_MODULE_NAME: iqsunknown:163 iqs_CoCreateInstance: QSLT: Failed to create an instance";
  for (const Case& row : cases) {
    const std::string id = row.id != nullptr ? row.id : "";
    SCOPED_TRACE(id);
    Creation made = create(nullptr, row.id);
    EXPECT_EQ(made.result, row.result);
    EXPECT_EQ(made.error, row.error);
    EXPECT_EQ(made.trace, made.notes.empty() ? trace + " : " + id : "");
    EXPECT_EQ(made.notes, row.notes);
    EXPECT_EQ(iqs_CoCreateInstance(nullptr, row.id, &made.out), row.result);
    EXPECT_EQ(made.out, nullptr);
    EXPECT_EQ(stateOf(row.id), row.state);
    Stage::takeNotes();
  }
}

TEST_F(CreateInstanceTest, SuccessGivesTheOneReferenceToTheCaller) {
  const Creation made = create(nullptr, "Outcome.Positive");
  EXPECT_EQ(made.result, 0);
  EXPECT_EQ(made.error + made.trace + made.notes, "oldmade, initialised");
  ASSERT_NE(made.out, nullptr);
  EXPECT_EQ(static_cast<iqsUnknown*>(made.out)->Release(), 0u);
  EXPECT_EQ(Stage::takeNotes(), "ended");
  EXPECT_EQ(iqs_CoCreateInstance(nullptr, "Outcome.Positive", nullptr), kNullArgument);
  EXPECT_EQ(Stage::takeNotes(), "made, initialised, ended");
}

TEST_F(CreateInstanceTest, AnOuterIsForTheRootClassAlone) {
  iqsCUnknown outerObject(nullptr);
  iqsCInnerUnknown outer(outerObject);
  const Creation refused = create(&outer, "Outcome.Never");
  EXPECT_EQ(refused.result, kNotAvailable);
  EXPECT_EQ(refused.error + refused.trace + stateOf("Outcome.Never"), "oldnone");
  const Creation made = create(&outer, std::string("IQS_UNKNOWN").c_str());
  EXPECT_EQ(made.notes, "made inside, initialised");
  ASSERT_NE(made.out, nullptr);
  EXPECT_EQ(static_cast<iqsUnknown*>(made.out)->Release(), 0u);
}

TEST_F(CreateInstanceTest, WhatNobodyCatchesPassesThrough) {
  void* out = nullptr;
  EXPECT_THROW(iqs_CoCreateInstance(nullptr, "Outcome.ThrowsNumber", &out), int);
  EXPECT_THROW(iqs_CoCreateInstance(nullptr, "Outcome.InitThrows", &out), std::runtime_error);
}

// Each handler sees a failure that is made and ends, twice, and standard error sees none of it.
TEST_F(CreateInstanceTest, AHandlerTakesTheLinesThatItAsksFor) {
  using Take = void (*)(const Tracer::Line& line, void* context);
  const Take keep = [](const Tracer::Line& line, void* context) {
    *static_cast<std::string*>(context) +=
        std::to_string(line.detail) + line.tag + line.text + '\n';
  };
  const Take keepAndThrow = [](const Tracer::Line& line, void* context) {
    *static_cast<std::string*>(context) += std::string(line.function) + '\n';
    throw std::runtime_error(line.file);
  };
  const Take keepAndTrace = [](const Tracer::Line& /*line*/, void* context) {
    *static_cast<std::string*>(context) += QSException(kFailure, "own\n").what();
  };
  const std::string warning =
      "0QSRESULT:QSException from QSResult : constructed at : No specific file "
      "info:0\n";
  struct Case {
    Take take;
    Tracer::LogDetail mostDetail;
    std::string taken;
  };
  const Case cases[] = {
      {keep, Tracer::kDetailNone, ""},
      {keep, Tracer::kDetailWarning, warning},
      {keep, Tracer::kDetailAll, warning + "2QSRESULT:QSException destructed\n"},
      {keepAndThrow, Tracer::kDetailLifecycle, "QSException\n~QSException\n"},
      {keepAndTrace, Tracer::kDetailWarning, "own\n"},
  };
  const auto fail = [] { (void)QSException(kFailure).Line(); };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.taken);
    std::string taken;
    const Tracer::Handler handler{row.take, &taken, row.mostDetail};
    testing::internal::CaptureStderr();
    EXPECT_EQ(Tracer::setHandler(&handler), nullptr);
    fail();
    fail();
    EXPECT_EQ(Tracer::setHandler(nullptr), &handler);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(taken, row.taken + row.taken);
  }
  EXPECT_NE(create(nullptr, "No.Entry").trace, "") << "standard error is back";
}

}  // namespace
}  // namespace LTLib::Testing
