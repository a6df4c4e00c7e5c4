// Putting a new store file in the place of the present one, and the names that this takes.
#ifndef LTLIB_FILEREGISTRY_STORE_STORE_SWAP_H
#define LTLIB_FILEREGISTRY_STORE_STORE_SWAP_H

#include <string>
#include <vector>

namespace LTLib::detail {

/// The names that a save of a store file uses, made ahead of it: from the first change of a file on
/// nothing may need memory.
struct SaveNames {
  explicit SaveNames(const std::string& pathname);

  const std::string store;
  const std::string fresh;   // the new text while it is written
  const std::string former;  // the version before, where the system cannot exchange names
  const std::string old;     // the version before, in the end
};

/// Makes the new file the store file, and the present store file its "_old" sister. At no moment is
/// the store file absent, where the system can exchange names or has second names for files. Throws
/// QSException with both as they were and without the new file, unless the system refuses to go
/// back as well: all versions then stand where the text says.
/// Requires: the directory's lock is held, and the store file exists.
void swapStore(const SaveNames& names);

/// As swapStore where there is no store file yet. An "_old" file that is there all the same goes.
void bringInFirst(const SaveNames& names);

/// Which files that a save leaves are there beside a store file's name.
[[nodiscard]] std::vector<std::string> filesLeftBeside(const std::string& pathname);

/// Gives the files that were left beside a missing store names that no save uses; gives them their
/// names back at the end of the object, unless it was told to keep them so. The new name has a
/// tilde or a digit in the place of the last letter: "_ol~" in place of "_old".
class KeptAside {
 public:
  /// Throws QSException, with all as it was, where no such name is free.
  explicit KeptAside(const std::string& pathname);
  KeptAside() = default;
  ~KeptAside();
  KeptAside(const KeptAside&) = delete;
  KeptAside& operator=(const KeptAside&) = delete;

  void keep() { m_kept.clear(); }

 private:
  struct Names {
    std::string former;
    std::string present;
  };

  void setAside(const std::string& path);

  std::vector<Names> m_kept;
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_STORE_STORE_SWAP_H
