// Expansion of variables beside its peers, by the number of characters that come out, about 16 for
// each plain value: references that each have a variable of their own (flat); the same over two
// levels of variables that hold four references each (nested); references to one of three plain
// variables (few); and to one variable over three levels, again and again (again).
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

using Variables = std::vector<std::pair<std::string, std::string>>;

// A text with %NAME% references, and what they refer to.
struct Source {
  std::string text;
  Variables variables;
};

std::string nameOf(const char* kind, std::size_t number) {
  return kind + std::to_string(number);
}

std::string reference(const std::string& name) {
  return '%' + name + '%';
}

Source flatSource(std::size_t pieces) {
  Source source;
  for (std::size_t i = 0; i < pieces; ++i) {
    const std::string name = nameOf("Flat", i);
    source.variables.emplace_back(name, "a text of 12");
    source.text += reference(name) + " and";
  }
  return source;
}

// Four references in each value, three levels deep; more than ten a peer takes for a circle.
Source nestedSource(std::size_t pieces) {
  Source source;
  for (std::size_t i = 0; i < pieces; ++i) {
    source.variables.emplace_back(nameOf("Leaf", i), "a text of the 16");
  }
  const char* below = "Leaf";
  for (const char* level : {"Inner", "Outer"}) {
    for (std::size_t i = 0; (i + 1) * 4 <= pieces; ++i) {
      std::string value;
      for (std::size_t j = 4 * i; j < 4 * i + 4; ++j) {
        value += reference(nameOf(below, j));
      }
      source.variables.emplace_back(nameOf(level, i), value);
    }
    pieces /= 4;
    below = level;
  }
  for (std::size_t i = 0; i < pieces; ++i) {
    source.text += reference(nameOf("Outer", i));
  }
  return source;
}

Source fewSource(std::size_t pieces) {
  Source source{{},
                {{"Few0", "a text of the 16"}, {"Few1", "another of its 16"}, {"Few2", "short"}}};
  for (std::size_t i = 0; i < pieces; ++i) {
    source.text += reference(nameOf("Few", i % 3)) + '/';
  }
  return source;
}

Source againSource(std::size_t pieces) {
  Source source{{},
                {{"AgainRoot", "Software\\%AgainMaker%\\%AgainProduct%"},
                 {"AgainProduct", "Suite of %AgainMaker%"},
                 {"AgainMaker", "a maker"}}};
  for (std::size_t i = 0; i < pieces / 3; ++i) {
    source.text += "%AgainRoot%;";
  }
  return source;
}

class Library {
 public:
  explicit Library(const Variables& variables) {
    for (const auto& [name, value] : variables) {
      (void)QSConfigVariableManager::GetInstance()->AddVariable(name, value);
      m_names.push_back(name);
    }
  }
  ~Library() {
    for (const std::string& name : m_names) {
      (void)QSConfigVariableManager::GetInstance()->RemoveVariable(name);
    }
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  static std::string written(const std::string& text) { return text; }
  static std::string expanded(const std::string& source) {
    std::string text = source;
    (void)QSExpandString(text);
    return text;
  }

 private:
  std::vector<std::string> m_names;
};

#ifdef LTLIB_BENCH_POCO
// Its references are written ${NAME}.
class PocoConfiguration {
 public:
  explicit PocoConfiguration(const Variables& variables) {
    for (const auto& [name, value] : variables) {
      m_configuration->setString(name, written(value));
    }
  }
  static std::string written(const std::string& text) {
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
class Absl {
 public:
  explicit Absl(const Variables& variables) {
    for (const auto& [name, value] : variables) {
      m_pairs.emplace_back(reference(name), value);
    }
  }
  static std::string written(const std::string& text) { return text; }
  [[nodiscard]] std::string expanded(const std::string& source) const {
    return absl::StrReplaceAll(source, m_pairs);
  }

 private:
  Variables m_pairs;
};
#endif

template <class Way, Source (*make)(std::size_t pieces)>
void expand(benchmark::State& state) {
  const Source source = make(static_cast<std::size_t>(state.range(0)) / 16);
  const Way way(source.variables);
  const std::string text = Way::written(source.text);
  for (auto _ : state) {
    std::string expanded = way.expanded(text);
    benchmark::DoNotOptimize(expanded.data());
  }
}

void sizes(benchmark::internal::Benchmark* bench) {
  bench->Arg(1'000)->Arg(10'000)->Arg(100'000)->Arg(1'000'000);
}

BENCHMARK(expand<Library, flatSource>)->Apply(sizes);
BENCHMARK(expand<Library, nestedSource>)->Apply(sizes);
BENCHMARK(expand<Library, fewSource>)->Apply(sizes);
BENCHMARK(expand<Library, againSource>)->Apply(sizes);
#ifdef LTLIB_BENCH_POCO
BENCHMARK(expand<PocoConfiguration, flatSource>)->Apply(sizes);
BENCHMARK(expand<PocoConfiguration, nestedSource>)->Apply(sizes);
BENCHMARK(expand<PocoConfiguration, fewSource>)->Apply(sizes);
BENCHMARK(expand<PocoConfiguration, againSource>)->Apply(sizes);
#endif
#ifdef LTLIB_BENCH_ABSL_STRINGS
BENCHMARK(expand<Absl, fewSource>)->Apply(sizes);
#endif

}  // namespace
