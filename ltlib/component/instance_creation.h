/// \file
/// \brief The front door of the component model: an object from a class identifier.
///
/// Threads: any thread at any time; factories run under no lock.
///
/// Ownership: the caller owns one reference of what it gets. The class's library stays loaded from
/// then on, also after a creation that failed later than the load.
///
/// Failure: a negative result, which alone tells failure from success.
///
/// | failure                                                 | result     | error      | traced |
/// |---------------------------------------------------------|------------|------------|--------|
/// | `outer` with a class other than "IQS_UNKNOWN"           | 0x8004102F | left       | no     |
/// | no entry in the registry, or the library does not load  | 0x8004102F | the reason | yes    |
/// | null identifier                                         | 0x8004102F | left       | yes    |
/// | no factory registered, or one of the plain form         | 0x8004102F | left       | yes    |
/// | factory that reports success and stores no object       | 0x8004102F | left       | yes    |
/// | factory gives a negative result                         | that one   | left       | yes    |
/// | factory throws QSException or another std::exception    | 0x8004102F | its text   | yes    |
/// | Init gives a negative result                            | that one   | left       | no     |
/// | InnerQueryInterface fails, as it does with a null `out` | that one   | left       | no     |
///
/// In the last two rows the new object is released. What a factory throws that is no std::exception
/// passes through, and so does what the registry, Init and InnerQueryInterface throw.
#ifndef LTLIB_COMPONENT_INSTANCE_CREATION_H
#define LTLIB_COMPONENT_INSTANCE_CREATION_H

#include <string>

#include "ltlib/component/iqsunknown.h"
#include "ltlib/export.h"
#include "ltlib/foundation/kqsresult.h"

/// Makes an object of the class `id`, of the unknown form, runs its Init and stores its public
/// face, an iqsUnknown*, behind `out`; for any other interface the caller asks that. `outer` is the
/// aggregating object or null. `error` changes as the table tells and is not cleared, so that it
/// should come empty. `out` changes on success, or as InnerQueryInterface leaves it.
LTLIB_EXPORT QSResult iqs_CoCreateInstance(iqsUnknown* outer, const iqsID& id, void** out,
                                           std::string& error);

/// The same without the text.
LTLIB_EXPORT QSResult iqs_CoCreateInstance(iqsUnknown* outer, const iqsID& id, void** out);

namespace LTLib {

/// The steps of a creation, in their order.
enum class CreationStep {
  kLoad,     // the class is looked up and its library loaded
  kFactory,  // the factory runs
  kObject,   // the factory has reported success and its object is looked at
  kInit,     // Init runs
  kFace,     // InnerQueryInterface runs
  kRelease,  // the factory's reference is given back; a creation that succeeds ends here
};

/// iqs_CoCreateInstance for tools that tell where a creation failed: `step` is the last step that
/// was begun, also when an exception leaves the call.
LTLIB_EXPORT QSResult createInstance(iqsUnknown* outer, const iqsID& id, void** out,
                                     std::string& error, CreationStep& step);

}  // namespace LTLib

#endif  // LTLIB_COMPONENT_INSTANCE_CREATION_H
