// Texts with %NAME% references, expanded as all programs of the registry do.
#ifndef LTREG_REGISTRY_REFERENCES_H
#define LTREG_REGISTRY_REFERENCES_H

#include <string>
#include <vector>

#include "ltlib/ltlib.h"

namespace ltreg {

/// Makes sure that the first expansion can read the public variables, which lie below the machine
/// root. Throws Failure if that root's store does not load. Only for who has not opened it.
void demandPublicVariables();

/// Loads what the first expansion of a process loads. Throws Failure if it cannot.
void loadVariables();

/// The text without references. Throws Failure with kBadInput if one does not expand.
[[nodiscard]] std::string expandReferences(const std::string& text);

/// As expandReferences, and appends each replacement to `steps`, those before a failure as well.
[[nodiscard]] std::string expandReferences(const std::string& text,
                                           std::vector<LTLib::ExpansionStep>& steps);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_REFERENCES_H
