// What a component library and its user share: interfaces, each with its identifier and version.
// The library is greeter_component.cpp, the program greeter.cpp.
#ifndef EXAMPLES_GREETER_GREETER_H
#define EXAMPLES_GREETER_GREETER_H

#include <string>

#include "ltlib/component.h"

struct Greeter : iqsUnknown {
  static constexpr iqsID kID{"Example.Greeter/1.0"};
  virtual std::string greet(const std::string& name) = 0;

 protected:
  ~Greeter() = default;
};

struct Counter : iqsUnknown {
  static constexpr iqsID kID{"Example.Counter/1.0"};
  virtual int count() const = 0;

 protected:
  ~Counter() = default;
};

#endif  // EXAMPLES_GREETER_GREETER_H
