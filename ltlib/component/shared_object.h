/// \file
/// \brief Reference-counted objects without interfaces, and the pointers that count.
///
/// Threads: pointers to one object may be copied and destroyed on any threads at the same time; one
/// pointer is used by one thread at a time.
///
/// Ownership: an object is born with one reference. A counting pointer built from a plain pointer
/// takes that one over; each copy adds one, each end gives one back, and the last deletes the
/// object, whose destructor sees a count of 1.
///
/// Failure: nothing here throws but the destructors of the objects.
#ifndef LTLIB_COMPONENT_SHARED_OBJECT_H
#define LTLIB_COMPONENT_SHARED_OBJECT_H

#include <atomic>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "ltlib/export.h"

/// The base of objects that iqs_ptr counts; nothing else changes the count.
struct LTLIB_EXPORT iqsSharedObject {
  iqsSharedObject() = default;
  iqsSharedObject(const iqsSharedObject&) = delete;
  iqsSharedObject& operator=(const iqsSharedObject&) = delete;
  virtual ~iqsSharedObject();

  std::atomic<std::int32_t> m_refCount{1};
};

/// A base for classes that count for themselves; the count starts at 1, and the destructor leaves
/// -1 for whoever looks too late.
class LTLIB_EXPORT QSSharedObject {
 public:
  QSSharedObject(const QSSharedObject&) = delete;
  QSSharedObject& operator=(const QSSharedObject&) = delete;

 protected:
  QSSharedObject() = default;
  virtual ~QSSharedObject();

  std::atomic<std::int32_t> m_refCount{1};
};

namespace LTLib::detail {

// The static analyser cannot follow an atomic count and takes every release for the last.
// NOLINTBEGIN(clang-analyzer-cplusplus.NewDelete)

/// What the counting pointers share: the pointee, which may be null, and its references.
template <class T>
class CountedPointee {
 public:
  CountedPointee() = default;
  explicit CountedPointee(T* pointee) : m_pointee(pointee) {}
  CountedPointee(const CountedPointee& other) : CountedPointee(other.share()) {}
  CountedPointee(CountedPointee&& other) noexcept
      : m_pointee(std::exchange(other.m_pointee, nullptr)) {}
  CountedPointee& operator=(CountedPointee other) noexcept {
    std::swap(m_pointee, other.m_pointee);
    return *this;
  }
  ~CountedPointee() { Release(); }

  /// Gives the reference back, if there is one; this pointer is null from then on.
  void Release() {
    T* const last = std::exchange(m_pointee, nullptr);
    if (last != nullptr && --last->m_refCount == 0) {
      last->m_refCount.exchange(1);
      delete last;
    }
  }

  explicit operator bool() const { return m_pointee != nullptr; }

 protected:
  T* pointee() const { return m_pointee; }

  /// The pointee, with a reference added for the caller.
  T* share() const {
    if (m_pointee != nullptr) {
      ++m_pointee->m_refCount;
    }
    return m_pointee;
  }

  void swapPointees(CountedPointee& other) noexcept { std::swap(m_pointee, other.m_pointee); }

 private:
  T* m_pointee = nullptr;
};

// NOLINTEND(clang-analyzer-cplusplus.NewDelete)

}  // namespace LTLib::detail

template <class T>
class iqs_const_ptr;

/// A counting pointer to a T of the shape of iqsSharedObject.
template <class T>
class iqs_ptr : public LTLib::detail::CountedPointee<T> {
 public:
  iqs_ptr() = default;

  /// Takes over the reference that the caller holds. `pointee` may be null.
  explicit iqs_ptr(T* pointee) : LTLib::detail::CountedPointee<T>(pointee) {}

  /// A further reference, to a base.
  template <std::derived_from<T> U>
  requires(!std::same_as<T, U>) explicit(false) iqs_ptr(const iqs_ptr<U>& other)
      : iqs_ptr(other.share()) {}

  /// Gives the reference back.
  iqs_ptr& operator=(std::nullptr_t) {
    this->Release();
    return *this;
  }

  T* get() const { return this->pointee(); }
  T* operator->() const { return this->pointee(); }
  T& operator*() const { return *this->pointee(); }
  void swap(iqs_ptr& other) noexcept { this->swapPointees(other); }

  friend bool operator==(const iqs_ptr& a, const iqs_ptr& b) { return a.get() == b.get(); }
  friend bool operator==(const iqs_ptr& a, std::nullptr_t) { return a.get() == nullptr; }

 private:
  template <class>
  friend class iqs_ptr;
  template <class>
  friend class iqs_const_ptr;
};

/// As iqs_ptr, for read-only access.
template <class T>
class iqs_const_ptr : public LTLib::detail::CountedPointee<T> {
 public:
  iqs_const_ptr() = default;

  /// Takes over the reference that the caller holds. `pointee` may be null.
  explicit iqs_const_ptr(T* pointee) : LTLib::detail::CountedPointee<T>(pointee) {}

  /// A further reference.
  template <std::derived_from<T> U>
  explicit(false) iqs_const_ptr(const iqs_ptr<U>& other) : iqs_const_ptr(other.share()) {}

  template <std::derived_from<T> U>
  requires(!std::same_as<T, U>) explicit(false) iqs_const_ptr(const iqs_const_ptr<U>& other)
      : iqs_const_ptr(other.share()) {}

  /// Gives the reference back.
  iqs_const_ptr& operator=(std::nullptr_t) {
    this->Release();
    return *this;
  }

  const T* get() const { return this->pointee(); }
  const T* operator->() const { return this->pointee(); }
  const T& operator*() const { return *this->pointee(); }
  void swap(iqs_const_ptr& other) noexcept { this->swapPointees(other); }

  friend bool operator==(const iqs_const_ptr& a, const iqs_const_ptr& b) {
    return a.get() == b.get();
  }
  friend bool operator==(const iqs_const_ptr& a, std::nullptr_t) { return a.get() == nullptr; }

 private:
  template <class>
  friend class iqs_const_ptr;
};

#endif  // LTLIB_COMPONENT_SHARED_OBJECT_H
