/// \file
/// \brief Walks over the sub-keys and the values of a key, by index.
///
/// Threads: an object belongs to one thread at a time.
///
/// Ownership: an object keeps a key's name and an index, and nothing open between the steps, so
/// that it can outlive any change to the key.
///
/// Failure: a negative QSResult; the walk stays where it was, and so does the argument. The end of
/// a walk is such a result too: 0x80070103 on the operating system's backend, -1 on the file
/// backend. What a first touch of a root throws passes through, as CQSRegKey tells. A name of 200
/// bytes or more gives 0x800700EA on both.
///
/// Nothing guards a walk against changes: an entry deleted behind it moves the later ones down,
/// and one of them is passed over. On the file backend entries come in the order of arrival.
#ifndef LTLIB_REGISTRY_REG_ENUM_H
#define LTLIB_REGISTRY_REG_ENUM_H

#include <string>

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/registry/reg_key.h"
#include "ltlib/registry/reg_value.h"

class LTLIB_EXPORT CQSRegEnumKey {
 public:
  explicit CQSRegEnumKey(const CQSRegKey& key) : m_key(key) {}

  /// The result of setting the key is dropped.
  CQSRegEnumKey(enumRegRoot root, const char* path);
  virtual ~CQSRegEnumKey() = default;

  /// Gives the name of the next sub-key and moves on.
  virtual QSResult GetNext(std::string& name);

  /// As above, and names in `entry` the key of the walked path, a backslash and that name. The
  /// name is expanded with the path, so that one with percent signs may change.
  virtual QSResult GetNext(CQSRegKey& entry);

  /// Starts over and gives the first sub-key.
  virtual QSResult GetFirst(std::string& name);
  virtual QSResult GetFirst(CQSRegKey& entry);

 private:
  friend class CQSRegKey;  // deletes a branch by one walk, which it leads up and down

  CQSRegKey m_key;
  unsigned int m_index = 0;
};

class LTLIB_EXPORT CQSRegEnumValue {
 public:
  explicit CQSRegEnumValue(const CQSRegKey& key) : m_key(key) {}

  /// The result of setting the key is dropped.
  CQSRegEnumValue(enumRegRoot root, const char* path);
  virtual ~CQSRegEnumValue() = default;

  /// Gives the name of the next value and moves on.
  virtual QSResult GetNext(std::string& name);

  /// As above, and sets key and name of `entry`; what it has read stays.
  virtual QSResult GetNext(CQSRegValue& entry);

  /// Starts over and gives the first value.
  virtual QSResult GetFirst(std::string& name);
  virtual QSResult GetFirst(CQSRegValue& entry);

 private:
  CQSRegKey m_key;
  unsigned int m_index = 0;
};

#endif  // LTLIB_REGISTRY_REG_ENUM_H
