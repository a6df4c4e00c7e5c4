// The order in which a root is opened: expand, lock, check, load. Each step relies on the one before.
#include "ltreg/registry/session.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <unordered_set>
#include <utility>

#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/lock_notice.h"
#include "ltreg/registry/references.h"
#include "ltreg/registry/store_messages.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

// Complaints must not bury the data of a store with thousands of such lines.
constexpr std::size_t kMostComplaints = 5;

// The file backend enumerates neither the children of a root nor those of a key right below one.
bool isShallow(const std::string& path) {
  return path.find('\\') == std::string::npos;
}

bool contains(const std::vector<std::string>& names, std::string_view name) {
  return std::any_of(names.begin(), names.end(),
                     [&](const std::string& one) { return sameName(one, name); });
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

// Changes with each save, whoever makes it.
std::string stampOf(const std::string& pathname) {
  std::error_code error;
  const auto file = fileOf(pathname);
  const auto time = std::filesystem::last_write_time(file, error).time_since_epoch().count();
  const std::string size = std::to_string(std::filesystem::file_size(file, error));
  return error ? std::string() : std::to_string(time) + ' ' + size;
}

// What a program that reads has to know. The library reports empty values itself when it loads.
bool concernsReaders(LTLib::StoreFaultKind kind) {
  using Kind = LTLib::StoreFaultKind;
  return kind == Kind::kDroppedLine || kind == Kind::kNoKey || kind == Kind::kIndentedLine ||
         kind == Kind::kOutOfReach || kind == Kind::kNotSavable;
}

// What all sessions join, if there is one.
SharedSession* s_shared = nullptr;

}  // namespace

// Without a reference the variables are left alone, and with them the store that they lie in.
// The first expansion loads the machine root. Where that is the root to work on, its store is first
// locked and checked; for any other root it is over before that root's lock is taken, so that no
// process waits for the one store while it holds the other.
Session::Session(const Request& request, KeyArgument& key, Access access)
    : m_backend(request, key.root), m_root(key.root), m_force(request.force) {
  const bool hasReferences = key.path.find('%') != std::string::npos && !request.literal;
  if (s_shared != nullptr) {
    if (request.dryRun) {
      throw Failure(ExitCode::kUsage,
                    "a line of a batch cannot be tried alone; leave --dry-run out");
    }
    join(key, hasReferences);
    return;
  }
  m_store = std::make_shared<OpenedStore>();
  if (request.dryRun) {
    m_rehearsal.emplace();
  }
  const bool holdsVariables = m_root == REG_ROOT_LOCAL_MACHINE;
  if (hasReferences && !holdsVariables) {
    demandPublicVariables();
    key.path = expandPath(key.path);
  }
  if (onFiles()) {
    open(access, request.quiet);
  }
  if (hasReferences && holdsVariables) {
    key.path = expandPath(key.path);
  }
}

void Session::join(KeyArgument& key, bool hasReferences) {
  std::unique_ptr<Session>& first = s_shared->m_first;
  if (first == nullptr) {
    SharedSession* const shared = std::exchange(s_shared, nullptr);
    if (shared->m_hasReferences && m_root != REG_ROOT_LOCAL_MACHINE) {
      demandPublicVariables();
      loadVariables();
    }
    KeyArgument root{m_root, {}};
    first = std::make_unique<Session>(shared->m_request, root, Access::kWrite);
    s_shared = shared;
  }
  if (!onFiles() || first->m_root != m_root) {
    throw Failure(
        ExitCode::kBadInput,
        onFiles() ? "the key " + inQuotes(fullName(m_root, key.path)) +
                        " lies below a second root, and two stores cannot be saved in one step"
                  : "the operating system's registry takes each change at once, so that there is no"
                    " all or nothing");
  }
  m_store = first->m_store;
  key.path = hasReferences ? expandPath(key.path) : key.path;
}

void Session::open(Access access, bool quiet) {
  OpenedStore& store = *m_store;
  store.pathname = m_backend.storeOf(m_root);
  store.file = openStore(store.pathname, access);
  if (!report().loads()) {
    const bool waited = report().fault->kind == LTLib::StoreFaultKind::kLockFailed;
    const std::string holder = waited ? whoHolds(store.pathname) : std::string();
    throw Failure(
        ExitCode::kStoreFailed,
        whyNotLoaded(store.pathname, report()) + (holder.empty() ? holder : "; " + holder),
        {store.pathname, report().fault->line});
  }
  // The tree of a root loads once, perhaps for an earlier session, which has let others in since.
  static std::map<std::string, std::string> s_loaded;
  store.stamp = s_loaded.try_emplace(store.pathname, stampOf(store.pathname)).first->second;
  if (!quiet) {
    complainOfWarnings();
  }
  // Any touch of the root loads the very text that was checked.
  (void)keyAt("").subKeys();
  // The tree is in memory: a reader whose output waits for its own reader must not keep writers out.
  if (access == Access::kRead) {
    store.file.guard.reset();
  }
}

void Session::complainOfWarnings() const {
  if (const std::string left = whatIsLeft(m_store->pathname, report()); !left.empty()) {
    complain("warning: " + left);
  }
  std::size_t told = 0;
  for (const LTLib::StoreFault& warning : report().warnings) {
    if (concernsReaders(warning.kind) && told++ < kMostComplaints) {
      complain("warning: " + placeOf(m_store->pathname, warning));
    }
  }
  if (told > kMostComplaints) {
    complain("warning: there is more; 'ltreg check' shows all");
  }
}

KeyHandle Session::keyAt(const std::string& path, KeyUse use) const {
  return {m_backend, m_root, path, use};
}

bool Session::keyExists(const std::string& path) {
  if (!onFiles()) {
    const int failure = keyAt(path).failure();
    if (failure != kDone && failure != kNotFound) {
      demandDone(failure, "reading the key " + inQuotes(fullName(m_root, path)));
    }
    return failure == kDone;
  }
  if (path.empty()) {
    return report().exists;
  }
  const std::string parent(parentPath(path));
  const auto [children, added] = m_store->children.try_emplace(foldedName(parent));
  if (added) {
    for (const std::string& name : subKeys(parent)) {
      children->second.insert(foldedName(name));
    }
  }
  return children->second.contains(foldedName(lastComponent(path)));
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
    return shallowSubKeys(report(), path);
  }
  Names found = keyAt(path).subKeys();
  complainOfKey(path, found.failure);
  return std::move(found.names);
}

std::vector<std::string> Session::valueNames(const std::string& path) {
  Names found = keyAt(path).valueNames();
  complainOfKey(path, found.failure);
  return std::move(found.names);
}

std::vector<NamedValue> Session::values(const std::string& path) {
  const KeyHandle key = keyAt(path);
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
  const int failure = keyAt(path).value(name, found);
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
  demandDone(noteChange(keyAt(path, KeyUse::kMake).failure()),
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
  const bool isNew = onFiles() && !keyExists(path);
  const int result = noteChange(keyAt(path, KeyUse::kMake).setValue(name, type, bytes));
  if (isNew && result == kDone) {
    noteNewKey(path);
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
  return noteChange(keyAt(path, KeyUse::kChange).deleteValue(name));
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
  if (!onFiles()) {
    const KeyHandle parent = keyAt(std::string(parentPath(path)));
    return noteChange(parent.deleteSubKey(std::string(lastComponent(path))));
  }
  const int result = noteChange(
      m_backend.manager().regDeleteKey(LTLib::predefinedRootHandle(m_root), path.c_str()));
  if (onFiles() && result == kDone) {
    forgetKey(path);
  }
  return result;
}

// A key comes with its parents.
void Session::noteNewKey(const std::string& path) {
  for (std::string_view key = path; !key.empty(); key = parentPath(key)) {
    const auto known = m_store->children.find(foldedName(parentPath(key)));
    if (known != m_store->children.end()) {
      known->second.insert(foldedName(lastComponent(key)));
    }
  }
  noteTopKey(path);
}

// The report goes on to tell the names that the backend does not, for those who look after a change.
void Session::noteTopKey(const std::string& path) {
  std::vector<LTLib::StoreTopKey>& tops = m_store->file.report.topKeys;
  const std::size_t end = path.find('\\');
  const std::string_view first = std::string_view(path).substr(0, end);
  auto top = std::find_if(tops.begin(), tops.end(), [&](const LTLib::StoreTopKey& each) {
    return sameName(each.name, first);
  });
  if (top == tops.end()) {
    top = tops.insert(tops.end(), {std::string(first), {}});
  }
  if (end != std::string::npos) {
    const std::string_view rest = std::string_view(path).substr(end + 1);
    const std::string_view second = rest.substr(0, rest.find('\\'));
    if (!contains(top->subKeys, second)) {
      top->subKeys.emplace_back(second);
    }
  }
  m_store->file.report.exists = true;
}

void Session::forgetKey(const std::string& path) {
  m_store->children.erase(foldedName(path));
  const auto known = m_store->children.find(foldedName(parentPath(path)));
  if (known != m_store->children.end()) {
    known->second.erase(foldedName(lastComponent(path)));
  }
  std::vector<LTLib::StoreTopKey>& tops = m_store->file.report.topKeys;
  const std::string_view name = lastComponent(path);
  if (path.find('\\') == std::string::npos) {
    std::erase_if(tops, [&](const LTLib::StoreTopKey& top) { return sameName(top.name, name); });
    return;
  }
  for (LTLib::StoreTopKey& top : tops) {
    if (sameName(top.name, parentPath(path))) {
      std::erase_if(top.subKeys, [&](const std::string& each) { return sameName(each, name); });
    }
  }
}

int Session::noteChange(int result) {
  m_store->changed = m_store->changed || result == kDone;
  return result;
}

void Session::save() {
  if (!m_store->changed || s_shared != nullptr || m_rehearsal) {
    return;
  }
  if (onFiles()) {
    // Others come in between two sessions, and where the folder's file system carries no locks.
    if (stampOf(m_store->pathname) != m_store->stamp) {
      throw Failure(ExitCode::kConflict, "the store " + inQuotes(m_store->pathname) +
                                             " was changed by another program since it was read;"
                                             " it was left as it is; try again");
    }
    demandNothingLost();
  }
  if (m_backend.manager().saveConfiguration(m_root) != 0) {
    throw Failure(ExitCode::kStoreFailed,
                  escapeControls(LTLib::lastStoreFailure()) + "; it was left as it was");
  }
}

void Session::demandNothingLost() const {
  if (report().lostCount == 0) {
    return;
  }
  if (m_force) {
    complain("warning: what this save drops from the store stands in " +
             inQuotes(LTLib::keepLostLines(m_store->pathname)));
    return;
  }
  throw Failure(
      ExitCode::kStoreFailed,
      "a save would drop or rewrite these lines:\n" + whatWouldBeLost(m_store->pathname, report()) +
          "nothing was changed; --force saves, and keeps them in a file beside the store");
}

void Session::saveTo(const std::string& pathname) const {
  std::string copy = pathname;
  if (m_backend.manager().saveConfiguration(m_root, copy) != 0) {
    throw Failure(ExitCode::kStoreFailed, escapeControls(LTLib::lastStoreFailure()));
  }
}

void Session::throwAbsent(const std::string& what, const std::string& hint) const {
  // A mistyped --store shows by its file, not by the key.
  const bool noFile = onFiles() && !report().exists;
  throw Failure(ExitCode::kAbsent,
                what + " does not exist" +
                    (noFile ? "; there is no store file " + inQuotes(m_store->pathname) : hint));
}

SharedSession::SharedSession(const Request& request, bool hasReferences)
    : m_request(request), m_hasReferences(hasReferences) {
  s_shared = this;
}

SharedSession::~SharedSession() {
  s_shared = nullptr;
}

void SharedSession::save() {
  s_shared = nullptr;
  if (m_first != nullptr) {
    m_first->save();
  }
}

}  // namespace ltreg
