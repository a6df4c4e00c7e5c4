// Keeps a program's settings in the registry.
//
//   settings write    sets them
//   settings show     lists them
//   settings clear    deletes them
#include <array>
#include <cstdio>
#include <string>

#include "ltlib/settings.h"

namespace {

// All paths are written with a variable of the program's own, which leads to one of the library's.
QSREGISTRYVARIABLE s_variables[] = {
    {"DemoRoot", "%SharedRoot%\\Settings Demo"},
    {nullptr, nullptr},
};
const QSVariableRegistrar s_registrar(s_variables);

void write(const LTLib::Key& key) {
  LTLib::Transaction change(key.root());
  key.set("Title", "Hello, world");
  key.set("Retries", 3);
  key.set("Layout", std::array{std::byte{0x10}, std::byte{0x20}, std::byte{0x30}, std::byte{0x40}});
  key.set("Recent", {"one.txt", "two.txt"});
  (key / "Window").set("Width", 800);
  change.commit();
}

void clear(const LTLib::Key& key) {
  LTLib::Transaction change(key.root());
  key.eraseAll();
  change.commit();
}

void show(const LTLib::Key& key) {
  std::printf("[%s]\n", key.path().c_str());
  for (const auto& [name, value] : key.values()) {
    std::printf("%s = %s\n", name.c_str(), value.shown().c_str());
  }
  for (const LTLib::Key& sub : key.subkeys()) {
    show(sub);
  }
}

}  // namespace

int main(int count, char** words) {
  try {
    const std::string word = count == 2 ? words[1] : "";
    const LTLib::Key key(LTLib::Root::kCurrentUser, "%DemoRoot%");
    if (word != "write" && word != "show" && word != "clear") {
      std::fputs("usage: settings write|show|clear\n", stderr);
      return 2;
    }
    word == "write" ? write(key) : word == "show" ? show(key) : clear(key);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "settings: %s\n", error.what());
    return 1;
  }
}
