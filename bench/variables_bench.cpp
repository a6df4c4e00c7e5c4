// Expansion of variables beside its peers, by the number of characters that come out: references to
// plain values (flat), and to values that hold references in three levels (nested).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "ltlib/ltlib.h"

#ifdef LTLIB_BENCH_ABSL_STRINGS
#include <absl/strings/str_replace.h>
#endif
#ifdef LTLIB_BENCH_POCO
#include <Poco/AutoPtr.h>
#include <Poco/Util/MapConfiguration.h>
#endif

namespace {

// A reference is written %NAME%.
const std::pair<const char*, const char*> kVariables[] = {
    {"Alpha", "first"},
    {"Beta", "second value"},
    {"Gamma", "g"},
    {"Inner", "the end of %Alpha%"},
    {"Middle", "%Inner% and %Beta%"},
    {"Outer", "%Middle%, %Gamma%"},
};

const std::vector<std::string> kFlat = {"%Alpha%/", "%Beta%/", "text %Gamma%/"};
const std::vector<std::string> kNested = {"%Outer%/", "text %Middle%/"};

std::string references(const std::vector<std::string>& pieces, std::int64_t characters) {
  std::string text;
  for (std::size_t i = 0; text.size() < static_cast<std::size_t>(characters); ++i) {
    text += pieces[i % pieces.size()];
  }
  return text;
}

struct Library {
  Library() {
    for (const auto& [name, value] : kVariables) {
      (void)QSConfigVariableManager::GetInstance()->AddVariable(name, value);
    }
  }
  static std::string reference(const std::string& text) { return text; }
  static std::string expanded(const std::string& source) {
    std::string text = source;
    (void)QSExpandString(text);
    return text;
  }
};

#ifdef LTLIB_BENCH_POCO
// Its references are written ${NAME}.
class PocoConfiguration {
 public:
  PocoConfiguration() {
    for (const auto& [name, value] : kVariables) {
      m_configuration->setString(name, reference(value));
    }
  }
  static std::string reference(const std::string& text) {
    std::string made;
    bool open = false;
    for (const char c : text) {
      if (c == '%') {
        open = !open;
        made += open ? "${" : "}";
      } else {
        made += c;
      }
    }
    return made;
  }
  [[nodiscard]] std::string expanded(const std::string& source) const {
    return m_configuration->expand(source);
  }

 private:
  Poco::AutoPtr<Poco::Util::MapConfiguration> m_configuration{new Poco::Util::MapConfiguration};
};
#endif

#ifdef LTLIB_BENCH_ABSL_STRINGS
struct Absl {
  static std::string reference(const std::string& text) { return text; }
  static std::string expanded(const std::string& source) {
    return absl::StrReplaceAll(
        source, {{"%Alpha%", "first"}, {"%Beta%", "second value"}, {"%Gamma%", "g"}});
  }
};
#endif

template <class Way>
void expand(benchmark::State& state, const std::vector<std::string>& pieces) {
  const Way way;
  const std::string source = Way::reference(references(pieces, state.range(0)));
  for (auto _ : state) {
    std::string text = way.expanded(source);
    benchmark::DoNotOptimize(text.data());
  }
}

template <class Way>
void flat(benchmark::State& state) {
  expand<Way>(state, kFlat);
}

template <class Way>
void nested(benchmark::State& state) {
  expand<Way>(state, kNested);
}

void sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(1'000)->Arg(10'000)->Arg(100'000)->Arg(1'000'000);
}

BENCHMARK(flat<Library>)->Apply(sizes);
BENCHMARK(nested<Library>)->Apply(sizes);
#ifdef LTLIB_BENCH_POCO
BENCHMARK(flat<PocoConfiguration>)->Apply(sizes);
BENCHMARK(nested<PocoConfiguration>)->Apply(sizes);
#endif
#ifdef LTLIB_BENCH_ABSL_STRINGS
BENCHMARK(flat<Absl>)->Apply(sizes);
#endif

}  // namespace
