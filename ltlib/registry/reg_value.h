/// \file
/// \brief One named value of a key: read, written and deleted.
///
/// Threads: an object belongs to one thread at a time.
///
/// Ownership: texts and buffers that a read gives out through pointers stay the object's, until
/// its next read or its end. A record that a read has filled owns its buffer.
///
/// Failure: a negative QSResult or an exception, as CQSRegKey tells. A value that is not there
/// gives 0x80004005, one that outgrew a hundred queries in a row 0x800700EA.
///
/// Units: sizes are bytes. Texts that come back are always terminated; go by the terminator, since
/// the size counts it on the operating system's backend and not on the file backend. A size to be
/// written counts terminators on both: one of a text, and of a list that of each item and one
/// more.
///
/// What a read gives is what one write left, whoever writes meanwhile.
///
/// The file backend loses some of what is written, with result 0: all bytes from the first NUL of
/// a text or of binary data; every value of a key right below a root, whose path has no backslash;
/// the type, where a value is there already and keeps its own, so that a text over a number reads
/// as the number at its front, or 0; and the form of a list's items that hold a comma, a backslash
/// or a double quote.
///
/// Reads and writes come in two forms. The one without a name uses the object's own name, also
/// when that is empty. The one with a name takes a null one for the own name if that is not empty,
/// and else for the key's default value.
#ifndef LTLIB_REGISTRY_REG_VALUE_H
#define LTLIB_REGISTRY_REG_VALUE_H

#include <cstdint>
#include <string>

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/registry/reg_key.h"

class LTLIB_EXPORT CQSRegValue {
 public:
  /// What a record holds.
  enum e_data_type : std::int32_t {
    DATA_NONE = 0,
    DATA_STRING = 1,         // pData, a text
    DATA_EXPAND_STRING = 2,  // pData, a text with references of the operating system's own
    DATA_MULTI_STRING = 3,   // pData, items that end in NUL, and one NUL more
    DATA_DWORD = 4,          // dwValue
    DATA_BINARY = 5,         // pData, `size` bytes
  };

  /// A value with its type. Owns pData, which comes from operator new, once a read has filled it.
  /// One that a caller fills for Write must get its type back to DATA_NONE before it ends, unless
  /// its buffer comes from operator new too.
  struct LTLIB_EXPORT e_data_struct {
    e_data_type type = DATA_NONE;
    std::uint32_t size = 0;  // as the backend reported it
    union {
      std::uint32_t dwValue;
      void* pData = nullptr;
    };

    e_data_struct() = default;
    ~e_data_struct() { Clear(); }
    e_data_struct(const e_data_struct&) = delete;
    e_data_struct& operator=(const e_data_struct&) = delete;

    /// Frees what the record owns and makes it DATA_NONE.
    void Clear();
  };

  CQSRegValue() = default;

  /// The result of setting the key is dropped. A null `valueName` leaves the name empty.
  CQSRegValue(enumRegRoot root, const char* keyPath, const char* valueName);
  CQSRegValue(const CQSRegKey& key, const char* valueName);

  /// The result of CQSRegKey::SetKey.
  QSResult SetKey(const CQSRegKey& key);
  QSResult SetKey(enumRegRoot root, const char* keyPath);

  /// Sets the own name. 0, or 0x8004102E for null, which changes nothing.
  QSResult SetName(const char* valueName);
  const char* GetName() const { return m_name.c_str(); }
  const char* GetPath() const { return m_key.GetPath(); }

  /// Copies the key as it stands. Always 0.
  QSResult GetKey(CQSRegKey& out) const;

  /// Reads a value of any type into `out`, which is cleared first and owns the buffer afterwards.
  /// A type that no record holds gives 0 and DATA_NONE. A number of 64 bits that needs more than
  /// 32, or a number that is stored in another size, gives 0x8007000D.
  QSResult Read(const char* valueName, e_data_struct& out);
  QSResult Read(e_data_struct& out);

  /// Reads a number; 0x80004005 for another type, and `out` then means nothing.
  QSResult Read(const char* valueName, unsigned long& out);
  QSResult Read(unsigned long& out);

  /// Reads a plain text; 0x80004005 for another type, with `out` set to its buffer, null for a
  /// number.
  QSResult Read(const char* valueName, char*& out);
  QSResult Read(char*& out);

  /// Reads bytes; 0x80004005 for another type, with `out` and `size` set as above. A type that no
  /// record holds gives 0, a null `out` and the size that the backend reported.
  QSResult Read(const char* valueName, void*& out, unsigned long& size);
  QSResult Read(void*& out, unsigned long& size);

  /// Writes a record, making the key if it cannot be opened. Takes no ownership. DATA_NONE, and a
  /// type that is none of the others, give 0x80004005.
  QSResult Write(const char* valueName, const e_data_struct& in);
  QSResult Write(const e_data_struct& in);

  /// Writes the low 32 bits as a number. Characters and a length go here too, so that the first
  /// name the value and the second is the number: bytes are written by a `const void*`.
  QSResult Write(const char* valueName, const unsigned long& in);
  QSResult Write(const unsigned long& in);

  /// Writes a text; a null one counts as empty.
  QSResult Write(const char* valueName, const char* in);
  QSResult Write(const char* in);

  /// Writes bytes; 4 GiB and more give 0x80004005.
  QSResult Write(const char* valueName, const void* in, unsigned long size);
  QSResult Write(const void* in, unsigned long size);

  /// Deletes the value. A null name counts as in the forms with a name.
  QSResult Delete(const char* valueName);

 private:
  const char* resolved(const char* valueName) const;
  QSResult readData(const char* name, e_data_struct& out);
  QSResult readNumber(const char* name, unsigned long& out);
  QSResult readText(const char* name, char*& out);
  QSResult readBytes(const char* name, void*& out, unsigned long& size);
  QSResult writeData(const char* name, const e_data_struct& in);
  QSResult writeBuffer(const char* name, e_data_type type, const void* bytes, std::size_t size);
  QSResult writeNumber(const char* name, unsigned long in);
  QSResult writeText(const char* name, const char* in);

  e_data_struct m_data;  // what the last read without a record of the caller's brought
  std::string m_name;
  CQSRegKey m_key;
};

#endif  // LTLIB_REGISTRY_REG_VALUE_H
