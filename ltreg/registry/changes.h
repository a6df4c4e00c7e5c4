// Changes of one value, with refusals that say what is wrong.
#ifndef LTREG_REGISTRY_CHANGES_H
#define LTREG_REGISTRY_CHANGES_H

#include <string>
#include <vector>

#include "ltreg/registry/session.h"

namespace ltreg {

/// Throws Failure for a key and a value's name that a store file cannot hold, if they are to lie in
/// one, and complains of names that are too long for programs to enumerate.
void demandPlace(const Session& session, const std::string& path, const std::string& name);

/// Why a store file cannot hold a value of a key; empty if it can, as far as the tool knows.
[[nodiscard]] std::string whyNoForm(const std::string& path, const NamedValue& value);

/// Sets a value, which has to keep its type if it is there in a store file; one that is there as it
/// is to be is left alone. Throws Failure for words that make no value of the type, or none that a
/// store file can hold.
void putValue(Session& session, const std::string& path, const std::string& name,
              const ValueType& type, const std::vector<std::string>& words);

/// Sets a value as it was read from another place. Throws Failure where a store file cannot hold it
/// there, or holds a value of that name and of another type.
void putCopy(Session& session, const std::string& path, const NamedValue& value);

/// Deletes all values of that name. Requires: there is one.
void eraseValue(Session& session, const std::string& path, const std::string& name);

/// Deletes a key and all below it, children first. Requires: it is there.
void deleteBranch(Session& session, const KeyArgument& key);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_CHANGES_H
