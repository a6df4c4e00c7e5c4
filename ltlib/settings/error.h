/// \file
/// \brief What can go wrong with settings, told apart: codes, conditions and the one exception.
///
/// Each result code of the library is an error code of one category. Programs compare a code with a
/// condition: `if (ec == LTLib::SettingsErrc::kWrongType)`.
///
/// Threads: any. A category is compared by its address, as all are, so that a code is to be looked at
/// in the module that asked for it.
#ifndef LTLIB_SETTINGS_ERROR_H
#define LTLIB_SETTINGS_ERROR_H

#include <stdexcept>
#include <string>
#include <system_error>

#include "ltlib/diagnosis.h"
#include "ltlib/fileregistry/store/store_reload.h"
#include "ltlib/foundation/kqsresult.h"

namespace LTLib {

/// The conditions that programs act on.
enum class SettingsErrc {
  kAbsent = 1,    // no such key or value, where one is needed
  kWrongType,     // a value that is there is of another type
  kOutOfRange,    // the value does not fit what was asked for
  kNoForm,        // the store cannot keep a value, a name or a path like this
  kDenied,        // no right to do it
  kBusy,          // somebody else holds it
  kUnsaved,       // changes that nobody saved are in the way
  kStoreFailure,  // all else: the store, its lock or the system failed
};

namespace detail {

// Numbers of the operating system, by which the backends tell the same.
inline constexpr QSResult kAbsentCode = resultFromSystemError(2);
inline constexpr QSResult kWrongTypeCode = resultFromSystemError(1629);
inline constexpr QSResult kOutOfRangeCode = resultFromSystemError(534);
inline constexpr QSResult kNoFormCode = resultFromSystemError(13);

[[nodiscard]] constexpr SettingsErrc conditionOf(QSResult result) {
  switch (result) {
    case kAbsentCode:
    case resultFromSystemError(3):
    case LTLib::kNotFound:
      return SettingsErrc::kAbsent;
    case kWrongTypeCode:
      return SettingsErrc::kWrongType;
    case kOutOfRangeCode:
      return SettingsErrc::kOutOfRange;
    case kNoFormCode:
      return SettingsErrc::kNoForm;
    case kHasChanges:
      return SettingsErrc::kUnsaved;
    case resultFromSystemError(5):
    case resultFromSystemError(19):
      return SettingsErrc::kDenied;
    case resultFromSystemError(32):
    case resultFromSystemError(33):
    case resultFromSystemError(170):
      return SettingsErrc::kBusy;
    default:
      return SettingsErrc::kStoreFailure;
  }
}

[[nodiscard]] constexpr const char* wordsOf(SettingsErrc condition) {
  switch (condition) {
    case SettingsErrc::kAbsent:
      return "is not there";
    case SettingsErrc::kWrongType:
      return "is of another type";
    case SettingsErrc::kOutOfRange:
      return "is out of range";
    case SettingsErrc::kNoForm:
      return "cannot be kept as it is";
    case SettingsErrc::kDenied:
      return "is denied";
    case SettingsErrc::kBusy:
      return "is in use";
    case SettingsErrc::kUnsaved:
      return "has changes that are not saved";
    case SettingsErrc::kStoreFailure:
      break;
  }
  return "failed in the store";
}

class ConditionCategory final : public std::error_category {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "ltlib settings"; }
  [[nodiscard]] std::string message(int condition) const override {
    return wordsOf(static_cast<SettingsErrc>(condition));
  }
};

}  // namespace detail

// Both stay to the end of the process: codes may be looked at by destructors of static objects.

/// The category of the conditions.
[[nodiscard]] inline const std::error_category& settingsCategory() {
  static const auto& category = *new detail::ConditionCategory;
  return category;
}

[[nodiscard]] inline std::error_condition make_error_condition(SettingsErrc condition) {
  return {static_cast<int>(condition), settingsCategory()};
}

namespace detail {

class ResultCategory final : public std::error_category {
 public:
  [[nodiscard]] const char* name() const noexcept override { return "ltlib"; }

  [[nodiscard]] std::string message(int result) const override {
    return std::string(wordsOf(conditionOf(result))) + " (" + resultDigits(result) + ")";
  }

  [[nodiscard]] std::error_condition default_error_condition(int result) const noexcept override {
    return result < 0 ? make_error_condition(conditionOf(result)) : std::error_condition();
  }
};

}  // namespace detail

/// The category of all results of the library.
[[nodiscard]] inline const std::error_category& resultCategory() {
  static const auto& category = *new detail::ResultCategory;
  return category;
}

/// A success of any kind gives no error.
[[nodiscard]] inline std::error_code make_error_code(QSResult result) {
  return {result < 0 ? result : 0, resultCategory()};
}

/// What the throwing forms throw: the code, and a text that names the key and the value.
class SettingsError : public std::system_error {
 public:
  SettingsError(std::error_code code, const std::string& what) : std::system_error(code, what) {}
};

namespace detail {

/// A failure on its way out of an operation.
struct Failure {
  QSResult result = kSuccess;
  std::string words;  // where the result alone says too little

  explicit operator bool() const { return result < 0; }
};

/// Hands a failure over by a code or, with a null one, throws it.
inline void report(const Failure& failure, const std::string& place, std::error_code* code) {
  if (code != nullptr) {
    *code = make_error_code(failure.result);
  } else if (failure) {
    throw SettingsError(make_error_code(failure.result),
                        failure.words.empty() ? place : place + ": " + failure.words);
  }
}

/// Runs `use`, which gives a result, and turns what the first touch of a root throws into one.
template <class Use>
void attempt(Failure& failure, Use use) {
  try {
    failure.result = use();
  } catch (const QSException& thrown) {
    failure = {thrown.Result() < 0 ? thrown.Result() : kFailure, thrown.What()};
  } catch (const std::length_error&) {
    failure = {kFailure, "the store's folder is missing or cannot be written"};
  }
}

}  // namespace detail
}  // namespace LTLib

template <>
struct std::is_error_condition_enum<LTLib::SettingsErrc> : std::true_type {};

#endif  // LTLIB_SETTINGS_ERROR_H
