/// \file
/// \brief Which types a setting may have, and how each is kept.
///
/// | type                              | kept as                                                   |
/// |-----------------------------------|-----------------------------------------------------------|
/// | bool                              | the number 0 or 1                                         |
/// | integers                          | a number; as text below 0 and from 2^32 on                |
/// | float, double                     | text, the shortest that comes back as the same number     |
/// | std::string, std::filesystem::path| text, UTF-8                                               |
/// | std::vector<std::string>          | a list                                                    |
/// | std::vector<std::byte>            | bytes                                                     |
/// | std::chrono seconds, milliseconds | text with the unit, as "1500ms"                           |
/// | enumerations with enumNames       | text, the name                                            |
///
/// Reading takes what can be meant alone: a number for an integer may also be the whole of a text, and
/// a duration also a number without a unit, which counts in the unit that is asked for. All else is of
/// another type. Nothing is ever cut or rounded: what does not fit is out of range.
///
/// A program adds a type by a specialisation of SettingTraits that leads it to one of these.
///
/// Threads: nothing here has a state.
#ifndef LTLIB_SETTINGS_VALUE_H
#define LTLIB_SETTINGS_VALUE_H

#include <algorithm>
#include <charconv>
#include <chrono>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "ltlib/registry/registry_manager.h"
#include "ltlib/settings/error.h"

namespace LTLib {

/// How a type of a program's own is kept. A specialisation has
///   using Stored = ...;                                   // a type that can be kept
///   static std::optional<T> fromStored(const Stored&);    // none: out of range
///   static Stored toStored(const T&);
template <class T>
struct SettingTraits {};

/// The names of an enumeration's values, which a program gives by a specialisation:
///   template <> inline constexpr std::array LTLib::enumNames<Level> = {
///       std::pair{Level::kLow, "low"}, std::pair{Level::kHigh, "high"}};
template <class E>
inline constexpr std::nullptr_t enumNames = nullptr;

namespace detail {

template <class T, class... Others>
concept OneOf = (std::same_as<T, Others> || ...);

template <class T>
concept KeptInteger =
    std::integral<T> && !OneOf<T, bool, char, wchar_t, char8_t, char16_t, char32_t>;

template <class T>
concept KeptDuration = OneOf<T, std::chrono::seconds, std::chrono::milliseconds>;

template <class T>
concept NamedEnum =
    std::is_enum_v<T> && !std::same_as<std::remove_cvref_t<decltype(enumNames<T>)>, std::nullptr_t>;

template <class T>
concept TranslatedType = requires(const T& value, const typename SettingTraits<T>::Stored& stored) {
  { SettingTraits<T>::toStored(value) } -> std::convertible_to<typename SettingTraits<T>::Stored>;
  { SettingTraits<T>::fromStored(stored) } -> std::convertible_to<std::optional<T>>;
};

using Texts = std::vector<std::string>;
using Bytes = std::vector<std::byte>;

}  // namespace detail

/// A type that a setting may have.
template <class T>
concept SettingType = detail::OneOf<T, bool, float, double, std::string, std::filesystem::path,
                                    detail::Texts, detail::Bytes> || detail::KeptInteger<T> ||
    detail::KeptDuration<T> || detail::NamedEnum<T> || detail::TranslatedType<T>;

namespace detail {

// Each step of a reading gives a result: 0, another type, or out of range.

[[nodiscard]] inline bool isText(const RegistryValue& value) {
  return value.type == REG_SZ || value.type == REG_EXPAND_SZ;
}

// One backend counts the terminator and the other does not; behind the first NUL nothing is meant.
[[nodiscard]] inline std::string_view textIn(const RegistryValue& value) {
  return std::string_view(value.bytes).substr(0, value.bytes.find('\0'));
}

inline QSResult readNumber(const RegistryValue& value, std::uint64_t& number) {
  if (value.type != REG_DWORD && value.type != REG_QWORD) {
    return kWrongTypeCode;
  }
  if (value.bytes.size() == sizeof(std::uint32_t)) {
    std::uint32_t half = 0;
    std::memcpy(&half, value.bytes.data(), sizeof half);
    number = half;
    return kSuccess;
  }
  if (value.bytes.size() != sizeof number) {
    return kOutOfRangeCode;
  }
  std::memcpy(&number, value.bytes.data(), sizeof number);
  return kSuccess;
}

template <class Number>
QSResult parseWhole(std::string_view text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc::invalid_argument || end != text.data() + text.size()) {
    return kWrongTypeCode;
  }
  return error == std::errc() ? kSuccess : kOutOfRangeCode;
}

template <class Number>
QSResult readUpTo(std::uint64_t largest, const RegistryValue& value, Number& out) {
  if (isText(value)) {
    return parseWhole(textIn(value), out);
  }
  std::uint64_t number = 0;
  const QSResult result = readNumber(value, number);
  if (result < 0) {
    return result;
  }
  out = static_cast<Number>(number);
  return number <= largest ? kSuccess : kOutOfRangeCode;
}

template <class Number>
QSResult readInteger(const RegistryValue& value, Number& out) {
  return readUpTo(static_cast<std::uint64_t>(std::numeric_limits<Number>::max()), value, out);
}

// Beyond the digits of the type the next number is another one.
template <class Real>
QSResult readReal(const RegistryValue& value, Real& out) {
  return readUpTo(std::uint64_t{1} << std::numeric_limits<Real>::digits, value, out);
}

inline constexpr std::string_view kMilliseconds = "ms";
inline constexpr std::string_view kSeconds = "s";

// As 64 bits of milliseconds at most; what is no whole number of the unit asked for does not fit.
template <class Duration>
QSResult readDuration(const RegistryValue& value, Duration& out) {
  std::int64_t count = 0;
  if (!isText(value)) {
    const QSResult result = readInteger(value, count);
    out = Duration(count);
    return result;
  }
  constexpr bool kAsksSeconds = std::same_as<Duration, std::chrono::seconds>;
  std::string_view text = textIn(value);
  const bool inMilliseconds = text.ends_with(kMilliseconds);
  const bool inSeconds = !inMilliseconds && text.ends_with(kSeconds);
  text.remove_suffix(inMilliseconds ? kMilliseconds.size() : inSeconds ? kSeconds.size() : 0);
  if (const QSResult result = parseWhole(text, count); result < 0) {
    return result;
  }
  if (inMilliseconds && kAsksSeconds) {
    out = Duration(count / 1000);
    return count % 1000 == 0 ? kSuccess : kOutOfRangeCode;
  }
  const std::int64_t factor = inSeconds && !kAsksSeconds ? 1000 : 1;
  const std::int64_t most = std::numeric_limits<std::int64_t>::max() / factor;
  if (count > most || count < -most) {
    return kOutOfRangeCode;
  }
  out = Duration(count * factor);
  return kSuccess;
}

[[nodiscard]] inline Texts itemsIn(std::string_view bytes) {
  Texts items;
  while (!bytes.empty()) {
    const std::string_view item = bytes.substr(0, bytes.find('\0'));
    if (!item.empty()) {
      items.emplace_back(item);
    }
    bytes.remove_prefix(item.size() < bytes.size() ? item.size() + 1 : item.size());
  }
  return items;
}

template <class E>
QSResult readName(std::string_view text, E& out) {
  for (const auto& [value, name] : enumNames<E>) {
    if (text == name) {
      out = value;
      return kSuccess;
    }
  }
  return kOutOfRangeCode;
}

/// Takes a value as a T: 0, another type, or out of range.
template <SettingType T>
QSResult decode(const RegistryValue& value, T& out) {
  if constexpr (TranslatedType<T>) {
    typename SettingTraits<T>::Stored stored{};
    const QSResult result = decode(value, stored);
    if (result < 0) {
      return result;
    }
    std::optional<T> translated = SettingTraits<T>::fromStored(stored);
    if (translated) {
      out = std::move(*translated);
    }
    return translated ? kSuccess : kOutOfRangeCode;
  } else if constexpr (std::same_as<T, bool>) {
    std::uint64_t number = 0;
    const QSResult result = readNumber(value, number);
    out = number == 1;
    return result == kSuccess && number > 1 ? kOutOfRangeCode : result;
  } else if constexpr (KeptInteger<T>) {
    return readInteger(value, out);
  } else if constexpr (std::floating_point<T>) {
    return readReal(value, out);
  } else if constexpr (KeptDuration<T>) {
    return readDuration(value, out);
  } else if constexpr (std::same_as<T, Texts>) {
    out = itemsIn(value.bytes);
    return value.type == REG_MULTI_SZ ? kSuccess : kWrongTypeCode;
  } else if constexpr (std::same_as<T, Bytes>) {
    const auto bytes = std::as_bytes(std::span(value.bytes));
    out.assign(bytes.begin(), bytes.end());
    return value.type == REG_BINARY ? kSuccess : kWrongTypeCode;
  } else if (!isText(value)) {
    return kWrongTypeCode;
  } else if constexpr (std::same_as<T, std::string>) {
    out = textIn(value);
    return kSuccess;
  } else if constexpr (std::same_as<T, std::filesystem::path>) {
    const std::string_view text = textIn(value);
    out = std::filesystem::path(std::u8string(text.begin(), text.end()));
    return kSuccess;
  } else {
    return readName(textIn(value), out);
  }
}

// Each step of a writing gives 0, or that the value has no form.

// Text and lists carry their terminators, as the operating system counts them.
inline QSResult writeText(std::string_view text, RegistryValue& out) {
  out.type = REG_SZ;
  out.bytes.assign(text).push_back('\0');
  return text.find('\0') == std::string_view::npos ? kSuccess : kNoFormCode;
}

inline QSResult writeItem(std::string_view item, RegistryValue& out) {
  out.bytes.append(item).push_back('\0');
  return !item.empty() && item.find('\0') == std::string_view::npos ? kSuccess : kNoFormCode;
}

template <class Items>
QSResult writeList(const Items& items, RegistryValue& out) {
  out.type = REG_MULTI_SZ;
  QSResult result = kSuccess;
  for (const auto& item : items) {
    result = std::min(result, writeItem(item, out));
  }
  out.bytes.push_back('\0');
  return result;
}

inline QSResult writeBytes(std::span<const std::byte> bytes, RegistryValue& out) {
  out.type = REG_BINARY;
  out.bytes.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return kSuccess;
}

template <class Number>
std::string numberText(Number number) {
  char text[64];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

template <class Number>
QSResult writeInteger(Number number, RegistryValue& out) {
  if (!std::in_range<std::uint32_t>(number)) {
    return writeText(numberText(number), out);
  }
  const auto word = static_cast<std::uint32_t>(number);
  out.type = REG_DWORD;
  out.bytes.assign(reinterpret_cast<const char*>(&word), sizeof word);
  return kSuccess;
}

/// Makes the stored form: 0, or that there is none.
template <SettingType T>
QSResult encode(const T& value, RegistryValue& out) {
  if constexpr (TranslatedType<T>) {
    const typename SettingTraits<T>::Stored stored = SettingTraits<T>::toStored(value);
    return encode(stored, out);
  } else if constexpr (std::same_as<T, bool>) {
    return writeInteger(value ? 1 : 0, out);
  } else if constexpr (KeptInteger<T>) {
    return writeInteger(value, out);
  } else if constexpr (std::floating_point<T>) {
    return writeText(numberText(value), out);
  } else if constexpr (std::same_as<T, std::chrono::seconds>) {
    return writeText(numberText(value.count()).append(kSeconds), out);
  } else if constexpr (std::same_as<T, std::chrono::milliseconds>) {
    return writeText(numberText(value.count()).append(kMilliseconds), out);
  } else if constexpr (std::same_as<T, Texts>) {
    return writeList(value, out);
  } else if constexpr (std::same_as<T, Bytes>) {
    return writeBytes(value, out);
  } else if constexpr (std::same_as<T, std::string>) {
    return writeText(value, out);
  } else if constexpr (std::same_as<T, std::filesystem::path>) {
    const std::u8string text = value.u8string();
    return writeText({reinterpret_cast<const char*>(text.data()), text.size()}, out);
  } else {
    for (const auto& [known, name] : enumNames<T>) {
      if (known == value) {
        return writeText(name, out);
      }
    }
    return kNoFormCode;
  }
}

}  // namespace detail

/// A value as it stood at one moment, whatever its type.
class Value {
 public:
  Value() = default;
  explicit Value(RegistryValue stored) : m_stored(std::move(stored)) {}

  /// The value as a T; none where it is of another type or does not fit, which the code tells.
  template <SettingType T>
  [[nodiscard]] std::optional<T> as() const {
    std::error_code ignored;
    return as<T>(ignored);
  }
  template <SettingType T>
  [[nodiscard]] std::optional<T> as(std::error_code& code) const {
    std::optional<T> out(std::in_place);
    code = make_error_code(detail::decode(m_stored, *out));
    if (code) {
      out.reset();
    }
    return out;
  }

  /// The same type and the same bytes.
  bool operator==(const Value& other) const {
    return m_stored.type == other.m_stored.type && m_stored.bytes == other.m_stored.bytes;
  }

  /// The value for people: a number, a text or a list's items between quotes, or how many bytes.
  [[nodiscard]] std::string shown() const;

  /// The type's number, as REG_SZ.
  [[nodiscard]] unsigned int type() const { return m_stored.type; }

 private:
  RegistryValue m_stored;
};

inline std::string Value::shown() const {
  if (const auto number = as<std::uint64_t>(); number && !detail::isText(m_stored)) {
    return std::to_string(*number);
  }
  detail::Texts texts;
  if (detail::isText(m_stored)) {
    texts.emplace_back(detail::textIn(m_stored));
  } else if (m_stored.type == REG_MULTI_SZ) {
    texts = detail::itemsIn(m_stored.bytes);
  } else {
    return std::to_string(m_stored.bytes.size()) + " bytes";
  }
  std::string line;
  for (const std::string& text : texts) {
    line.append(line.empty() ? "\"" : " \"").append(text).push_back('"');
  }
  return line;
}

}  // namespace LTLib

#endif  // LTLIB_SETTINGS_VALUE_H
