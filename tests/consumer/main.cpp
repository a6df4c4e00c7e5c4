#include <cstdio>
#include <string>

#include "ltlib/ltlib.h"

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

// A virtual call into the library, and an exception that the library's type information carries
// back: both need the installed libraries to find each other.
int main() {
  const std::string file = GetConfigurationPathname(REG_ROOT_USERS);
  try {
    throw QSException("main", __LINE__, LTLib::kNotFound, file.c_str());
  } catch (const QSException& error) {
    std::puts(error.what());
    return !error.What().empty() && usesPart() ? 0 : 1;
  }
}
