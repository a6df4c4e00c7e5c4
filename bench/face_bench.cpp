// What the typed faces cost beside the interface that they stand on.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "ltlib/component.h"
#include "ltlib/ltlib.h"
#include "ltlib/settings.h"

namespace {

constexpr char kPath[] = "Software\\Demo\\Net";

struct Greeter : iqsUnknown {
  static constexpr iqsID kID{"Bench.Greeter/1.0"};

 protected:
  ~Greeter() = default;
};

class Hello : public LTLib::Component<Hello, Greeter> {};

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::exit(EXIT_FAILURE);
}

LTLib::Key filledKey() {
  const LTLib::Key key(LTLib::Root::kLocalMachine, kPath);
  key.set("Port", 8080);
  key.set("Host", "example.org");
  return key;
}

void enterClass() {
  LTLib::Key(LTLib::Root::kLocalMachine, "%CLASSID%\\Bench.Hello")
      .set("InprocServer", LTLIB_BENCH_LIBRARY);
  // In the program itself, and so behind the entry, without which it would not count.
  static const LTLib::ComponentRegistration<Hello> s_registration("Bench.Hello");
}

class Face {
 public:
  int number() { return m_key.get<int>("Port").value_or(0); }
  std::string text() { return m_key.get<std::string>("Host").value_or(""); }

  static void createAndRelease() {
    benchmark::DoNotOptimize(LTLib::create<Greeter>("Bench.Hello"));
  }

 private:
  LTLib::Key m_key = filledKey();
};

class Plain {
 public:
  Plain() { filledKey(); }

  int number() {
    unsigned long number = 0;
    return m_value.Read("Port", number) == 0 ? static_cast<int>(number) : 0;
  }
  std::string text() {
    char* text = nullptr;
    return m_value.Read("Host", text) == 0 ? std::string(text) : std::string();
  }

  static void createAndRelease() {
    void* made = nullptr;
    void* greeter = nullptr;
    if (iqs_CoCreateInstance(nullptr, "Bench.Hello", &made) != 0) {
      fail("no object");
    }
    auto* const face = static_cast<iqsUnknown*>(made);
    if (face->QueryInterface(Greeter::kID, &greeter) != 0) {
      fail("no interface");
    }
    face->Release();
    static_cast<Greeter*>(greeter)->Release();
  }

 private:
  CQSRegValue m_value{REG_ROOT_LOCAL_MACHINE, kPath, nullptr};
};

template <class Way>
void readNumber(benchmark::State& state) {
  Way way;
  for (auto _ : state) {
    if (way.number() != 8080) {
      fail("another number");
    }
  }
}

template <class Way>
void readText(benchmark::State& state) {
  Way way;
  for (auto _ : state) {
    if (way.text() != "example.org") {
      fail("another text");
    }
  }
}

template <class Way>
void create(benchmark::State& state) {
  enterClass();
  for (auto _ : state) {
    Way::createAndRelease();
  }
}

BENCHMARK(readNumber<Face>);
BENCHMARK(readNumber<Plain>);
BENCHMARK(readText<Face>);
BENCHMARK(readText<Plain>);
BENCHMARK(create<Face>);
BENCHMARK(create<Plain>);

}  // namespace
