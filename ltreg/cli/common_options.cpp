#include <algorithm>

#include "ltreg/cli/verb.h"

namespace ltreg {

const std::vector<Parameter>& commonOptions() {
  static const std::vector<Parameter> all{
      {"--store", "The store file of the root, whatever the environment says", &Request::store},
      {"--backend",
       "Where roots lie, whatever programs go by: in store files, or in the operating system's"
       " registry",
       &Request::backend,
       false,
       nullptr,
       {kFileBackend, kSystemBackend}},
      {"--timeout",
       "Seconds until the wait for a lock that another process holds ends; no end without it",
       &Request::lockTimeout},
      {"--view",
       "Whose part of the operating system's registry, where it has two: that of programs of 32"
       " bits, or of 64",
       &Request::view,
       false,
       nullptr,
       {kNarrowView, kWideView}},
      {"--color",
       "Whether to write in colours; auto does where a person looks, unless NO_COLOR is set",
       &Request::colour,
       false,
       nullptr,
       {"auto", "always", "never"}},
      {"--pager", "Show the output page by page, where a person looks", &Request::pager},
  };
  return all;
}

std::vector<const Parameter*> parametersOf(const Verb& verb) {
  std::vector<const Parameter*> all;
  for (const Parameter& parameter : verb.parameters) {
    all.push_back(&parameter);
  }
  for (const Parameter& option : commonOptions()) {
    if (std::none_of(verb.parameters.begin(), verb.parameters.end(),
                     [&](const Parameter& own) { return own.isNamed(option.name); })) {
      all.push_back(&option);
    }
  }
  return all;
}

}  // namespace ltreg
