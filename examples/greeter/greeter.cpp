// Enters the class of a component library in the registry and uses it:
//   greeter LIBRARY
#include "examples/greeter/greeter.h"

#include <cstdio>

#include "ltlib/settings.h"

int main(int count, char** words) {
  try {
    // In the memory of this process; a transaction would keep it for others.
    const LTLib::Key entry(LTLib::Root::kLocalMachine, "%CLASSID%\\Example.Hello");
    entry.set("InprocServer", count == 2 ? words[1] : "");
    const auto greeter = LTLib::create<Greeter>("Example.Hello");
    for (const char* name : {"world", "components"}) {
      std::printf("%s\n", greeter->greet(name).c_str());
    }
    std::printf("%d greetings\n", greeter.query<Counter>()->count());
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "greeter: %s\n", error.what());
    return 1;
  }
}
