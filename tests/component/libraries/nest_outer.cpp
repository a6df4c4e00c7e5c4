// A class of the plain form whose objects are made of, and hold, those of another library.
#include "ltlib/ltlib.h"

namespace {

struct Outer {
  iqsDllLoader::FactoryDll* innerClass = iqsDllLoader::Load("Nest.Inner", nullptr);
  void* inner = iqsDllLoader::CreateInstance(innerClass);

  Outer() = default;
  ~Outer() {
    iqsDllLoader::ReleaseInstance(innerClass, inner);
    iqsDllLoader::Unload(innerClass);
  }
  Outer(const Outer&) = delete;
  Outer& operator=(const Outer&) = delete;
};

// Null when the inner object could not be made.
void* createOuter() {
  auto* const outer = new Outer;
  if (outer->inner != nullptr) {
    return outer;
  }
  delete outer;
  return nullptr;
}

const iqsDllLoader::Registrar s_registrar("Nest.Outer", createOuter, [](void* instance) {
  delete static_cast<Outer*>(instance);
});

}  // namespace
