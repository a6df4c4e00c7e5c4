/// \file
/// \brief A struct of settings, described once: names, types, defaults, ranges and a line of help each.
///
///   struct Net { int port; std::string host; };
///   const LTLib::Group<Net> kNet = {
///       {"Port", &Net::port, 8080, 1, 65535, "where it listens"},
///       {"Host", &Net::host, "localhost", "whom it asks"},
///   };
///   Net net = kNet.read(key);
///   file << kNet.description(LTLib::Root::kLocalMachine, "%SharedRoot%\\Net");
///
/// Threads: a group does not change, so that any number may use it.
///
/// Failure: as Key.
#ifndef LTLIB_SETTINGS_GROUP_H
#define LTLIB_SETTINGS_GROUP_H

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "ltlib/settings/description.h"
#include "ltlib/settings/key.h"

namespace LTLib {

/// The settings of a Struct.
template <class Struct>
class Group {
 public:
  /// One member.
  class Field {
   public:
    template <SettingType T>
    Field(std::string name, T Struct::*member, const std::type_identity_t<T>& fallback,
          std::string help)
        : Field(detail::describe<T>(std::move(name), fallback, nullptr, nullptr, std::move(help)),
                member, fallback, [](const T& /*any*/) { return true; }) {}

    /// With the least and the most that the value may be.
    template <SettingType T>
    Field(std::string name, T Struct::*member, const std::type_identity_t<T>& fallback,
          const std::type_identity_t<T>& least, const std::type_identity_t<T>& most,
          std::string help)
        : Field(detail::describe<T>(std::move(name), fallback, &least, &most, std::move(help)),
                member, fallback,
                [least, most](const T& value) { return !(value < least) && !(most < value); }) {}

    [[nodiscard]] const std::string& name() const { return m_description.name; }
    [[nodiscard]] const std::string& help() const { return m_description.help; }
    [[nodiscard]] const SettingDescription& description() const { return m_description; }

   private:
    friend class Group;

    template <class T, class Fits>
    Field(SettingDescription description, T Struct::*member, const T& fallback, Fits fits)
        : m_description(std::move(description)),
          m_read([=](const Key& key, const Name& called, Struct& out) {
            std::error_code code;
            T value = key.get(called, fallback, code);
            if (!code && !fits(value)) {
              value = fallback;
              code = make_error_code(detail::kOutOfRangeCode);
            }
            out.*member = std::move(value);
            return code;
          }),
          m_write([=](const Key& key, const Name& called, const Struct& in, std::error_code& code) {
            if (fits(in.*member)) {
              key.set(called, in.*member, code);
            } else {
              code = make_error_code(detail::kOutOfRangeCode);
            }
          }) {}

    SettingDescription m_description;
    std::function<std::error_code(const Key&, const Name&, Struct&)> m_read;
    std::function<void(const Key&, const Name&, const Struct&, std::error_code&)> m_write;
  };

  /// A setting that is not as it should be.
  struct Complaint {
    std::string name;
    std::error_code code;
  };

  Group(std::initializer_list<Field> fields) : m_fields(fields) {}

  [[nodiscard]] const std::vector<Field>& fields() const { return m_fields; }

  /// A line of JSON for a file that `ltreg explain` and `ltreg check` are told of; several groups are
  /// several lines. References in `path` stay as they are. All texts are to be UTF-8.
  [[nodiscard]] std::string description(Root root, std::string_view path) const {
    std::string key = registryRootName(static_cast<enumRegRoot>(root));
    std::string settings;
    for (const Field& field : m_fields) {
      settings.append(settings.empty() ? "" : ",").append(detail::inJson(field.description()));
    }
    return R"({"format":"ltlib-settings","version":1,"key":)" +
           detail::inJson(key.append("\\").append(path)) + ",\"settings\":[" + settings + "]}\n";
  }

  /// All members, with the default where a setting is absent; throws for the first that is wrong.
  [[nodiscard]] Struct read(const Key& key) const {
    Struct out{};
    for (const Field& field : m_fields) {
      refuse(field.m_read(key, field.name(), out), field);
    }
    return out;
  }

  /// All members, with the default also where a setting is wrong, which is told.
  [[nodiscard]] Struct read(const Key& key, std::vector<Complaint>& complaints) const {
    Struct out{};
    for (const Field& field : m_fields) {
      if (const std::error_code code = field.m_read(key, field.name(), out); code) {
        complaints.push_back({field.name(), code});
      }
    }
    return out;
  }

  /// Writes all members; throws for the first that is out of range, with those ahead of it written.
  void write(const Key& key, const Struct& in) const {
    for (const Field& field : m_fields) {
      std::error_code code;
      field.m_write(key, field.name(), in, code);
      refuse(code, field);
    }
  }

 private:
  static void refuse(std::error_code code, const Field& field) {
    if (code) {
      throw SettingsError(code, "the setting " + field.name());
    }
  }

  std::vector<Field> m_fields;
};

}  // namespace LTLib

#endif  // LTLIB_SETTINGS_GROUP_H
