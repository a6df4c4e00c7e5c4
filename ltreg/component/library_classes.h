// The classes that a library offers, as its files tell them: no library is loaded for it.
#ifndef LTREG_COMPONENT_LIBRARY_CLASSES_H
#define LTREG_COMPONENT_LIBRARY_CLASSES_H

#include <string>
#include <vector>

#include "ltlib/ltlib.h"

namespace ltreg {

/// Those that the library's own file tells, and behind them by their identifiers alone those that only
/// the file `.classes` beside it names, which its build has written. Throws Failure if there are none.
[[nodiscard]] std::vector<LTLib::ComponentOffer> classesOf(const std::string& library);

/// The identifiers of a class's interfaces on one line.
[[nodiscard]] std::string interfacesOf(const LTLib::ComponentOffer& offer);

}  // namespace ltreg

#endif  // LTREG_COMPONENT_LIBRARY_CLASSES_H
