#include <iostream>
#include <string>

#include "ltlib/diagnosis.h"
#include "ltlib/ltlib.h"
#include "lttracer/tracer.h"

namespace {

// Once the last load is undone the library is gone, and its registrar with it.
bool usesPart() {
  CQSRegValue(REG_ROOT_LOCAL_MACHINE, "%CLASSID%\\Consumer.Part", "InprocServer")
      .Write(PART_LIBRARY);
  iqsDllLoader::FactoryDll* const part = iqsDllLoader::Load("Consumer.Part", nullptr);
  void* const instance = iqsDllLoader::CreateInstance(part);
  iqsDllLoader::ReleaseInstance(part, instance);
  iqsDllLoader::Unload(part);
  return instance != nullptr && iqsDllLoader::CreateInstance(part) == nullptr;
}

}  // namespace

// A virtual call into the library, an exception that the library's type information carries back, and
// its trace: all need the installed libraries to find each other.
int main() {
  static int s_lines = 0;
  static constexpr Tracer::Handler kCounter{
      [](const Tracer::Line& /*line*/, void* /*context*/) { ++s_lines; }, nullptr,
      Tracer::kDetailWarning};
  Tracer::setHandler(&kCounter);
  const std::string file = GetConfigurationPathname(REG_ROOT_USERS);
  try {
    throw QSException("main", __LINE__, LTLib::kNotFound, file.c_str());
  } catch (const QSException& error) {
    std::cout << error << '\n';
    return s_lines == 1 && !error.What().empty() && usesPart() ? 0 : 1;
  }
}
