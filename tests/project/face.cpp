// The face for C++ of today as programs use it, for every compiler and standard that is tried, with
// the examples. With SHOW_MISTAKES instead the table of what programs trip over: no line marked "no:"
// compiles, for the reason that it tells, and every other one does. What compiles and has to do the
// right thing is in the tables of tests/registry/settings_test.cpp.
#include <array>

#include "examples/greeter/greeter.h"
#include "ltlib/diagnosis.h"
#include "ltlib/ltlib.h"
#include "ltlib/settings.h"
#include "lttracer/tracer.h"

#ifndef SHOW_MISTAKES
#define main settingsMain
#include "examples/settings/main.cpp"
#undef main
#define main greeterMain
#include "examples/greeter/greeter.cpp"
#undef main
#include "examples/greeter/greeter_component.cpp"
#endif

namespace {

enum class Level { kLow, kHigh };

struct Net {
  int port = 0;
  std::string host;
};

}  // namespace

template <>
inline constexpr std::array LTLib::enumNames<Level> = {std::pair{Level::kLow, "low"},
                                                       std::pair{Level::kHigh, "high"}};

#ifdef SHOW_MISTAKES

using LTLib::ComponentPtr;

struct Nameless : iqsUnknown {};

void names(const LTLib::Key& key, char (&buffer)[4], std::string_view view) {
  key.set("Port", 0);
  key.set(view, std::string("text"));
  key.set(buffer, sizeof buffer);  // no: deleted
  key.set(nullptr, 1);             // no: deleted
  (void)key.get<int>(buffer);      // no: deleted
  (void)key.contains(nullptr);     // no: deleted
}

void values(const LTLib::Key& key, char (&buffer)[4], const void* address, int* pointer) {
  key.set("Name", true);
  key.set("Name", std::array<std::byte, 2>());
  key.set("Name", buffer);                            // no: deleted
  key.set("Name", nullptr);                           // no: deleted
  key.set("Name", address);                           // no: no matching
  key.set("Name", address, sizeof buffer);            // no: no matching
  key.set("Name", pointer);                           // no: no matching
  key.set("Name", 'c');                               // no: no matching
  key.set("Name", 1.5L);                              // no: no matching
  key.set("Name", REG_ROOT_USERS);                    // no: no matching
  key.set("Name", CQSRegValue::e_data_struct());      // no: no matching
  (void)key.get<const char*>("Name");                 // no: no matching
  (void)key.get<char*>("Name");                       // no: no matching
  (void)key.get<std::string_view>("Name");            // no: no matching
  (void)key.get<CQSRegValue::e_data_struct>("Name");  // no: no matching
  (void)key.get<enumRegRoot>("Name");                 // no: no matching
  (void)(key.get<int>("Name") + 1);                   // no: operator|operands
  key.get<int>("Name");                               // no: ignoring return value
}

void components(const ComponentPtr<Greeter>& greeter, Greeter* face) {
  (void)ComponentPtr<iqsUnknown>(greeter);
  (void)iqs_const_ptr<iqsSharedObject>(iqs_ptr<iqsSharedObject>());
  (void)ComponentPtr<Greeter>(face);               // no: private
  (void)ComponentPtr<Counter>(greeter);            // no: no matching
  (void)ComponentPtr<int>();                       // no: constraint
  (void)greeter.query<Nameless>();                 // no: no matching
  (void)LTLib::create<Nameless>("Example.Hello");  // no: no matching
  LTLib::create<Greeter>("Example.Hello");         // no: ignoring return value
  delete greeter.get();                            // no: protected
}

void failures(std::error_code code, LTLib::Transaction& change) {
  (void)(code == LTLib::SettingsErrc::kAbsent);
  (void)(code == LTLib::kNotFound);   // no: operator|operands
  LTLib::Transaction second(change);  // no: deleted
}

#else

template <LTLib::SettingType... T>
void useEach(const LTLib::Key& key, std::error_code& code) {
  (key.set("Name", key.get("Name", T(), code)), ...);
  (key.set("Name", key.get<T>("Name").value(), code), ...);
}
template void useEach<bool, short, unsigned char, int, unsigned int, long, unsigned long, long long,
                      float, double, std::string, std::filesystem::path, std::vector<std::string>,
                      std::vector<std::byte>, std::chrono::seconds, std::chrono::milliseconds,
                      Level>(const LTLib::Key&, std::error_code&);
template class LTLib::Group<Net>;
template class LTLib::ComponentPtr<Greeter>;
#endif
