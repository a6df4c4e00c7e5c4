// Keeps a program's settings in the registry.
//
//   settings write    sets them
//   settings show     lists them
//   settings clear    deletes them
#include <cstdio>
#include <cstring>
#include <string>

#include "ltlib/ltlib.h"

namespace {

constexpr enumRegRoot kRoot = REG_ROOT_CURRENT_USER;

// All paths are written with a variable of the program's own, which leads to one of the library's.
QSREGISTRYVARIABLE s_variables[] = {
    {"DemoRoot", "%SharedRoot%\\Settings Demo"},
    {nullptr, nullptr},
};
const QSVariableRegistrar s_registrar(s_variables);

// Lists have a record of their own: items that end in NUL, and one NUL more.
QSResult writeList(CQSRegValue& value, const char* name, std::string items) {
  CQSRegValue::e_data_struct data;
  data.type = CQSRegValue::DATA_MULTI_STRING;
  data.size = static_cast<std::uint32_t>(items.size()) + 1;
  data.pData = items.data();
  const QSResult result = value.Write(name, data);
  data.type = CQSRegValue::DATA_NONE;  // the record does not own the items
  return result;
}

bool save() {
  return SaveConfiguration(kRoot) >= 0;
}

// A write makes the key if it is not there.
bool writeSettings() {
  CQSRegValue setting(kRoot, "%DemoRoot%", nullptr);
  const unsigned char layout[] = {0x10, 0x20, 0x30, 0x40};
  const std::string recent("one.txt\0two.txt\0", 16);
  CQSRegValue width(kRoot, "%DemoRoot%\\Window", "Width");
  return setting.Write("Title", "Hello, world") >= 0 && setting.Write("Retries", 3ul) >= 0 &&
         setting.Write("Layout", layout, sizeof layout) >= 0 &&
         writeList(setting, "Recent", recent) >= 0 && width.Write(800ul) >= 0 && save();
}

void showItems(const char* item) {
  for (; *item != '\0'; item += std::strlen(item) + 1) {
    std::printf(" \"%s\"", item);
  }
}

void showValue(CQSRegValue& value) {
  CQSRegValue::e_data_struct data;
  if (value.Read(data) < 0) {
    return;
  }
  std::printf("%s =", value.GetName());
  switch (data.type) {
    case CQSRegValue::DATA_DWORD:
      std::printf(" %lu", static_cast<unsigned long>(data.dwValue));
      break;
    case CQSRegValue::DATA_MULTI_STRING:
      showItems(static_cast<const char*>(data.pData));
      break;
    case CQSRegValue::DATA_BINARY:
      std::printf(" %lu bytes", static_cast<unsigned long>(data.size));
      break;
    case CQSRegValue::DATA_STRING:
    case CQSRegValue::DATA_EXPAND_STRING:
      std::printf(" \"%s\"", static_cast<const char*>(data.pData));
      break;
    case CQSRegValue::DATA_NONE:
      break;
  }
  std::puts("");
}

// A walk ends with any negative result.
void showKey(const CQSRegKey& key) {
  std::printf("[%s]\n", key.GetPath());
  CQSRegEnumValue values(key);
  CQSRegValue value;
  while (values.GetNext(value) >= 0) {
    showValue(value);
  }
  CQSRegEnumKey children(key);
  CQSRegKey child;
  while (children.GetNext(child) >= 0) {
    showKey(child);
  }
}

bool clearSettings() {
  return CQSRegKey(kRoot, "%DemoRoot%").DeleteKey(true) >= 0 && save();
}

int perform(const std::string& word) {
  if (word == "show") {
    showKey(CQSRegKey(kRoot, "%DemoRoot%"));
    return 0;
  }
  if (word == "write") {
    return writeSettings() ? 0 : 1;
  }
  if (word == "clear") {
    return clearSettings() ? 0 : 1;
  }
  std::fputs("usage: settings write|show|clear\n", stderr);
  return 2;
}

}  // namespace

// The first touch of a root reads its store file, which may fail.
int main(int count, char** words) {
  try {
    return perform(count == 2 ? words[1] : "");
  } catch (const QSException& error) {
    std::fprintf(stderr, "settings: %s\n", error.what());
    return 1;
  }
}
