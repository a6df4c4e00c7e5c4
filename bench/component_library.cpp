// A library for classes whose registrars sit in the program.
namespace {

[[maybe_unused]] const int s_nothing = 0;

}  // namespace
