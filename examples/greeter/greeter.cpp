// Enters the two classes of a component library in the registry and uses them:
//   greeter LIBRARY
#include "examples/greeter/greeter.h"

#include <cstdio>

namespace {

// In the memory of this process; SaveConfiguration would keep it for others.
bool enterClass(const iqsID& id, const char* library) {
  const std::string key = std::string("%CLASSID%\\") + id.text();
  return CQSRegValue(REG_ROOT_LOCAL_MACHINE, key.c_str(), "InprocServer").Write(library) == 0;
}

// The public face is asked for the interface, which then holds the object by itself.
Greeter* createGreeter() {
  void* out = nullptr;
  std::string error;
  if (iqs_CoCreateInstance(nullptr, kHelloClass, &out, error) < 0) {
    std::fprintf(stderr, "%s\n", error.c_str());
    return nullptr;
  }
  auto* const face = static_cast<iqsUnknown*>(out);
  const bool answers = face->QueryInterface(kGreeterID, &out) == 0;
  face->Release();
  return answers ? static_cast<Greeter*>(out) : nullptr;
}

bool greetTwice(Counter& counter) {
  Greeter* const greeter = createGreeter();
  if (greeter == nullptr) {
    return false;
  }
  int greetings = 0;
  for (const char* name : {"world", "components"}) {
    std::printf("%s\n", greeter->greet(name).c_str());
    greetings = counter.count();
  }
  std::printf("%d greetings\n", greetings);
  greeter->Release();
  return true;
}

}  // namespace

int main(int count, char** words) {
  if (count != 2 || !enterClass(kHelloClass, words[1]) || !enterClass(kCounterClass, words[1])) {
    std::fputs("usage: greeter LIBRARY\n", stderr);
    return 2;
  }
  iqsDllLoader::FactoryDll* const counterClass = iqsDllLoader::Load(kCounterClass, nullptr);
  void* const counter = iqsDllLoader::CreateInstance(counterClass);
  const bool done = counter != nullptr && greetTwice(*static_cast<Counter*>(counter));
  iqsDllLoader::ReleaseInstance(counterClass, counter);
  iqsDllLoader::Unload(counterClass);
  return done ? 0 : 1;
}
