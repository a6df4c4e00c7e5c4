// A place in the registry of the test's own, on whichever backend serves.
#ifndef LTLIB_TESTS_REGISTRY_REGISTRY_FIXTURE_H
#define LTLIB_TESTS_REGISTRY_REGISTRY_FIXTURE_H

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/registry/backend_facts.h"
#include "tests/support/open_key.h"
#include "tests/support/temp_folder.h"

namespace LTLib::Testing {

inline constexpr enumRegRoot kUser = REG_ROOT_CURRENT_USER;

using Names = std::vector<std::string>;

/// The folder of this test program's store files, which the first call makes the roots' own.
[[nodiscard]] const TempFolder& stores();

/// Tests below a private key of HKEY_CURRENT_USER, which is deleted afterwards.
class RegistryObjects : public testing::Test {
 protected:
  RegistryObjects();
  ~RegistryObjects() override;

  /// A path below the private key.
  [[nodiscard]] std::string path(const std::string& below) const;
  [[nodiscard]] CQSRegKey key(const std::string& below) const;
  [[nodiscard]] CQSRegValue value(const std::string& below, const char* name) const;

  /// Writes a number, so that the key is there.
  void make(const std::string& below) const;

  /// A handle of the key, which has to be there.
  [[nodiscard]] OpenKey open(const std::string& below) const;

  /// Makes a key past the objects, which would expand its name.
  void makeRaw(const std::string& below);

  QSRegistryManager& m_manager = *QSRegistryManager::GetInstance();
  void* const m_root = predefinedRootHandle(kUser);

 private:
  std::string m_base;
};

/// The names of a walk to its end, whose result has to be that of the backend; sorted where the
/// system has an order of its own.
template <class Walk>
Names namesOf(Walk&& walk) {
  Names names;
  std::string name;
  QSResult result = walk.GetFirst(name);
  for (; result >= 0; result = walk.GetNext(name)) {
    names.push_back(name);
  }
  EXPECT_EQ(result, kEndOfWalk());
  if (!filesServe()) {
    std::sort(names.begin(), names.end());
  }
  return names;
}

/// What is in a record, without the terminators that the backend counts: "text:x", "number:5",
/// "list:a|b", or the size of what no record holds: "none:3".
[[nodiscard]] std::string contentOf(const CQSRegValue::e_data_struct& data);

/// A negative result as eight digits.
[[nodiscard]] std::string codeOf(QSResult result);

/// What every form of Read makes of a value, with a name or without: as contentOf, or the code.
template <class... Name>
std::string contentOf(CQSRegValue& value, Name... name) {
  CQSRegValue::e_data_struct data;
  const QSResult result = value.Read(name..., data);
  const auto only = [&](bool fits) { return result < 0 ? result : fits ? 0 : kFailure; };
  unsigned long number = 7;
  char* text = nullptr;
  void* bytes = &data;
  unsigned long size = 7;
  EXPECT_EQ(value.Read(name..., number), only(data.type == CQSRegValue::DATA_DWORD));
  EXPECT_EQ(value.Read(name..., text), only(data.type == CQSRegValue::DATA_STRING));
  EXPECT_EQ(value.Read(name..., bytes, size),
            only(data.type == CQSRegValue::DATA_BINARY || data.type == CQSRegValue::DATA_NONE));
  if (result < 0) {
    EXPECT_TRUE(number == 7 && text == nullptr && bytes == &data && size == 7) << "left alone";
    return codeOf(result);
  }
  const bool isBuffer = data.type != CQSRegValue::DATA_DWORD && data.type != CQSRegValue::DATA_NONE;
  EXPECT_EQ(text != nullptr, isBuffer) << "a number is no pointer";
  EXPECT_EQ(bytes != nullptr, isBuffer);
  EXPECT_EQ(size, data.size) << "as the backend reported it";
  EXPECT_EQ(data.type == CQSRegValue::DATA_DWORD ? number : data.dwValue, data.dwValue);
  return contentOf(data);
}

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_REGISTRY_REGISTRY_FIXTURE_H
