/// \file
/// \brief What the settings of a group are, in words: for people, and for `ltreg`, which shows and
/// checks them by a file of such descriptions.
///
/// Threads: nothing here has a state.
#ifndef LTLIB_SETTINGS_DESCRIPTION_H
#define LTLIB_SETTINGS_DESCRIPTION_H

#include <concepts>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ltlib/settings/value.h"

namespace LTLib {

/// A setting. Its values are texts: a number's digits, 0 or 1 for a bool, two hexadecimal digits for each
/// of bytes, and all else as it is kept.
struct SettingDescription {
  std::string name;
  /// bool, integer, float, double, text, path, list, bytes, seconds, milliseconds, or name for an
  /// enumeration; for a type of the program's own that of what it is kept as.
  std::string type;
  std::vector<std::string> fallback;  // one text, or a list's items
  std::string least;                  // empty where there are no bounds
  std::string most;
  std::vector<std::string> names;  // of an enumeration, those within its bounds
  std::string help;
};

namespace detail {

template <SettingType T>
constexpr const char* typeWord() {
  if constexpr (TranslatedType<T>) {
    return typeWord<typename SettingTraits<T>::Stored>();
  } else if constexpr (std::same_as<T, bool>) {
    return "bool";
  } else if constexpr (KeptInteger<T>) {
    return "integer";
  } else if constexpr (std::floating_point<T>) {
    return std::same_as<T, float> ? "float" : "double";
  } else if constexpr (KeptDuration<T>) {
    return std::same_as<T, std::chrono::seconds> ? "seconds" : "milliseconds";
  } else if constexpr (std::same_as<T, Texts>) {
    return "list";
  } else if constexpr (std::same_as<T, Bytes>) {
    return "bytes";
  } else if constexpr (NamedEnum<T>) {
    return "name";
  } else {
    return std::same_as<T, std::string> ? "text" : "path";
  }
}

inline constexpr std::string_view kHexDigits = "0123456789abcdef";

/// The value as texts; none where it has no stored form.
template <SettingType T>
Texts textsOf(const T& value) {
  RegistryValue stored;
  std::uint64_t number = 0;
  if (encode(value, stored) < 0) {
    return {};
  }
  if (stored.type == REG_MULTI_SZ) {
    return itemsIn(stored.bytes);
  }
  if (readNumber(stored, number) == kSuccess) {
    return {numberText(number)};
  }
  if (isText(stored)) {
    return {std::string(textIn(stored))};
  }
  std::string digits;
  for (const char byte : stored.bytes) {
    digits += kHexDigits[static_cast<unsigned char>(byte) >> 4];
    digits += kHexDigits[static_cast<unsigned char>(byte) & 0xF];
  }
  return {digits};
}

/// Both bounds, or null ones. What a program's own type is compared by is not known outside of it.
template <SettingType T>
void describeBounds(SettingDescription& setting, const T* least, const T* most) {
  const auto set = [&](const auto& lowest, const auto& highest) {
    const Texts bounds[] = {textsOf(lowest), textsOf(highest)};
    if (!bounds[0].empty() && !bounds[1].empty()) {
      setting.least = bounds[0].front();
      setting.most = bounds[1].front();
    }
  };
  if constexpr (TranslatedType<T>) {
    describeBounds<typename SettingTraits<T>::Stored>(setting, nullptr, nullptr);
  } else if constexpr (NamedEnum<T>) {
    for (const auto& [value, name] : enumNames<T>) {
      if (least == nullptr || (!(value < *least) && !(*most < value))) {
        setting.names.emplace_back(name);
      }
    }
  } else if constexpr (std::integral<T>) {
    set(least != nullptr ? *least : std::numeric_limits<T>::lowest(),
        least != nullptr ? *most : std::numeric_limits<T>::max());
  } else if constexpr (!OneOf<T, Texts, Bytes>) {
    if (least != nullptr) {
      set(*least, *most);
    }
  }
}

template <SettingType T>
SettingDescription describe(std::string name, const T& fallback, const T* least, const T* most,
                            std::string help) {
  SettingDescription made{std::move(name), typeWord<T>(), textsOf(fallback), {}, {}, {},
                          std::move(help)};
  describeBounds(made, least, most);
  return made;
}

inline std::string inJson(std::string_view text) {
  std::string quoted = "\"";
  for (const char byte : text) {
    if (static_cast<unsigned char>(byte) < 0x20) {
      quoted.append("\\u00").push_back(byte < 0x10 ? '0' : '1');
      quoted += kHexDigits[static_cast<unsigned char>(byte) & 0xF];
    } else {
      quoted.append(byte == '"' || byte == '\\' ? "\\" : "").push_back(byte);
    }
  }
  return quoted + '"';
}

inline std::string inJson(const Texts& texts) {
  std::string items;
  for (const std::string& text : texts) {
    items.append(items.empty() ? "" : ",").append(inJson(text));
  }
  return '[' + items + ']';
}

inline std::string inJson(const SettingDescription& setting) {
  std::string object = "{\"name\":" + inJson(setting.name) + ",\"type\":" + inJson(setting.type);
  const auto add = [&object](const char* name, bool isThere, const auto& value) {
    if (isThere) {
      object.append(",\"").append(name).append("\":").append(inJson(value));
    }
  };
  add("default", true, setting.fallback);
  add("least", !setting.least.empty(), setting.least);
  add("most", !setting.most.empty(), setting.most);
  add("names", !setting.names.empty(), setting.names);
  add("help", true, setting.help);
  return object + '}';
}

}  // namespace detail
}  // namespace LTLib

#endif  // LTLIB_SETTINGS_DESCRIPTION_H
