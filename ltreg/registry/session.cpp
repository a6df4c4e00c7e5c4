// The order in which a root is opened: expand, lock, check, load. Each step relies on the one before.
#include "ltreg/registry/session.h"

#include <algorithm>
#include <stdexcept>
#include <unordered_set>

#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/references.h"
#include "ltreg/registry/store_messages.h"

namespace ltreg {
namespace {

// That of the machine, under which the other one's name is found, and that of the folder.
constexpr int kLocksOfAStore = 2;

// Complaints must not bury the data of a store with thousands of such lines.
constexpr std::size_t kMostComplaints = 5;

// The file backend enumerates neither the children of a root nor those of a key right below one.
bool isShallow(const std::string& path) {
  return path.find('\\') == std::string::npos;
}

// What the backend does not enumerate comes from the report, which is of the very file that was loaded.
std::vector<std::string> shallowSubKeys(const LTLib::StoreReport& report, const std::string& path) {
  std::vector<std::string> names;
  for (const LTLib::StoreTopKey& top : report.topKeys) {
    if (path.empty()) {
      names.push_back(top.name);
    } else if (sameName(top.name, path)) {
      return top.subKeys;
    }
  }
  return names;
}

}  // namespace

// Without a reference the variables are left alone, and with them the store that they lie in.
// The first expansion loads the machine root. Where that is the root to work on, its store is first
// locked and checked; for any other root it is over before that root's lock is taken, so that no
// process waits for the one store while it holds the other.
Session::Session(const Request& request, KeyArgument& key, Access access)
    : m_backend(request, key.root), m_root(key.root) {
  const bool holdsVariables = m_root == REG_ROOT_LOCAL_MACHINE;
  if (request.dryRun) {
    m_rehearsal.emplace();
  }
  const bool hasReferences = key.path.find('%') != std::string::npos && !request.literal;
  if (hasReferences && !holdsVariables) {
    demandPublicVariables();
    key.path = expandPath(key.path);
  }
  if (onFiles()) {
    openStore(access, request.quiet);
  }
  if (hasReferences && holdsVariables) {
    key.path = expandPath(key.path);
  }
}

// The guard comes ahead of the check: what another process saved between the two would be loaded
// unchecked, and what it saved after a load without the guard would be overwritten.
void Session::lockAndCheck() {
  m_report = {};
  try {
    m_guard = std::make_unique<LTLib::StoreGuard>(m_pathname);
    m_report = LTLib::checkStoreFile(m_pathname);
  } catch (const QSException& failure) {
    m_report.fault = LTLib::StoreFault{LTLib::StoreFaultKind::kLockFailed, 0, failure.What()};
  } catch (const std::length_error& failure) {
    m_report.fault = LTLib::StoreFault{LTLib::StoreFaultKind::kLockFailed, 0, failure.what()};
  }
}

bool Session::lockWasAbandoned() const {
  return m_report.fault && m_report.fault->kind == LTLib::StoreFaultKind::kLockFailed &&
         m_report.fault->text.find("(abandoned)") != std::string::npos;
}

void Session::openStore(Access access, bool quiet) {
  m_pathname = m_backend.storeOf(m_root);
  lockAndCheck();
  // Saves are whole or not at all, so that there is something to read whatever their owner was at;
  // who changes something has to look first at what it left undone.
  for (int lock = 0; lock < kLocksOfAStore && access == Access::kRead && lockWasAbandoned();
       ++lock) {
    complain("warning: a process ended while it held a lock: " +
             escapeControls(m_report.fault->text));
    lockAndCheck();
  }
  if (!m_report.loads()) {
    throw Failure(ExitCode::kStoreFailed, whyNotLoaded(m_pathname, m_report));
  }
  if (!quiet) {
    complainOfWarnings();
  }
  // Any touch of the root loads the very text that was checked.
  (void)open("").subKeys();
  // The tree is in memory: a reader whose output waits for its own reader must not keep writers out.
  if (access == Access::kRead) {
    m_guard.reset();
  }
}

// The library reports empty values itself when it loads.
void Session::complainOfWarnings() const {
  if (const std::string left = whatIsLeft(m_pathname, m_report); !left.empty()) {
    complain("warning: " + left);
  }
  std::size_t told = 0;
  for (const LTLib::StoreFault& warning : m_report.warnings) {
    if (warning.kind != LTLib::StoreFaultKind::kEmptyValue && told++ < kMostComplaints) {
      complain("warning: " + placeOf(m_pathname, warning));
    }
  }
  if (told > kMostComplaints) {
    complain("warning: there is more; 'ltreg check' shows all");
  }
}

KeyHandle Session::open(const std::string& path, KeyUse use) const {
  return {m_backend, m_root, path, use};
}

bool Session::keyExists(const std::string& path) {
  if (!onFiles()) {
    const int failure = open(path).failure();
    if (failure != kDone && failure != kNotFound) {
      demandDone(failure, "reading the key " + inQuotes(fullName(m_root, path)));
    }
    return failure == kDone;
  }
  return path.empty() ? m_report.exists
                      : m_knownKeys.contains(
                            path, [&](const std::string& parent) { return subKeys(parent); });
}

// One complaint for each key, though its sub-keys are asked for as well as its values.
void Session::complainOfKey(const std::string& path, int failure) {
  if (failure != kDone && (m_sawAll || m_unreadable != path)) {
    complain("warning: the key " + inQuotes(fullName(m_root, path)) +
             " cannot be read in full: " + describeFailure(failure));
    m_sawAll = false;
    m_unreadable = path;
  }
}

std::vector<std::string> Session::subKeys(const std::string& path) {
  if (onFiles() && isShallow(path)) {
    return shallowSubKeys(m_report, path);
  }
  Names found = open(path).subKeys();
  complainOfKey(path, found.failure);
  return std::move(found.names);
}

std::vector<NamedValue> Session::values(const std::string& path) {
  const KeyHandle key = open(path);
  Names found = key.valueNames();
  complainOfKey(path, found.failure);
  std::vector<NamedValue> values;
  std::unordered_set<std::string> seen;
  for (std::string& name : found.names) {
    if (!seen.insert(foldedName(name)).second) {
      complain("warning: the key " + inQuotes(fullName(m_root, path)) + " holds the value " +
               inQuotes(name) + " more than once; programs read the first");
      continue;
    }
    NamedValue value{std::move(name), {}};
    const int failure = key.value(value.name, value.value);
    if (failure == kDone) {
      values.push_back(std::move(value));
    } else if (!onFiles()) {
      complain("warning: the value " + inQuotes(value.name) + " of the key " +
               inQuotes(fullName(m_root, path)) + " cannot be read: " + describeFailure(failure));
      m_sawAll = false;
    }
  }
  return values;
}

std::optional<Value> Session::value(const std::string& path, const std::string& name) {
  if (const std::optional<NamedValue>* rehearsed =
          m_rehearsal ? m_rehearsal->value(path, name) : nullptr) {
    return *rehearsed ? std::optional((*rehearsed)->value) : std::nullopt;
  }
  // Every open succeeds on files, so that only the parents' lists tell whether a key is there.
  // Reading a value of an absent key would add that key to the tree.
  if (!keyExists(path)) {
    return std::nullopt;
  }
  Value found;
  const int failure = open(path).value(name, found);
  if (failure != kDone && failure != kNotFound && !onFiles()) {
    demandDone(failure, "reading the value " + inQuotes(name));
  }
  return failure == kDone ? std::optional(std::move(found)) : std::nullopt;
}

// What the tree in memory is made to hold shows whether a store file can hold it; the operating
// system's registry would keep it at once.
void Session::rehearseKey(const std::string& path, bool isThere) {
  m_rehearsal->noteKey(path, m_rehearsal->knows(path) || keyExists(path), isThere);
}

void Session::makeKey(const std::string& path) {
  if (onFiles() || path.empty()) {
    return;
  }
  if (m_rehearsal) {
    rehearseKey(path, true);
    return;
  }
  demandDone(noteChange(open(path, KeyUse::kMake).failure()),
             "making the key " + inQuotes(fullName(m_root, path)));
}

int Session::setValue(const std::string& path, const std::string& name, unsigned int type,
                      const std::string& bytes) {
  if (m_rehearsal) {
    rehearseKey(path, true);
    m_rehearsal->noteValue(path, name, value(path, name), asRead(type, bytes, onFiles()));
    if (!onFiles()) {
      return kDone;
    }
  }
  const int result = noteChange(open(path, KeyUse::kMake).setValue(name, type, bytes));
  if (result == kDone) {
    m_knownKeys.add(path);
  }
  return result;
}

int Session::deleteValue(const std::string& path, const std::string& name) {
  if (m_rehearsal) {
    rehearseKey(path, true);
    m_rehearsal->noteValue(path, name, value(path, name), std::nullopt);
    if (!onFiles()) {
      return kDone;
    }
  }
  return noteChange(open(path, KeyUse::kChange).deleteValue(name));
}

int Session::deleteKey(const std::string& path) {
  if (m_rehearsal) {
    rehearseKey(path, false);
    for (NamedValue& value : values(path)) {
      m_rehearsal->noteValue(path, value.name, std::move(value.value), std::nullopt);
    }
    if (!onFiles()) {
      return kDone;
    }
  }
  // By the root and the whole path, since the file backend opens nothing relative to an open key.
  const int result = noteChange(
      m_backend.manager().regDeleteKey(LTLib::predefinedRootHandle(m_root), path.c_str()));
  if (result == kDone) {
    m_knownKeys.remove(path);
  }
  return result;
}

int Session::noteChange(int result) {
  m_changed = m_changed || result == kDone;
  return result;
}

void Session::save() {
  if (m_changed && !m_rehearsal && m_backend.manager().saveConfiguration(m_root) != 0) {
    throw Failure(ExitCode::kStoreFailed,
                  escapeControls(LTLib::lastStoreFailure()) + "; it was left as it was");
  }
}

void Session::saveTo(const std::string& pathname) const {
  std::string copy = pathname;
  if (m_backend.manager().saveConfiguration(m_root, copy) != 0) {
    throw Failure(ExitCode::kStoreFailed, escapeControls(LTLib::lastStoreFailure()));
  }
}

void Session::throwAbsent(const std::string& what) const {
  // A mistyped --store shows by its file, not by the key.
  const bool noFile = onFiles() && !m_report.exists;
  throw Failure(ExitCode::kAbsent,
                what + " does not exist" +
                    (noFile ? "; there is no store file " + inQuotes(m_pathname) : std::string()));
}

}  // namespace ltreg
