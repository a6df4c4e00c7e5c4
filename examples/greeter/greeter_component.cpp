// The component library: a class with two interfaces.
#include "examples/greeter/greeter.h"

namespace {

class Hello : public LTLib::Component<Hello, Greeter, Counter> {
 public:
  std::string greet(const std::string& name) override {
    ++m_count;
    return "Hello, " + name;
  }
  int count() const override { return m_count; }

 private:
  int m_count = 0;
};

}  // namespace

LTLIB_COMPONENT(Hello, "Example.Hello", "greets by name")
