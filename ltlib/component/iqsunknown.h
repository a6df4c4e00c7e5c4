/// \file
/// \brief The base of component objects: identifiers, the two faces of an object, and the class
/// from which components derive.
///
/// An object's inner face is implemented by the object itself and never delegates. Its public face
/// is a small object inside it that forwards to the inner face; callers hold that one. The outer
/// unknown speaks for the object as a whole: the aggregating object, or the own public face.
///
/// Threads: references may be added and released from any threads at the same time.
///
/// Ownership: an object is born with one reference, which belongs to whoever constructed it, and
/// dies when the count falls to 0. It lies on the heap, made by `new`.
///
/// Failure: results only; nothing here throws.
#ifndef LTLIB_COMPONENT_IQSUNKNOWN_H
#define LTLIB_COMPONENT_IQSUNKNOWN_H

#include <atomic>
#include <cstdint>

#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"

/// Names a class or an interface by a borrowed text, in practice a string literal. A null text is
/// no valid identifier. Identifiers are equal when their texts are, case included.
class LTLIB_EXPORT iqsID {
 public:
  explicit(false) constexpr iqsID(const char* text) : m_text(text) {}

  constexpr const char* text() const { return m_text; }

  /// A null text equals a null text alone.
  bool operator==(const iqsID& other) const;

 private:
  const char* m_text;
};

namespace LTLib {
/// The interface that every component answers to.
inline constexpr iqsID kUnknownID("IQS_UNKNOWN");
}  // namespace LTLib

/// The public face of an object. Never deleted through this type.
struct iqsUnknown {
  /// Stores behind `out` the object's face for `id`, with a reference for the caller.
  virtual QSResult QueryInterface(const iqsID& id, void** out) = 0;

  // Both give the count after the call; 0 means that the last reference is gone.
  virtual std::uint32_t AddRef() const = 0;
  virtual std::uint32_t Release() const = 0;

 protected:
  ~iqsUnknown() = default;
};

/// The inner face of an object. Never deleted through this type.
struct iqsInnerUnknown {
  virtual QSResult InnerQueryInterface(const iqsID& id, void** out) = 0;
  virtual std::uint32_t InnerAddRef() = 0;
  virtual std::uint32_t InnerRelease() = 0;

 protected:
  ~iqsInnerUnknown() = default;
};

class iqsCUnknown;

/// A public face that forwards each call to its owner's inner face.
class LTLIB_EXPORT iqsCInnerUnknown final : public iqsUnknown {
 public:
  explicit iqsCInnerUnknown(iqsCUnknown& owner) : m_owner(&owner) {}
  iqsCInnerUnknown(const iqsCInnerUnknown&) = delete;
  iqsCInnerUnknown& operator=(const iqsCInnerUnknown&) = delete;

  QSResult QueryInterface(const iqsID& id, void** out) override;
  std::uint32_t AddRef() const override;
  std::uint32_t Release() const override;

 private:
  iqsCUnknown* m_owner;
};

/// The base class of components.
class LTLIB_EXPORT iqsCUnknown : public iqsInnerUnknown {
 public:
  /// Null for an object that stands for itself. `outer` is borrowed.
  explicit iqsCUnknown(iqsUnknown* outer);
  iqsCUnknown(const iqsCUnknown&) = delete;
  iqsCUnknown& operator=(const iqsCUnknown&) = delete;

  /// Answers to "IQS_UNKNOWN" with the public face and a reference for the caller; a null `out`
  /// then gives 0x8004102E. For any other identifier stores null and gives 0x8004102F. A derived
  /// class may answer to its own interfaces first.
  QSResult InnerQueryInterface(const iqsID& id, void** out) override;

  /// Gives the new count.
  std::uint32_t InnerAddRef() override;

  /// Gives the new count. At 0 it asks FinalRelease and deletes the object if that agrees.
  std::uint32_t InnerRelease() override;

  virtual ~iqsCUnknown();

  /// The second phase of construction, which runs before anything else is asked of an object that
  /// a factory made. A negative result ends the creation.
  virtual QSResult Init();

  /// Called at the last release: whether to delete the object. The base sets the count to 1, which
  /// is what the destructor sees, and agrees. An override that declines sets the count itself.
  virtual bool FinalRelease();

 protected:
  std::atomic<std::uint32_t> m_refCount{1};
  iqsCInnerUnknown m_innerUnknown;
  iqsUnknown* m_outerUnknown;  // never null; for derived classes, and read by none of the base
};

#endif  // LTLIB_COMPONENT_IQSUNKNOWN_H
