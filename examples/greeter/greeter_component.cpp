// The component library: one class of each form.
#include "examples/greeter/greeter.h"

namespace {

// The interface's references are those of the whole object, for which m_outerUnknown speaks.
class Hello : public iqsCUnknown, public Greeter {
 public:
  using iqsCUnknown::iqsCUnknown;

  QSResult InnerQueryInterface(const iqsID& id, void** out) override {
    if (out == nullptr || !(id == kGreeterID)) {
      return iqsCUnknown::InnerQueryInterface(id, out);
    }
    *out = static_cast<Greeter*>(this);
    AddRef();
    return LTLib::kSuccess;
  }

  QSResult QueryInterface(const iqsID& id, void** out) override {
    return m_outerUnknown->QueryInterface(id, out);
  }
  std::uint32_t AddRef() const override { return m_outerUnknown->AddRef(); }
  std::uint32_t Release() const override { return m_outerUnknown->Release(); }

  std::string greet(const std::string& name) override { return "Hello, " + name; }
};

class CountingCounter final : public Counter {
 public:
  int count() override { return ++m_count; }

 private:
  int m_count = 0;
};

const iqsDllLoader::Registrar s_hello(kHelloClass, [](iqsUnknown* outer, iqsCUnknown** out) {
  *out = new Hello(outer);
  return LTLib::kSuccess;
});

// A plain instance travels as void*, which has to be the same type on both sides.
const iqsDllLoader::Registrar s_counter(
    kCounterClass, []() -> void* { return static_cast<Counter*>(new CountingCounter); },
    [](void* instance) { delete static_cast<CountingCounter*>(static_cast<Counter*>(instance)); });

}  // namespace
