/// \file
/// \brief Ranges over the values of a key, its sub-keys, and all keys below it.
///
///   for (auto& [name, value] : key.values()) ...
///   for (const LTLib::Key& sub : key.subkeys()) ...
///
/// Each step asks the store anew, so that a range is read once from its front; `begin` starts over.
/// Names are of any length, and come as they stand: nothing in them is replaced.
///
/// What may change meanwhile: the entry that was given last may be erased, and so may any before it,
/// without one being given twice or left out. What is added behind comes along, on files; the
/// system has an order of its own. Where the entry given last and others before it go together, some
/// behind them may be left out.
///
/// Threads and failure: as Key.
#ifndef LTLIB_SETTINGS_WALK_H
#define LTLIB_SETTINGS_WALK_H

#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "ltlib/settings/key.h"

namespace LTLib {

/// An entry of ValueView.
struct NamedValue {
  std::string name;
  Value value;
};

namespace detail {

using FetchName = int (*)(QSRegistryManager& manager, void* key, unsigned int index, char* name,
                          unsigned int* size);

/// The names of a key's values or sub-keys, one after the other.
class NameWalk {
 public:
  NameWalk(Key key, FetchName fetch) : m_key(std::move(key)), m_fetch(fetch) {}

  [[nodiscard]] const Key& key() const { return m_key; }
  [[nodiscard]] const std::string& name() const { return m_name; }
  void restart() { m_started = false; }

  /// Goes to the next name: 0, kAbsentCode at the end, or a failure.
  QSResult next() {
    if (!m_started) {
      m_started = true;
      m_index = 0;
      return nameOf(0, m_name);
    }
    std::string found;
    const QSResult result = stepOver(found);
    if (result == kSuccess) {
      m_name = std::move(found);
    }
    return result;
  }

 private:
  QSResult nameOf(unsigned int index, std::string& name) const {
    return nameAt(m_key.root(), m_key.path(), index, name, m_fetch);
  }

  // The last name is sought where it stood, and then ahead of that, where it is once others have gone.
  // If it is nowhere, the place where it stood has the one behind it.
  QSResult stepOver(std::string& found) {
    for (unsigned int index = m_index + 1; index-- > 0;) {
      const QSResult result = nameOf(index, found);
      if (result < 0 && result != kAbsentCode) {
        return result;
      }
      if (result == kSuccess && found == m_name) {
        m_index = index + 1;
        return nameOf(m_index, found);
      }
    }
    return nameOf(m_index, found);
  }

  Key m_key;
  FetchName m_fetch;
  std::string m_name;
  unsigned int m_index = 0;
  bool m_started = false;
};

/// What the ranges share: `Derived::step` goes to the next item and leaves it in m_item.
template <class Derived, class Item>
class WalkView {
 public:
  class iterator {
   public:
    using iterator_concept = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = Item;

    explicit iterator(WalkView& view) : m_view(&view) {}
    Item& operator*() const { return *m_view->m_item; }
    Item* operator->() const { return &*m_view->m_item; }
    iterator& operator++() {
      m_view->advance();
      return *this;
    }
    void operator++(int) { ++*this; }
    bool operator==(std::default_sentinel_t /*end*/) const { return !m_view->m_item; }

   private:
    WalkView* m_view;
  };

  [[nodiscard]] iterator begin() {
    static_cast<Derived&>(*this).restart();
    advance();
    return iterator(*this);
  }
  [[nodiscard]] static std::default_sentinel_t end() { return std::default_sentinel; }

 protected:
  explicit WalkView(std::error_code* code) : m_code(code) {}
  std::optional<Item> m_item;  // none at the end

 private:
  void advance() {
    auto& derived = static_cast<Derived&>(*this);
    Failure failure;
    attempt(failure, [&] { return derived.step(); });
    if (failure) {
      m_item.reset();
    }
    report(failure.result == kAbsentCode ? Failure() : failure, derived.top().path(), m_code);
  }

  std::error_code* m_code;
};

}  // namespace detail

/// The values of a key, each as it stands when its turn comes.
class ValueView : public detail::WalkView<ValueView, NamedValue> {
 public:
  explicit ValueView(const Key& key, std::error_code* code = nullptr)
      : WalkView(code), m_walk(key, detail::fetchValueName) {}

 private:
  friend WalkView;
  [[nodiscard]] const Key& top() const { return m_walk.key(); }
  void restart() { m_walk.restart(); }

  // A value that goes between its name and its reading is passed over.
  QSResult step() {
    RegistryValue value;
    QSResult result = kSuccess;
    do {
      if (result = m_walk.next(); result < 0) {
        return result;
      }
      result = detail::readStored(top().root(), top().path(), m_walk.name().c_str(), value);
    } while (result == detail::kAbsentCode);
    m_item = NamedValue{m_walk.name(), Value(std::move(value))};
    return result;
  }

  detail::NameWalk m_walk;
};

/// The sub-keys of a key.
class SubkeyView : public detail::WalkView<SubkeyView, const Key> {
 public:
  explicit SubkeyView(const Key& key, std::error_code* code = nullptr)
      : WalkView(code), m_walk(key, detail::fetchKeyName) {}

 private:
  friend WalkView;
  [[nodiscard]] const Key& top() const { return m_walk.key(); }
  void restart() { m_walk.restart(); }
  QSResult step() {
    const QSResult result = m_walk.next();
    if (result == kSuccess) {
      m_item.emplace(top().child(m_walk.name()));
    }
    return result;
  }

  detail::NameWalk m_walk;
};

/// All keys below a key, each ahead of those below it. Erasing the key given last leads on to the one
/// behind it.
class BranchView : public detail::WalkView<BranchView, const Key> {
 public:
  explicit BranchView(Key key, std::error_code* code = nullptr)
      : WalkView(code), m_top(std::move(key)) {}

  /// How deep the key given last lies below the top: 1 for a child.
  [[nodiscard]] std::size_t depth() const { return m_levels.size(); }

 private:
  friend WalkView;
  [[nodiscard]] const Key& top() const { return m_top; }
  void restart() {
    m_levels.clear();
    m_item.emplace(m_top);
  }
  QSResult step() {
    m_levels.emplace_back(*m_item, detail::fetchKeyName);
    while (!m_levels.empty()) {
      detail::NameWalk& deepest = m_levels.back();
      if (const QSResult result = deepest.next(); result == kSuccess) {
        m_item.emplace(deepest.key().child(deepest.name()));
        return result;
      } else if (result != detail::kAbsentCode) {
        return result;
      }
      m_levels.pop_back();
    }
    return detail::kAbsentCode;
  }

  Key m_top;
  std::vector<detail::NameWalk> m_levels;
};

inline ValueView Key::values() const {
  return ValueView(*this);
}
inline ValueView Key::values(std::error_code& code) const {
  return ValueView(*this, &code);
}
inline SubkeyView Key::subkeys() const {
  return SubkeyView(*this);
}
inline SubkeyView Key::subkeys(std::error_code& code) const {
  return SubkeyView(*this, &code);
}
inline BranchView Key::branch() const {
  return BranchView(*this);
}
inline BranchView Key::branch(std::error_code& code) const {
  return BranchView(*this, &code);
}

}  // namespace LTLib

#endif  // LTLIB_SETTINGS_WALK_H
