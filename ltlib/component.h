/// \file
/// \brief Components without boilerplate: pointers that own a reference, creation with the reason of a
/// failure, and a base class that does all that every component has to.
///
/// An interface has its identifier as a constant, and a library offers a class in a line:
///
///   struct Greeter : iqsUnknown {
///     static constexpr iqsID kID{"Example.Greeter/1.0"};
///     virtual std::string greet(const std::string& name) = 0;
///
///    protected:
///     ~Greeter() = default;
///   };
///
///   class Hello : public LTLib::Component<Hello, Greeter> {
///    public:
///     std::string greet(const std::string& name) override { return "Hello, " + name; }
///   };
///   LTLIB_COMPONENT(Hello, "Example.Hello", "greets by name")
///
///   auto greeter = LTLib::create<Greeter>("Example.Hello");
///
/// An identifier may end in a version, a slash and two numbers. A component then serves who asks for
/// the same name and first number, and for a second number that is not above its own: a new second
/// number adds operations behind those that there are.
///
/// Threads: as iqsunknown.h and instance_creation.h tell; a pointer belongs to one thread at a time.
///
/// Failure: as each operation tells. What a destructor of a component throws ends the process.
#ifndef LTLIB_COMPONENT_H
#define LTLIB_COMPONENT_H

#include <charconv>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "ltlib/component/class_report.h"
#include "ltlib/component/dll_loader.h"
#include "ltlib/component/instance_creation.h"
#include "ltlib/component/iqsunknown.h"
#include "ltlib/component/offer_record.h"
#include "ltlib/foundation/kqsresult.h"

namespace LTLib {

/// An interface that names itself.
template <class I>
concept ComponentInterface = std::derived_from<I, iqsUnknown> && requires {
  { I::kID } -> std::convertible_to<iqsID>;
};

/// What a Component offers; each answers to it.
struct OfferedInterfaces : iqsUnknown {
  static constexpr iqsID kID{"LTLib.OfferedInterfaces"};
  /// The identifiers, up to a null.
  [[nodiscard]] virtual const char* const* offeredInterfaces() const = 0;

 protected:
  ~OfferedInterfaces() = default;
};

namespace detail {

/// An identifier taken apart; all of it is the name where it has no version.
struct VersionedName {
  std::string_view name;
  unsigned int major = 0;
  unsigned int minor = 0;
  bool hasVersion = false;

  explicit VersionedName(std::string_view id) : name(id) {
    const std::size_t slash = id.rfind('/');
    const std::size_t dot = id.rfind('.');
    if (slash != std::string_view::npos && dot != std::string_view::npos && slash < dot &&
        parse(id.substr(slash + 1, dot - slash - 1), major) && parse(id.substr(dot + 1), minor)) {
      name = id.substr(0, slash);
      hasVersion = true;
    }
  }

 private:
  static bool parse(std::string_view text, unsigned int& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
  }
};

/// Whether what is offered under one identifier serves who asks for another. None is null.
[[nodiscard]] inline bool serves(const iqsID& offered, const iqsID& asked) {
  if (offered == asked) {
    return true;
  }
  const VersionedName ours(offered.text());
  const VersionedName theirs(asked.text());
  return ours.hasVersion && theirs.hasVersion && ours.name == theirs.name &&
         ours.major == theirs.major && ours.minor >= theirs.minor;
}

}  // namespace detail

/// Owns a reference of an object by one of its interfaces, or none.
template <std::derived_from<iqsUnknown> I>
class ComponentPtr {
 public:
  ComponentPtr() = default;
  explicit(false) ComponentPtr(std::nullptr_t) {}
  ComponentPtr(const ComponentPtr& other) : ComponentPtr(share(other.m_face)) {}
  ComponentPtr(ComponentPtr&& other) noexcept : m_face(other.detach()) {}
  template <std::derived_from<I> J>
  requires(!std::same_as<I, J>) explicit(false) ComponentPtr(const ComponentPtr<J>& other)
      : ComponentPtr(share(other.get())) {}
  ComponentPtr& operator=(ComponentPtr other) noexcept {
    std::swap(m_face, other.m_face);
    return *this;
  }
  ~ComponentPtr() { reset(); }

  /// Takes over the reference that the caller holds; null gives none.
  [[nodiscard]] static ComponentPtr adopt(I* face) { return ComponentPtr(face); }
  /// Adds a reference.
  [[nodiscard]] static ComponentPtr share(I* face) {
    if (face != nullptr) {
      face->AddRef();
    }
    return ComponentPtr(face);
  }

  /// Gives the reference to the caller.
  [[nodiscard]] I* detach() noexcept { return std::exchange(m_face, nullptr); }
  void reset() noexcept {
    if (I* const last = detach(); last != nullptr) {
      last->Release();
    }
  }

  /// Another interface of the object, by the identifier of its own; none if the object lacks it.
  template <ComponentInterface J>
  [[nodiscard]] ComponentPtr<J> query() const {
    void* face = nullptr;
    const bool has = m_face != nullptr && m_face->QueryInterface(J::kID, &face) >= 0;
    return ComponentPtr<J>::adopt(has ? static_cast<J*>(face) : nullptr);
  }

  [[nodiscard]] I* get() const { return m_face; }
  I* operator->() const { return m_face; }
  I& operator*() const { return *m_face; }
  explicit operator bool() const { return m_face != nullptr; }
  bool operator==(const ComponentPtr&) const = default;
  bool operator==(std::nullptr_t) const { return m_face == nullptr; }

 private:
  explicit ComponentPtr(I* face) : m_face(face) {}

  I* m_face = nullptr;
};

/// The base of a component: counts, delegates to the object that aggregates it, and answers to its
/// interfaces. An object is made by its registration alone, with a default constructor; what needs the
/// outer object, or may fail, goes into `init`.
template <class Derived, ComponentInterface... Interfaces>
class Component : public iqsCUnknown, public OfferedInterfaces, public Interfaces... {
 public:
  // By the whole object, for which the outer one speaks.
  QSResult QueryInterface(const iqsID& id, void** out) final {
    return m_outerUnknown->QueryInterface(id, out);
  }
  std::uint32_t AddRef() const final { return m_outerUnknown->AddRef(); }
  std::uint32_t Release() const final { return m_outerUnknown->Release(); }

  QSResult InnerQueryInterface(const iqsID& id, void** out) override {
    const bool asksOne = out != nullptr && id.text() != nullptr && !(id == kUnknownID);
    const bool found =
        asksOne && (answer<Interfaces>(id, out) || ... || answer<OfferedInterfaces>(id, out));
    return found ? kSuccess : iqsCUnknown::InnerQueryInterface(id, out);
  }

  /// Calls `init`. What that throws ends the object and passes on, as whoever creates it does not
  /// release it then.
  QSResult Init() final {
    try {
      return static_cast<Derived*>(this)->init();
    } catch (...) {
      InnerRelease();
      throw;
    }
  }

  /// A component's own version completes its construction: a negative result, or an exception, ends
  /// the creation.
  QSResult init() { return kSuccess; }

  /// The identifiers of the interfaces, up to a null.
  static constexpr const char* kOfferedTexts[] = {Interfaces::kID.text()..., nullptr};

  [[nodiscard]] const char* const* offeredInterfaces() const final { return kOfferedTexts; }

  /// The factory.
  static QSResult make(iqsUnknown* outer, iqsCUnknown** out) {
    auto* const made = new Derived;
    if (outer != nullptr) {
      static_cast<Component*>(made)->m_outerUnknown = outer;
    }
    *out = made;
    return kSuccess;
  }

 protected:
  Component() : iqsCUnknown(nullptr) {}
  ~Component() override = default;

 private:
  template <class Interface>
  bool answer(const iqsID& id, void** out) {
    if (!detail::serves(Interface::kID, id)) {
      return false;
    }
    *out = static_cast<Interface*>(this);
    AddRef();
    return true;
  }
};

/// Offers a component by being constructed, as a static object of its library.
template <class C>
class ComponentRegistration : public iqsDllLoader::Registrar {
 public:
  explicit ComponentRegistration(const iqsID& id)
      : Registrar(id, static_cast<iqsDllLoader::CreateUnknown>(&C::make)) {}
};

/// Why there is no object.
struct CreationFailure {
  QSResult result = kSuccess;
  std::string reason;  // a sentence for people; empty after success
};

namespace detail {

/// A failed creation in words.
inline std::string creationReason(const iqsID& id, QSResult result, CreationStep step,
                                  const std::string& error) {
  const std::string name = id.text() != nullptr ? id.text() : "";
  const auto report = reportClass(id);
  switch (step) {
    case CreationStep::kLoad:
      if (report && report->isLoaded) {
        return "the library " + report->library + " offers no component " + name;
      }
      return report && !report->loadFailure.empty() ? error + ": " + report->loadFailure : error;
    case CreationStep::kFactory:
      return "the factory of " + name + " failed" + (error.empty() ? "" : ": " + error);
    case CreationStep::kObject:
      return "the factory of " + name + " made no object";
    default:
      return name + " failed in Init with the result " + std::to_string(result);
  }
}

/// What an object lacks, and what it has in its place.
inline std::string missingInterface(const iqsID& id, const iqsID& asked, iqsUnknown& face) {
  std::string reason = std::string(id.text()) + " does not have " + asked.text();
  const auto offered = ComponentPtr<iqsUnknown>::share(&face).template query<OfferedInterfaces>();
  if (offered) {
    for (const char* const* has = offered->offeredInterfaces(); *has != nullptr; ++has) {
      if (VersionedName(*has).name == VersionedName(asked.text()).name) {
        reason.append(", but ").append(*has);
      }
    }
  }
  return reason;
}

/// Kept out of the way of creations that succeed.
template <class I>
ComponentPtr<I> fail(CreationFailure& failure, QSResult result, std::string reason) {
  failure.result = result;
  failure.reason = std::move(reason);
  return nullptr;
}

}  // namespace detail

/// A new object of a class by one of its interfaces; none, with the reason, where it fails.
template <ComponentInterface I>
[[nodiscard]] ComponentPtr<I> create(const iqsID& id, CreationFailure& failure) {
  failure.result = kSuccess;
  failure.reason.clear();
  void* out = nullptr;
  CreationStep step = CreationStep::kLoad;
  try {
    if (const QSResult result = createInstance(nullptr, id, &out, failure.reason, step);
        result < 0) {
      return detail::fail<I>(failure, result,
                             detail::creationReason(id, result, step, failure.reason));
    }
  } catch (const QSException& thrown) {
    return detail::fail<I>(failure, thrown.Result() < 0 ? thrown.Result() : kFailure,
                           thrown.What());
  } catch (const std::exception& thrown) {
    return detail::fail<I>(failure, kFailure, thrown.what());
  }
  const auto face = ComponentPtr<iqsUnknown>::adopt(static_cast<iqsUnknown*>(out));
  auto asked = face.template query<I>();
  if (!asked) {
    return detail::fail<I>(failure, kNotAvailable, detail::missingInterface(id, I::kID, *face));
  }
  return asked;
}

/// As above; a failure is thrown as a QSException with the reason.
template <ComponentInterface I>
[[nodiscard]] ComponentPtr<I> create(const iqsID& id) {
  CreationFailure failure;
  auto made = create<I>(id, failure);
  if (!made) {
    throw QSException(failure.result, failure.reason.c_str());
  }
  return made;
}

}  // namespace LTLib

/// Offers a component from the library that this stands in: `LTLIB_COMPONENT(Class, id)`, or with a line
/// of words for people `LTLIB_COMPONENT(Class, id, words)`. The identifier and the words are texts known
/// to the compiler, which leaves them in the library's file, with the interfaces, for libraryOffers.
#define LTLIB_COMPONENT(Class, ...)                                                               \
  namespace {                                                                                     \
  [[gnu::section(LTLIB_OFFERS_SECTION)]] constexpr LTLib::detail::OfferRecord<                    \
      Class, LTLib::detail::offerSize<Class>(__VA_ARGS__)>                                        \
      ltlibOfferOf##Class(__VA_ARGS__);                                                           \
  const LTLib::ComponentRegistration<Class> ltlibRegistrationOf##Class(/*NOLINT*/                 \
                                                                       ltlibOfferOf##Class.id()); \
  }

#endif  // LTLIB_COMPONENT_H
