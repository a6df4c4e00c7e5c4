// Each form of an operation finds its name and comes down to readData or writeBuffer, which open the
// key, do the one call and close the key again.
#include "ltlib/registry/reg_value.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "ltlib/registry/system_numbers.h"

using LTLib::kFailure;
using LTLib::kSuccess;
using LTLib::resultFromSystemError;
using LTLib::detail::kInvalidData;
using LTLib::detail::kNotFound;

namespace {

using DataType = CQSRegValue::e_data_type;
using Data = CQSRegValue::e_data_struct;

bool ownsBuffer(DataType type) {
  return type == CQSRegValue::DATA_STRING || type == CQSRegValue::DATA_EXPAND_STRING ||
         type == CQSRegValue::DATA_MULTI_STRING || type == CQSRegValue::DATA_BINARY;
}

// A number takes the place of a pointer, and is none.
void* bufferOf(const Data& data) {
  return ownsBuffer(data.type) ? data.pData : nullptr;
}

// The record has no type for links and the rarer numbers; they come out as none, with their size.
DataType dataTypeOf(unsigned int registryType) {
  switch (registryType) {
    case REG_SZ:
      return CQSRegValue::DATA_STRING;
    case REG_EXPAND_SZ:
      return CQSRegValue::DATA_EXPAND_STRING;
    case REG_MULTI_SZ:
      return CQSRegValue::DATA_MULTI_STRING;
    case REG_BINARY:
      return CQSRegValue::DATA_BINARY;
    case REG_DWORD:
    case REG_QWORD:
      return CQSRegValue::DATA_DWORD;
    default:
      return CQSRegValue::DATA_NONE;
  }
}

unsigned int registryTypeOf(DataType type) {
  switch (type) {
    case CQSRegValue::DATA_STRING:
      return REG_SZ;
    case CQSRegValue::DATA_EXPAND_STRING:
      return REG_EXPAND_SZ;
    case CQSRegValue::DATA_MULTI_STRING:
      return REG_MULTI_SZ;
    case CQSRegValue::DATA_DWORD:
      return REG_DWORD;
    case CQSRegValue::DATA_BINARY:
      return REG_BINARY;
    default:
      return REG_NONE;
  }
}

// A stored number of another size than its type's is none.
template <class Number>
int takeNumber(const std::string& bytes, Data& out) {
  Number number = 0;
  if (bytes.size() != sizeof number) {
    return kInvalidData;
  }
  std::memcpy(&number, bytes.data(), sizeof number);
  // The record holds 32 bits, and half of a number would be another one.
  if (number > std::numeric_limits<std::uint32_t>::max()) {
    return kInvalidData;
  }
  out.dwValue = static_cast<std::uint32_t>(number);
  return 0;
}

// The zero bytes behind it end a text, or a list, whose stored form has no end.
void takeBuffer(const std::string& bytes, Data& out) {
  constexpr std::size_t kEnd = 2;
  out.pData = ::operator new(bytes.size() + kEnd);
  auto* end = std::copy(bytes.begin(), bytes.end(), static_cast<char*>(out.pData));
  std::fill_n(end, kEnd, '\0');
}

QSResult take(const LTLib::RegistryValue& value, Data& out) {
  out.size = static_cast<std::uint32_t>(value.bytes.size());
  const DataType dataType = dataTypeOf(value.type);
  if (dataType == CQSRegValue::DATA_NONE) {
    return kSuccess;
  }
  // Type and union change together, so that the record can be cleared whatever comes.
  out.pData = nullptr;
  out.dwValue = 0;
  out.type = dataType;
  int result = 0;
  if (value.type == REG_DWORD) {
    result = takeNumber<std::uint32_t>(value.bytes, out);
  } else if (value.type == REG_QWORD) {
    result = takeNumber<std::uint64_t>(value.bytes, out);
  } else {
    takeBuffer(value.bytes, out);
  }
  return resultFromSystemError(result);
}

// A value that is there but cannot be read gives the backend's number; whether it is there, its size
// tells. The file backend has no other failure than absence.
QSResult failureOf(QSRegistryManager& manager, void* key, const char* name, int result) {
  unsigned int type = REG_NONE;
  unsigned int size = 0;
  const bool absent =
      result < 0 || result == kNotFound ||
      manager.regQueryValueEx(key, const_cast<char*>(name), &type, nullptr, &size) != 0;
  return absent ? kFailure : resultFromSystemError(result);
}

}  // namespace

void CQSRegValue::e_data_struct::Clear() {
  if (ownsBuffer(type)) {
    ::operator delete(pData);
  }
  pData = nullptr;
  type = DATA_NONE;
  size = 0;
}

CQSRegValue::CQSRegValue(enumRegRoot root, const char* keyPath, const char* valueName)
    : m_name(valueName != nullptr ? valueName : "") {
  (void)m_key.SetKey(root, keyPath);
}

CQSRegValue::CQSRegValue(const CQSRegKey& key, const char* valueName)
    : m_name(valueName != nullptr ? valueName : ""), m_key(key) {}

QSResult CQSRegValue::SetKey(const CQSRegKey& key) {
  return m_key.SetKey(key.GetRootKEY(), key.GetPath());
}

QSResult CQSRegValue::SetKey(enumRegRoot root, const char* keyPath) {
  return m_key.SetKey(root, keyPath);
}

QSResult CQSRegValue::SetName(const char* valueName) {
  if (valueName == nullptr) {
    return LTLib::kNullArgument;
  }
  // By way of a copy: the text may be a part of this very name.
  m_name = std::string(valueName);
  return kSuccess;
}

QSResult CQSRegValue::GetKey(CQSRegKey& out) const {
  out.m_path = m_key.m_path;
  out.m_root = m_key.m_root;
  return kSuccess;
}

const char* CQSRegValue::resolved(const char* valueName) const {
  return valueName != nullptr || m_name.empty() ? valueName : m_name.c_str();
}

QSResult CQSRegValue::Read(const char* valueName, e_data_struct& out) {
  return readData(resolved(valueName), out);
}

QSResult CQSRegValue::Read(e_data_struct& out) {
  return readData(m_name.c_str(), out);
}

QSResult CQSRegValue::Read(const char* valueName, unsigned long& out) {
  return readNumber(resolved(valueName), out);
}

QSResult CQSRegValue::Read(unsigned long& out) {
  return readNumber(m_name.c_str(), out);
}

QSResult CQSRegValue::Read(const char* valueName, char*& out) {
  return readText(resolved(valueName), out);
}

QSResult CQSRegValue::Read(char*& out) {
  return readText(m_name.c_str(), out);
}

QSResult CQSRegValue::Read(const char* valueName, void*& out, unsigned long& size) {
  return readBytes(resolved(valueName), out, size);
}

QSResult CQSRegValue::Read(void*& out, unsigned long& size) {
  return readBytes(m_name.c_str(), out, size);
}

QSResult CQSRegValue::readData(const char* name, e_data_struct& out) {
  // The name may be a text that the last read gave out, and so lives until this one is over.
  e_data_struct former;
  former.pData = bufferOf(out);
  former.type = former.pData != nullptr ? out.type : DATA_NONE;
  out.pData = nullptr;
  out.type = DATA_NONE;
  out.size = 0;
  void* handle = nullptr;
  if (const QSResult opened = m_key.OpenKey(&handle, false); opened < 0) {
    return opened;
  }
  const CQSRegKey::Closing closing(m_key);
  // A read takes type and bytes in one step, so that they are of one write.
  // Every instance derives from it.
  auto& manager = static_cast<QSRegistryManagerImpl&>(*QSRegistryManager::GetInstance());
  LTLib::RegistryValue value;
  const int result = manager.queryWholeValue(handle, name, value);
  return result == 0 ? take(value, out) : failureOf(manager, handle, name, result);
}

// The three that follow read into the object's own record, and so free what the last read gave out.
QSResult CQSRegValue::readNumber(const char* name, unsigned long& out) {
  if (const QSResult result = readData(name, m_data); result < 0) {
    return result;
  }
  out = m_data.dwValue;
  return m_data.type == DATA_DWORD ? kSuccess : kFailure;
}

QSResult CQSRegValue::readText(const char* name, char*& out) {
  if (const QSResult result = readData(name, m_data); result < 0) {
    return result;
  }
  out = static_cast<char*>(bufferOf(m_data));
  return m_data.type == DATA_STRING ? kSuccess : kFailure;
}

// A type that no record holds counts as bytes that are not there.
QSResult CQSRegValue::readBytes(const char* name, void*& out, unsigned long& size) {
  if (const QSResult result = readData(name, m_data); result < 0) {
    return result;
  }
  out = bufferOf(m_data);
  size = m_data.size;
  return m_data.type == DATA_BINARY || m_data.type == DATA_NONE ? kSuccess : kFailure;
}

QSResult CQSRegValue::Write(const char* valueName, const e_data_struct& in) {
  return writeData(resolved(valueName), in);
}

QSResult CQSRegValue::Write(const e_data_struct& in) {
  return writeData(m_name.c_str(), in);
}

QSResult CQSRegValue::Write(const char* valueName, const unsigned long& in) {
  return writeNumber(resolved(valueName), in);
}

QSResult CQSRegValue::Write(const unsigned long& in) {
  return writeNumber(m_name.c_str(), in);
}

QSResult CQSRegValue::Write(const char* valueName, const char* in) {
  return writeText(resolved(valueName), in);
}

QSResult CQSRegValue::Write(const char* in) {
  return writeText(m_name.c_str(), in);
}

QSResult CQSRegValue::Write(const char* valueName, const void* in, unsigned long size) {
  return writeBuffer(resolved(valueName), DATA_BINARY, in, size);
}

QSResult CQSRegValue::Write(const void* in, unsigned long size) {
  return writeBuffer(m_name.c_str(), DATA_BINARY, in, size);
}

QSResult CQSRegValue::writeData(const char* name, const e_data_struct& in) {
  return in.type == DATA_DWORD ? writeNumber(name, in.dwValue)
                               : writeBuffer(name, in.type, in.pData, in.size);
}

QSResult CQSRegValue::writeNumber(const char* name, unsigned long in) {
  const auto number = static_cast<std::uint32_t>(in);
  return writeBuffer(name, DATA_DWORD, &number, sizeof number);
}

QSResult CQSRegValue::writeText(const char* name, const char* in) {
  const char* text = in != nullptr ? in : "";
  return writeBuffer(name, DATA_STRING, text, std::strlen(text) + 1);
}

QSResult CQSRegValue::writeBuffer(const char* name, e_data_type type, const void* bytes,
                                  std::size_t size) {
  // Ahead of the opening, which may make the key.
  if (type == DATA_NONE || size > std::numeric_limits<std::uint32_t>::max()) {
    return kFailure;
  }
  void* handle = nullptr;
  // Opened first and made only where that fails: making a key writes its default value anew.
  if (m_key.OpenKey(&handle, true) < 0) {
    if (const QSResult created = m_key.CreateKey(&handle); created < 0) {
      return created;
    }
  }
  const CQSRegKey::Closing closing(m_key);
  // A number that is no type at all is refused here, when the key is there, and not as DATA_NONE is.
  const unsigned int registryType = registryTypeOf(type);
  if (registryType == REG_NONE) {
    return kFailure;
  }
  return resultFromSystemError(QSRegistryManager::GetInstance()->regSetValueEx(
      handle, name, registryType, static_cast<const unsigned char*>(bytes),
      static_cast<unsigned int>(size)));
}

QSResult CQSRegValue::Delete(const char* valueName) {
  QSRegistryManager* manager = QSRegistryManager::GetInstance();
  if (manager == nullptr) {
    return kFailure;
  }
  void* handle = nullptr;
  // A key that cannot be opened shows as the backend's answer to a null handle.
  (void)m_key.OpenKey(&handle, true);
  const CQSRegKey::Closing closing(m_key);
  return resultFromSystemError(manager->regDeleteValue(handle, resolved(valueName)));
}
