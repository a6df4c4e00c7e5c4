// One root of the registry, opened for one command.
#ifndef LTREG_REGISTRY_SESSION_H
#define LTREG_REGISTRY_SESSION_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ltlib/ltlib.h"
#include "ltreg/cli/request.h"
#include "ltreg/registry/backend.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/key_handle.h"
#include "ltreg/registry/known_keys.h"
#include "ltreg/registry/rehearsal.h"
#include "ltreg/registry/value.h"

namespace ltreg {

enum class Access { kRead, kWrite };

class Session {
 public:
  /// Checks the store file of the key's root, complains about its warnings and loads it, and
  /// expands the references of `key.path`. Throws Failure if the store does not load, so that it is
  /// never overwritten, or if a reference does not expand. For writing, other processes stay away
  /// from the store to the end of the session, so that no change of theirs gets lost.
  Session(const Request& request, KeyArgument& key, Access access);

  [[nodiscard]] bool onFiles() const { return m_backend.onFiles(); }

  // These look without adding anything, and throw Failure where the registry refuses to tell.
  [[nodiscard]] bool keyExists(const std::string& path);
  [[nodiscard]] std::optional<Value> value(const std::string& path, const std::string& name);

  // These give what can be read of a key, and complain of what cannot, and of values whose name
  // stands there already. On files an absent key has
  // no sub-keys and no values. Requires of the operating system's registry: the key is there.
  [[nodiscard]] std::vector<std::string> subKeys(const std::string& path);
  [[nodiscard]] std::vector<NamedValue> values(const std::string& path);

  /// Whether nothing was complained of in that way.
  [[nodiscard]] bool sawAll() const { return m_sawAll; }

  /// Makes a key that may hold no value, where that is possible; on files a key comes with its first
  /// value. Throws Failure where the registry refuses.
  void makeKey(const std::string& path);

  // These give the manager's numbers: 0 is done.
  [[nodiscard]] int setValue(const std::string& path, const std::string& name, unsigned int type,
                             const std::string& bytes);
  [[nodiscard]] int deleteValue(const std::string& path, const std::string& name);
  [[nodiscard]] int deleteKey(const std::string& path);

  /// Saves if anything was changed: a save of the same text would put the version before out of
  /// reach. Throws Failure if that is impossible; the store file is then as it was. With --dry-run
  /// nothing is saved.
  void save();

  /// The changes so far; none unless the request has --dry-run, with which they reach no registry.
  [[nodiscard]] Rehearsal* rehearsal() { return m_rehearsal ? &*m_rehearsal : nullptr; }

  /// Writes the root as it is now to another store file. Requires: it lies in one.
  void saveTo(const std::string& pathname) const;

  /// What the check of the store file has found.
  [[nodiscard]] const LTLib::StoreReport& report() const { return m_report; }

  /// Ends a command for a key or value that is not there.
  [[noreturn]] void throwAbsent(const std::string& what) const;

 private:
  void openStore(Access access, bool quiet);
  void lockAndCheck();
  [[nodiscard]] bool lockWasAbandoned() const;
  void complainOfWarnings() const;
  void complainOfKey(const std::string& path, int failure);
  [[nodiscard]] int noteChange(int result);
  void rehearseKey(const std::string& path, bool isThere);
  [[nodiscard]] KeyHandle open(const std::string& path, KeyUse use = KeyUse::kRead) const;

  Backend m_backend;
  enumRegRoot m_root;
  std::string m_pathname;  // empty unless the root lies in a store file
  std::unique_ptr<LTLib::StoreGuard> m_guard;
  LTLib::StoreReport m_report;
  KnownKeys m_knownKeys;  // on files
  std::optional<Rehearsal> m_rehearsal;
  bool m_changed = false;
  bool m_sawAll = true;
  std::string m_unreadable;  // the last key that was complained of
};

}  // namespace ltreg

#endif  // LTREG_REGISTRY_SESSION_H
