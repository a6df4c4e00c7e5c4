/// \file
/// \brief What becomes of the values at and below a key, told in the program's own loop.
///
///   LTLib::Changes changes(key, [](const LTLib::Change& change) { ... });
///   pollfd ready[] = {{changes.handle(), POLLIN, 0}, ...};
///   while (poll(ready, ...) > 0) {
///     if (ready[0].revents != 0) changes.dispatch();
///   }
///
/// There is no thread and no timer behind it, and nothing is looked at until the system has told that
/// the root's file has changed: the handler runs within `dispatch` alone.
///
/// Threads: an object belongs to the thread that made it, and ends with it at the latest.
///
/// Ownership: what `handle` names is the object's, which nobody else reads from, sets or closes.
///
/// Failure: SettingsError, and in the forms with a code that. What was not told because of a failure
/// is told by a later `dispatch`.
#ifndef LTLIB_SETTINGS_CHANGES_H
#define LTLIB_SETTINGS_CHANGES_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "ltlib/registry/registry_watch.h"
#include "ltlib/settings/key.h"
#include "ltlib/settings/transaction.h"
#include "ltlib/settings/walk.h"

namespace LTLib {

/// A value that is no longer what it was.
struct Change {
  Key key;
  std::string name;
  std::optional<Value> before;  // none where there was none
  std::optional<Value> after;   // none where it has gone
};

/// What the system waits for: the number of a descriptor on POSIX, a HANDLE on Windows.
using WaitHandle =
    std::conditional_t<std::filesystem::path::preferred_separator == '\\', void*, int>;

namespace detail {

template <class Handle>
Handle waitHandleOf(std::intptr_t number) {
  if constexpr (std::is_pointer_v<Handle>) {
    return reinterpret_cast<Handle>(number);
  } else {
    return static_cast<Handle>(number);
  }
}

}  // namespace detail

/// Tells of each value that differs from what it was when it was told of last, or else when the object
/// was made, whoever changed it, this process included. Keys without values do not count.
class Changes {
 public:
  using Handler = std::function<void(const Change& change)>;

  /// Reads what is there as this process sees it; a dispatch right away tells what others have saved
  /// since. The key need not be there yet. Fails with kStoreFailure where the system tells of no
  /// changes, as where the folder of the root's file is missing, and on files with kNoForm for a
  /// root and a key right below one, where no values are.
  Changes(Key key, Handler handler) : Changes(std::move(key), std::move(handler), nullptr) {}
  /// After a failure the object tells nothing, and its handle is -1.
  Changes(Key key, Handler handler, std::error_code& code)
      : Changes(std::move(key), std::move(handler), &code) {}

  Changes(Changes&&) noexcept = default;
  Changes& operator=(Changes&&) noexcept = default;

  /// The same for the life of the object, and ready, a descriptor to be read from, as long as
  /// `dispatch` has something to look at. That it may be without having anything to tell.
  [[nodiscard]] WaitHandle handle() const {
    return detail::waitHandleOf<WaitHandle>(m_watch ? m_watch->handle() : -1);
  }

  /// Waits for the handle, for programs without a loop of their own. False when the time is up or a
  /// signal came.
  [[nodiscard]] bool wait(std::chrono::milliseconds limit) const {
    return m_watch && m_watch->wait(limit);
  }

  /// Reads the root anew if its file has changed, and calls the handler for each change, those of
  /// values that are there ahead of those that have gone: how many. It does not wait but for a save
  /// that is under way, or another's transaction.
  ///
  /// Fails as `reload` does: with kUnsaved where this process has changes that it has not saved. A
  /// save of these makes the handle ready again; where they have gone otherwise, dispatch again.
  ///
  /// The handler may use the registry in any way, and must neither dispatch nor end the object. What it
  /// throws passes through; changes that it was not called for are told by the next dispatch.
  std::size_t dispatch() { return tell(nullptr); }
  std::size_t dispatch(std::error_code& code) { return tell(&code); }

 private:
  struct Entry {
    Key key;
    Value value;
  };
  // By path and name.
  using Snapshot = std::map<std::pair<std::string, std::string>, Entry>;

  // Watched before it is read, so that no change falls between the two.
  Changes(Key key, Handler handler, std::error_code* code)
      : m_key(std::move(key)), m_handler(std::move(handler)) {
    detail::Failure failure;
    detail::attempt(failure, [&] {
      const QSResult result = watch();
      return result < 0 ? result : readInto(m_known);
    });
    if (failure) {
      m_watch.reset();
    }
    report(failure, code);
  }

  QSResult watch() {
    QSRegistryManager* const manager = QSRegistryManager::GetInstance();
    if (manager == nullptr) {
      return kFailure;
    }
    if (!detail::filesServe(*manager, m_key.root())) {
      m_watch = RegistryWatch::ofSystemKey(root(), m_key.path());
      return kSuccess;
    }
    m_store = GetConfigurationPathname(root());
    if (m_store.empty() || !detail::hasPlaceInFile(m_key.path())) {
      return m_store.empty() ? kNotAvailable : detail::kNoFormCode;
    }
    m_watch = RegistryWatch::ofStore(m_store);
    return kSuccess;
  }

  [[nodiscard]] enumRegRoot root() const { return static_cast<enumRegRoot>(m_key.root()); }

  void report(detail::Failure& failure, std::error_code* code) const {
    detail::explain(failure);
    detail::report(failure, "the changes of " + m_key.path() + " cannot be seen", code);
  }

  std::size_t tell(std::error_code* code) {
    Snapshot now;
    detail::Failure failure;
    detail::attempt(failure, [&] { return look(now); });
    report(failure, code);
    if (failure || !m_isBehind) {
      return 0;
    }
    const std::vector<Change> changes = differencesTo(now);
    for (const Change& change : changes) {
      note(change);
      m_handler(change);
    }
    m_isBehind = false;
    return changes.size();
  }

  // Held, the file is what it was when the system told of it, or newer, and no other thread changes
  // the root while it is read.
  QSResult look(Snapshot& now) {
    if (!m_watch) {
      return kFailure;
    }
    m_isBehind = m_watch->take() || m_isBehind;
    if (!m_isBehind) {
      return kSuccess;
    }
    std::optional<StoreGuard> guard;
    if (!m_store.empty()) {
      detail::holdStore(m_store, guard);
      if (const QSResult result = reloadStore(root()); result < 0) {
        return result;
      }
    }
    return readInto(now);
  }

  QSResult readInto(Snapshot& all) const {
    std::error_code code;
    const auto add = [&](const Key& key) {
      for (auto& [name, value] : key.values(code)) {
        all.try_emplace({key.path(), name}, Entry{key, std::move(value)});
      }
      return !code;
    };
    if (add(m_key)) {
      for (const Key& below : m_key.branch(code)) {
        if (!add(below)) {
          break;
        }
      }
    }
    return static_cast<QSResult>(code.value());
  }

  [[nodiscard]] std::vector<Change> differencesTo(const Snapshot& now) const {
    std::vector<Change> changes;
    for (const auto& [place, entry] : now) {
      const auto known = m_known.find(place);
      if (known == m_known.end()) {
        changes.push_back({entry.key, place.second, std::nullopt, entry.value});
      } else if (!(known->second.value == entry.value)) {
        changes.push_back({entry.key, place.second, known->second.value, entry.value});
      }
    }
    for (const auto& [place, entry] : m_known) {
      if (!now.contains(place)) {
        changes.push_back({entry.key, place.second, entry.value, std::nullopt});
      }
    }
    return changes;
  }

  void note(const Change& change) {
    const std::pair place(change.key.path(), change.name);
    if (change.after) {
      m_known.insert_or_assign(place, Entry{change.key, *change.after});
    } else {
      m_known.erase(place);
    }
  }

  Key m_key;
  Handler m_handler;
  std::string m_store;  // empty for the operating system's registry
  std::optional<RegistryWatch> m_watch;
  Snapshot m_known;
  bool m_isBehind = true;  // there is something to look at that was not told yet
};

}  // namespace LTLib

#endif  // LTLIB_SETTINGS_CHANGES_H
