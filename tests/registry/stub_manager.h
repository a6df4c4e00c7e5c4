// A registry manager that answers what it is told to, and notes what it was asked.
#ifndef LTLIB_TESTS_REGISTRY_STUB_MANAGER_H
#define LTLIB_TESTS_REGISTRY_STUB_MANAGER_H

#include <map>
#include <string>
#include <vector>

#include "ltlib/registry/registry_manager.h"

namespace LTLib::Testing {

class StubManager : public QSRegistryManagerImpl {
 public:
  // The results of the calls, as numbers.
  int m_open = 0;
  int m_create = 0;
  int m_sizeQuery = 0;
  int m_fetch = 0;
  int m_set = 0;
  int m_enum = 0;
  bool m_throws = false;  // from queries and walks

  // The one value that is there.
  unsigned int m_type = REG_SZ;
  unsigned int m_size = 0;
  std::string m_bytes;

  // The one name of a walk, and the sub-keys of each path.
  std::string m_name;
  std::map<std::string, std::vector<std::string>> m_subKeys;
  std::string m_undeletable;

  /// What was asked, in the words of the calls, and nothing of that from then on.
  std::vector<std::string> asked();

  int regCloseKey(void* key) override;
  int regOpenKeyEx(void* key, const char* subKey, unsigned int options, int samDesired,
                   void** result) override;
  int regQueryValueEx(void* key, char* valueName, unsigned int* type, unsigned char* data,
                      unsigned int* dataSize) override;
  int regCreateKey(void* key, const char* subKey, void** result) override;
  int regCreateKeyEx(void* key, const char* subKey, char* keyClass, unsigned int options,
                     unsigned int samDesired, void** result, unsigned int* disposition) override;
  int regSetValueEx(void* key, const char* valueName, unsigned int type, const unsigned char* data,
                    unsigned int dataSize) override;
  int regEnumKeyEx(void* key, unsigned int index, char* name, unsigned int* nameSize) override;
  int regEnumKey(void* key, unsigned int index, char* name, unsigned int nameSize) override;
  int regEnumValue(void* key, unsigned int index, char* name, unsigned int* nameSize,
                   unsigned int* reserved, unsigned int* type, unsigned char* data,
                   unsigned int* dataSize) override;
  int regDeleteKey(void* key, const char* subKey) override;
  int regDeleteValue(void* key, const char* valueName) override;
  long saveConfiguration(enumRegRoot root) override;
  long saveConfiguration(enumRegRoot root, std::string& pathname) override;
  std::string GetConfigurationPathname(enumRegRoot root) override;

 private:
  void note(std::string words) { m_asked.push_back(std::move(words)); }
  void throwIfToldTo() const;

  std::vector<std::string> m_asked;
};

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_REGISTRY_STUB_MANAGER_H
