#include "tests/registry/registry_fixture.h"

#include <cstdio>
#include <cstring>

#include "tests/support/environment.h"

namespace LTLib::Testing {
const TempFolder& stores() {
  static const TempFolder s_folder;
  static const ScopedStores s_variables(&s_folder);
  return s_folder;
}

RegistryObjects::RegistryObjects() : m_base("Software\\" + stores().name()) {}

RegistryObjects::~RegistryObjects() {
  (void)CQSRegKey(kUser, m_base.c_str()).DeleteKey(true);
}

std::string RegistryObjects::path(const std::string& below) const {
  return below.empty() ? m_base : m_base + '\\' + below;
}

CQSRegKey RegistryObjects::key(const std::string& below) const {
  return {kUser, path(below).c_str()};
}

CQSRegValue RegistryObjects::value(const std::string& below, const char* name) const {
  return {kUser, path(below).c_str(), name};
}

void RegistryObjects::make(const std::string& below) const {
  EXPECT_EQ(value(below, "made").Write(1ul), 0) << below;
}

void RegistryObjects::makeRaw(const std::string& below) {
  void* made = nullptr;
  EXPECT_EQ(m_manager.regCreateKey(m_root, path(below).c_str(), &made), 0) << below;
  EXPECT_EQ(m_manager.regCloseKey(made), 0);
}

OpenKey RegistryObjects::open(const std::string& below) const {
  return OpenKey(path(below), kUser, m_manager);
}

std::string codeOf(QSResult result) {
  char text[16];
  std::snprintf(text, sizeof text, "%08X", static_cast<unsigned int>(result));
  return text;
}

std::string contentOf(const CQSRegValue::e_data_struct& data) {
  const auto* bytes = static_cast<const char*>(data.pData);
  const std::string label[] = {"none:", "text:", "expandable:", "list:", "number:", "bytes:"};
  std::string content;
  switch (data.type) {
    case CQSRegValue::DATA_NONE:
      content = std::to_string(data.size);
      break;
    case CQSRegValue::DATA_DWORD:
      content = std::to_string(data.dwValue);
      break;
    case CQSRegValue::DATA_BINARY:
      content.assign(bytes, data.size);
      break;
    case CQSRegValue::DATA_MULTI_STRING:
      for (; *bytes != '\0'; bytes += std::strlen(bytes) + 1) {
        content += (content.empty() ? "" : "|") + std::string(bytes);
      }
      EXPECT_EQ(data.size, content.size() + kListTerminators());
      break;
    default:
      content = bytes;
      EXPECT_EQ(data.size, content.size() + kTextTerminators());
  }
  return label[data.type] + content;
}

}  // namespace LTLib::Testing
