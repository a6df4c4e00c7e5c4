// What tests ask of a named mutex again and again.
#ifndef LTLIB_TESTS_SUPPORT_NAMED_MUTEX_CHECKS_H
#define LTLIB_TESTS_SUPPORT_NAMED_MUTEX_CHECKS_H

#include <string>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/foundation/named_mutex.h"

namespace LTLib::Testing {

/// What lock throws; empty when it throws nothing.
inline std::string lockText(NamedMutex& mutex) {
  try {
    mutex.lock();
    return "";
  } catch (const QSException& error) {
    return error.What();
  }
}

/// What construction throws; empty when it throws nothing.
inline std::string constructionText(const char* name) {
  try {
    const NamedMutex mutex(name);
    return "";
  } catch (const QSException& error) {
    return error.What();
  }
}

inline std::string abandonedText(const std::string& name) {
  return "cannot lock LTLib::NamedMutex " + name + " (abandoned)";
}

}  // namespace LTLib::Testing

#endif  // LTLIB_TESTS_SUPPORT_NAMED_MUTEX_CHECKS_H
