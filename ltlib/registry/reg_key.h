/// \file
/// \brief A key by name: a root and a path below it.
///
/// Threads: an object belongs to one thread at a time. Two objects may name one key.
///
/// Ownership: the object copies its path. It holds no key open: each operation opens the key, does
/// its work and closes it again.
///
/// Failure: a negative QSResult: 0x80004005, or the backend's number: a positive one gives its low
/// 16 bits or'ed with 0x80070000, -1 passes unchanged. Once the library has ended every operation
/// gives 0x80004005. The first expansion of a process, which a constructor may bring about, and
/// the first touch of a root read a store; what that throws passes through, with nothing left
/// open: QSException, or std::length_error where the store's folder is missing or cannot be
/// written.
///
/// References to variables in a path, each a name between percent signs, are replaced when the path
/// is set, and again at each copy. Where that fails, root and path are set all the same, with the
/// replacements made so far; only SetKey tells.
#ifndef LTLIB_REGISTRY_REG_KEY_H
#define LTLIB_REGISTRY_REG_KEY_H

#include <string>

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/registry/registry_manager.h"

class LTLIB_EXPORT CQSRegKey {
 public:
  /// No root, an empty path.
  CQSRegKey() = default;

  /// A null `path` leaves the object as the default constructor does, without the root.
  CQSRegKey(enumRegRoot root, const char* path);

  /// As SetKey with the same arguments, whose result is dropped.
  CQSRegKey(const CQSRegKey& parent, const char* subKey);

  CQSRegKey(const CQSRegKey& other);
  CQSRegKey& operator=(const CQSRegKey& other);
  ~CQSRegKey();

  /// Names the key `path` below `root`. A null `path` gives 0x80004005 and changes nothing.
  QSResult SetKey(enumRegRoot root, const char* path);

  /// Names the key whose path is the parent's, one backslash and `subKey`. A null `subKey` gives
  /// 0x80004005 and changes nothing. The parent may be this object.
  QSResult SetKey(const CQSRegKey& parent, const char* subKey);

  /// The path as it was expanded; valid until the object changes.
  const char* GetPath() const { return m_path.c_str(); }
  enumRegRoot GetRootKEY() const { return m_root; }

  /// Deletes the key with its values. A key with sub-keys is refused by the backend, unless
  /// `recursive` deletes them first, the deepest ahead; the first that cannot be deleted ends the
  /// operation and its result is returned. The name of a sub-key is expanded with the path; where
  /// the path is no longer then, and so leads out of the key, the result is 0x80004005. On the file
  /// backend a key right below a root cannot be listed, and so is refused while it has sub-keys.
  QSResult DeleteKey(bool recursive);

  /// Whether the key can be opened: on the operating system's backend whether it exists, on the
  /// file backend whether it has a root.
  bool IsCreated();

 private:
  friend class CQSRegValue;
  friend class CQSRegEnumKey;
  friend class CQSRegEnumValue;

  // Closes the key on every way out of an operation, exceptions of a store's load included.
  class Closing {
   public:
    explicit Closing(CQSRegKey& key) : m_key(key) {}
    ~Closing() { (void)m_key.CloseKey(); }
    Closing(const Closing&) = delete;
    Closing& operator=(const Closing&) = delete;

   private:
    CQSRegKey& m_key;
  };

  QSResult OpenKey(void** out, bool forWriting);
  QSResult CreateKey(void** out);
  QSResult CloseKey();
  QSResult deleteItself();
  QSResult deleteBranch();

  // A step of a walk, for both enumerators: asks for the name at `index` and moves on.
  using FetchName = int (*)(QSRegistryManager& manager, void* key, unsigned int index, char* name,
                            unsigned int* nameSize);
  QSResult nextName(std::string& name, unsigned int& index, FetchName fetch);

  std::string m_path;
  void* m_handle = nullptr;  // open while an operation runs
  enumRegRoot m_root = REG_ROOT_NONE;
};

#endif  // LTLIB_REGISTRY_REG_KEY_H
