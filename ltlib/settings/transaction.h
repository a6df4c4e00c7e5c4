/// \file
/// \brief Changes to a root that come together or not at all, and lose nothing of what other
/// processes save.
///
///   LTLib::Transaction change(LTLib::Root::kLocalMachine);
///   key.set("Runs", key.get("Runs", 0) + 1);
///   change.commit();
///
/// A process reads a root once, and a save replaces the whole file: of two programs that both save, the
/// later one undoes what the earlier one did. A transaction keeps the others out, reads the root anew,
/// and saves it once.
///
/// Threads: a transaction belongs to the thread that made it. While it lives the other threads of the
/// process wait in the registry, and other processes with their loads and saves: it is to be short.
///
/// Failure: SettingsError, and in the forms with a code that. Without a commit that went well the root
/// is as it was: what its file holds.
///
/// It is for files. On the operating system's registry each change is durable at once and none can be
/// taken back: making one fails there, with kNotAvailable.
#ifndef LTLIB_SETTINGS_TRANSACTION_H
#define LTLIB_SETTINGS_TRANSACTION_H

#include <optional>
#include <string>
#include <system_error>

#include "ltlib/fileregistry/store/store_failure.h"
#include "ltlib/fileregistry/store/store_guard.h"
#include "ltlib/fileregistry/store/store_reload.h"
#include "ltlib/settings/key.h"

namespace LTLib {

namespace detail {

/// A failure whose reason the store has noted, unless an exception had words of its own.
inline void explain(Failure& failure) {
  if (failure.result == kFailure && failure.words.empty()) {
    failure.words = lastStoreFailure();
  }
}

/// Waits for a store's lock. One that its last owner died with is told of once, and taken at the next
/// try: what that one left is a whole file all the same. There are two such locks.
inline void holdStore(const std::string& file, std::optional<StoreGuard>& guard) {
  for (int abandoned = 0; !guard; ++abandoned) {
    try {
      guard.emplace(file);
    } catch (const QSException&) {
      if (abandoned == 2) {
        throw;
      }
    }
  }
}

inline void reloadRoot(Root root, std::error_code* code) {
  Failure failure;
  attempt(failure, [root] { return reloadStore(static_cast<enumRegRoot>(root)); });
  explain(failure);
  report(failure, "reading a root anew", code);
}

}  // namespace detail

/// Lets this process see what others have saved to a root since it was read. Fails with kUnsaved where
/// this process has changes of its own that are not saved, and with kStoreFailure where the file cannot
/// be read; nothing changes then. Nothing happens on the operating system's registry.
inline void reload(Root root) {
  detail::reloadRoot(root, nullptr);
}
inline void reload(Root root, std::error_code& code) {
  detail::reloadRoot(root, &code);
}

/// From its making to its end nobody else reads or saves the root's file, nor the other stores in its
/// folder.
class Transaction {
 public:
  /// Waits for its turn without limit. Fails as `reload` does, and with kStoreFailure where the lock
  /// cannot be had; nothing is held then.
  explicit Transaction(Root root) : Transaction(root, nullptr) {}
  Transaction(Root root, std::error_code& code) : Transaction(root, &code) {}

  /// Takes the changes back, unless they were committed.
  ~Transaction() { rollBack(); }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  /// Saves the root and lets the others in. A failure takes the changes back, and ends the transaction
  /// too. Fails where the transaction has ended.
  void commit() { save(nullptr); }
  void commit(std::error_code& code) { save(&code); }

 private:
  Transaction(Root root, std::error_code* code) : m_root(static_cast<enumRegRoot>(root)) {
    detail::Failure failure;
    detail::attempt(failure, [&] {
      const std::string file = GetConfigurationPathname(m_root);
      if (file.empty()) {
        return kNotAvailable;
      }
      detail::holdStore(file, m_guard);
      return reloadStore(m_root);
    });
    if (failure) {
      detail::explain(failure);
      m_guard.reset();
    }
    detail::report(failure, "a transaction cannot begin", code);
  }

  void rollBack() noexcept {
    if (m_guard) {
      try {
        (void)reloadStore(m_root, UnsavedChanges::kAreDropped);
      } catch (...) {
        // The next touch of the root reads the file.
      }
      m_guard.reset();
    }
  }

  void save(std::error_code* code) {
    detail::Failure failure;
    if (!m_guard) {
      failure = {kFailure, "it has ended"};
    } else {
      failure.result = static_cast<QSResult>(SaveConfiguration(m_root));
      detail::explain(failure);
    }
    if (failure) {
      rollBack();
    }
    m_guard.reset();
    detail::report(failure, "a transaction cannot be committed", code);
  }

  enumRegRoot m_root;
  std::optional<StoreGuard> m_guard;
};

}  // namespace LTLib

#endif  // LTLIB_SETTINGS_TRANSACTION_H
