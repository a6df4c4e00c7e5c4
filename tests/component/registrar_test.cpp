// Registrars of the program itself: records are filled without a load.
#include <optional>
#include <stdexcept>
#include <thread>

#include "tests/component/component_fixture.h"

namespace LTLib::Testing {
namespace {

using Registrar = iqsDllLoader::Registrar;

int s_first = 1;
int s_second = 2;

void* createFirst() {
  return &s_first;
}

void* createSecond() {
  return &s_second;
}

void release(void* instance) {
  *static_cast<int*>(instance) += 10;
}

[[noreturn]] void* createAndThrow() {
  throw std::runtime_error("from a factory");
}

[[noreturn]] void releaseAndThrow(void*) {
  throw std::runtime_error("from a release");
}

bool hasFactory(const char* id) {
  const std::optional<ClassReport> report = reportClass(id);
  return report && report->hasFactory;
}

// Lets no look-up succeed while it is there.
class ThrowingResolver : public QSVariableResolver {
 public:
  ThrowingResolver() { QSConfigVariableManager::GetInstance()->AddResolver(this); }
  virtual ~ThrowingResolver() { QSConfigVariableManager::GetInstance()->RemoveResolver(this); }
  QSResult Resolve(const std::string&, const std::string&, std::string&) override {
    throw std::runtime_error("from a resolver");
  }
};

class RegistrarTest : public ComponentTest {};

TEST_F(RegistrarTest, AClassIsOfferedAsLongAsItsRegistrarLives) {
  enterClass("Own.Class", libraryPath("component_quiet"));
  {
    const Registrar registrar("Own.Class", createFirst, release);
    EXPECT_TRUE(hasFactory("Own.Class"));
    iqsDllLoader::FactoryDll* const record = iqsDllLoader::Load("Own.Class", nullptr);
    void* const instance = iqsDllLoader::CreateInstance(record);
    EXPECT_EQ(instance, &s_first);
    iqsDllLoader::ReleaseInstance(record, instance);
    EXPECT_EQ(s_first, 11);
    iqsDllLoader::Unload(record);
    EXPECT_TRUE(hasFactory("Own.Class"));
    EXPECT_EQ(reportClass("Own.Class")->loadCount, 0u);
  }
  EXPECT_FALSE(hasFactory("Own.Class"));
}

TEST_F(RegistrarTest, OfTwoForOneClassTheLaterCountsAndTheEndOfEitherClears) {
  enterClass("Own.Twice", libraryPath("component_quiet"));
  std::optional<Registrar> first(std::in_place, "Own.Twice", createFirst, nullptr);
  std::optional<Registrar> second(std::in_place, "Own.Twice", createSecond, nullptr);
  iqsDllLoader::FactoryDll* record = iqsDllLoader::Load("Own.Twice", nullptr);
  EXPECT_EQ(iqsDllLoader::CreateInstance(record), &s_second);
  iqsDllLoader::ReleaseInstance(record, &s_second);
  EXPECT_EQ(s_second, 2);
  iqsDllLoader::Unload(record);
  first.reset();
  EXPECT_FALSE(hasFactory("Own.Twice"));
  EXPECT_EQ(iqsDllLoader::CreateInstance(record), nullptr);
  first.emplace("Own.Twice", createFirst, nullptr);
  EXPECT_EQ(iqsDllLoader::CreateInstance(record), &s_first);
  second.reset();
  EXPECT_FALSE(hasFactory("Own.Twice"));
}

TEST_F(RegistrarTest, WhatCannotBeOfferedIsNotAndTouchesNothing) {
  enterClass("Own.Kept", libraryPath("component_quiet"));
  const Registrar kept("Own.Kept", createFirst, nullptr);
  {
    const Registrar withoutId(nullptr, createSecond, nullptr);
    const Registrar withoutFactory("Own.Kept", nullptr, release);
    const Registrar withoutUnknownFactory("Own.Kept", nullptr);
    const Registrar withoutEntry("Own.NoEntry", createSecond, nullptr);
  }
  EXPECT_TRUE(hasFactory("Own.Kept"));
  EXPECT_FALSE(reportClass("Own.NoEntry"));
}

TEST_F(RegistrarTest, ALookUpThatThrowsEndsInARegistrarAndPassesThroughLoad) {
  enterClass("Own.Late", libraryPath("component_quiet"));
  {
    const ThrowingResolver resolver;
    const Registrar registrar("Own.Late", createFirst, nullptr);
    EXPECT_FALSE(reportClass("Own.Late"));
    EXPECT_THROW(static_cast<void>(iqsDllLoader::Load("Own.Late", nullptr)), std::runtime_error);
  }
  const Registrar registrar("Own.Late", createFirst, nullptr);
  EXPECT_TRUE(hasFactory("Own.Late"));
}

TEST_F(RegistrarTest, WhatAFactoryThrowsPassesThroughAndLeavesTheLocksFree) {
  enterClass("Own.Throws", libraryPath("component_quiet"));
  const Registrar registrar("Own.Throws", createAndThrow, releaseAndThrow);
  iqsDllLoader::FactoryDll* const record = iqsDllLoader::Load("Own.Throws", nullptr);
  EXPECT_THROW(iqsDllLoader::CreateInstance(record), std::runtime_error);
  int instance = 0;
  EXPECT_THROW(iqsDllLoader::ReleaseInstance(record, &instance), std::runtime_error);
  std::thread([record] { iqsDllLoader::Unload(record); }).join();
  EXPECT_EQ(reportClass("Own.Throws")->loadCount, 0u);
}

}  // namespace
}  // namespace LTLib::Testing
