// The first load of component libraries in a process, beside a bare dlopen of the same files:
//
//   first_load_bench ltlib|dlopen LIBRARY...
//
// prints the nanoseconds of processor time for each library. The registry is loaded before that.
#include <dlfcn.h>
#include <time.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "ltlib/ltlib.h"

namespace {

double now() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

void demand(bool holds) {
  if (!holds) {
    std::fputs("a library does not load\n", stderr);
    std::exit(EXIT_FAILURE);
  }
}

std::string classOf(int number) {
  return "FirstLoad" + std::to_string(number);
}

void enter(const std::string& id, const char* library) {
  demand(CQSRegValue(REG_ROOT_LOCAL_MACHINE, ("%CLASSID%\\" + id).c_str(), "InprocServer")
             .Write(library) == 0);
}

}  // namespace

int main(int count, char** words) {
  demand(count > 2);
  const bool bare = std::string_view(words[1]) == "dlopen";
  enter("FirstLoad", words[2]);
  for (int i = 2; i < count; ++i) {
    enter(classOf(i), words[i]);
  }
  const double begin = now();
  for (int i = 2; i < count; ++i) {
    demand(bare ? dlopen(words[i], RTLD_NOW | RTLD_LOCAL) != nullptr
                : iqsDllLoader::Load(classOf(i).c_str(), nullptr) != nullptr);
  }
  std::printf("first_load %.6g\n", (now() - begin) / (count - 2));
}
