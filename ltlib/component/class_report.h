/// \file
/// \brief What the loader knows of a class: for tools and diagnostics.
///
/// Threads: any thread at any time; waits while a library loads or a plain factory runs.
#ifndef LTLIB_COMPONENT_CLASS_REPORT_H
#define LTLIB_COMPONENT_CLASS_REPORT_H

#include <cstdint>
#include <optional>
#include <string>

#include "ltlib/component/iqsunknown.h"
#include "ltlib/export.h"

namespace LTLib {

/// The state of a class, as of one moment.
struct ClassReport {
  std::string library;      // the file, as the registry named it at the first look-up
  std::uint32_t loadCount;  // loads that nobody has undone
  bool isLoaded;            // through this class
  bool hasFactory;          // a registrar of the class is alive
  bool isPlain;             // and it is of the plain form
  std::string loadFailure;  // the system's reason for the last load's failure; empty after success
};

/// The state of a class that was found in the registry in this process; none for any other.
/// Neither the registry nor the library is touched.
LTLIB_EXPORT std::optional<ClassReport> reportClass(const iqsID& id);

}  // namespace LTLib

#endif  // LTLIB_COMPONENT_CLASS_REPORT_H
