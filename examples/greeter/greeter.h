// A component library and its user, in ten lines each. This header is what the two share; the
// library is greeter_component.cpp, the program greeter.cpp.
//
// An author writes a class with a factory, and one static object that offers it:
//
//   class Hello : public iqsCUnknown { ... };
//   QSResult createHello(iqsUnknown* outer, iqsCUnknown** out) {
//     *out = new Hello(outer);
//     return 0;
//   }
//   const iqsDllLoader::Registrar s_hello("Example.Hello", createHello);
//
// The build makes a library of it:
//
//   ltlib_add_component(greeter_component greeter_component.cpp CLASSES Example.Hello)
//
// An entry in the registry says where it lies, and a user creates by name:
//
//   CQSRegValue(REG_ROOT_LOCAL_MACHINE, "%CLASSID%\\Example.Hello", "InprocServer").Write(path);
//   void* out = nullptr;
//   iqs_CoCreateInstance(nullptr, "Example.Hello", &out);
#ifndef EXAMPLES_GREETER_GREETER_H
#define EXAMPLES_GREETER_GREETER_H

#include <string>

#include "ltlib/ltlib.h"

/// A component: counts its references, and answers to the interface kGreeterID.
inline constexpr iqsID kHelloClass("Example.Hello");
inline constexpr iqsID kGreeterID("Example.Greeter");

struct Greeter : iqsUnknown {
  virtual std::string greet(const std::string& name) = 0;
};

/// An object of the plain form: created and released through the loader, without interfaces.
inline constexpr iqsID kCounterClass("Example.Counter");

struct Counter {
  virtual int count() = 0;

 protected:
  ~Counter() = default;
};

#endif  // EXAMPLES_GREETER_GREETER_H
