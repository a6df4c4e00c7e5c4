// One root of the registry, opened for one command.
#ifndef LTREG_REGISTRY_SESSION_H
#define LTREG_REGISTRY_SESSION_H

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ltlib/ltlib.h"
#include "ltreg/cli/request.h"
#include "ltreg/registry/backend.h"
#include "ltreg/registry/key_argument.h"
#include "ltreg/registry/key_handle.h"
#include "ltreg/registry/rehearsal.h"
#include "ltreg/registry/store_access.h"
#include "ltreg/registry/value.h"

namespace ltreg {

/// A root's store as a command has opened it, for one session or for several.
struct OpenedStore {
  std::string pathname;  // empty unless the root lies in a store file
  GuardedStore file;
  std::string stamp;  // of the file when it was read
  bool changed = false;
  /// The sub-keys of keys that were asked for on files, by folded path: to list a key anew for each
  /// one of many would take a time that grows with their square.
  std::unordered_map<std::string, std::unordered_set<std::string>> children;
};

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
  [[nodiscard]] std::vector<std::string> valueNames(const std::string& path);

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
  /// reach. Throws Failure if that is impossible, if the store changed on disk since it was read, and
  /// if lines of the store would get lost, unless the request has them kept beside it; the store file
  /// is then as it was. With --dry-run nothing is saved.
  void save();

  /// The changes so far; none unless the request has --dry-run, with which they reach no registry.
  [[nodiscard]] Rehearsal* rehearsal() { return m_rehearsal ? &*m_rehearsal : nullptr; }

  /// Writes the root as it is now to another store file. Requires: it lies in one.
  void saveTo(const std::string& pathname) const;

  /// What the check of the store file has found.
  [[nodiscard]] const LTLib::StoreReport& report() const { return m_store->file.report; }

  /// Ends a command for a key or value that is not there, with a hint at the message's end.
  [[noreturn]] void throwAbsent(const std::string& what, const std::string& hint = {}) const;

 private:
  void join(KeyArgument& key, bool hasReferences);
  void open(Access access, bool quiet);
  void demandNothingLost() const;
  void complainOfWarnings() const;
  void noteNewKey(const std::string& path);
  void noteTopKey(const std::string& path);
  void forgetKey(const std::string& path);
  void complainOfKey(const std::string& path, int failure);
  [[nodiscard]] int noteChange(int result);
  void rehearseKey(const std::string& path, bool isThere);
  [[nodiscard]] KeyHandle keyAt(const std::string& path, KeyUse use = KeyUse::kRead) const;

  Backend m_backend;
  enumRegRoot m_root;
  bool m_force;
  std::shared_ptr<OpenedStore> m_store;
  std::optional<Rehearsal> m_rehearsal;
  bool m_sawAll = true;
  std::string m_unreadable;  // the last key that was complained of
};

/// While it lives, all sessions of the process work on the one root that the first of them opens, for
/// writing, and what they save is saved once, at the end. Those of another root throw Failure, and so
/// do all where roots lie in no files, since changes cannot be held back there.
class SharedSession {
 public:
  /// `hasReferences` tells whether any key may have some. The request must outlive the object.
  SharedSession(const Request& request, bool hasReferences);
  ~SharedSession();
  SharedSession(const SharedSession&) = delete;
  SharedSession& operator=(const SharedSession&) = delete;

  /// Saves what was changed, if anything was. Throws as Session::save does.
  void save();

 private:
  friend class Session;

  const Request& m_request;
  bool m_hasReferences;
  std::unique_ptr<Session> m_first;
};

}  // namespace ltreg

#endif  // LTREG_REGISTRY_SESSION_H
