// Each step either leaves everything as it was or is followed by the one that takes it back. A
// version that is wanted never loses its last name: it gets a new one before the old one goes, or
// both change in one step.
#include "ltlib/fileregistry/store/store_swap.h"

#include <new>
#include <utility>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {
namespace {

using Platform::fileCalls;
using Platform::FileResult;

// All of one length: file systems bound the length of a name, and a store whose "_new" can be made
// must find room for what the next save needs as well.
constexpr char kFresh[] = "_new";
constexpr char kFormer[] = "_tmp";
constexpr char kOld[] = "_old";

[[noreturn]] void fail(const std::string& text) {
  throw QSException("kFileRegistry", __LINE__, kFailure, text.c_str());
}

// Why the last call failed. Asked for while something is still to be put right: a lack of memory may
// cost these words, and must not keep what follows from being done.
std::string words() noexcept {
  try {
    return Platform::lastFileFailure();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

bool rename(const std::string& from, const std::string& to) {
  return fileCalls().rename(from.c_str(), to.c_str()) == FileResult::kDone;
}

void remove(const std::string& path) {
  (void)fileCalls().remove(path.c_str());
}

bool flushNames(const std::string& path) noexcept {
  try {
    const FileResult flushed = fileCalls().flushDirectory(path.c_str());
    return flushed == FileResult::kDone || flushed == FileResult::kUnsupported;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// The former version keeps the store's name, with a second one beside it, until the new one takes
// the first. Where a file can have no second name it has to be moved away.
bool takePlaceByNames(const SaveNames& names) {
  remove(names.former);
  switch (fileCalls().link(names.store.c_str(), names.former.c_str())) {
    case FileResult::kDone:
      if (rename(names.fresh, names.store)) {
        return true;
      }
      remove(names.former);
      return false;
    case FileResult::kUnsupported:
      if (!rename(names.store, names.former)) {
        return false;
      }
      if (rename(names.fresh, names.store)) {
        return true;
      }
      (void)rename(names.former, names.store);
      return false;
    default:
      return false;
  }
}

// Puts the new version in the store's place. The former one's name then, or null with both as they
// were.
const std::string* takePlace(const SaveNames& names) {
  switch (fileCalls().exchange(names.fresh.c_str(), names.store.c_str())) {
    case FileResult::kDone:
      return &names.fresh;
    case FileResult::kUnsupported:
      return takePlaceByNames(names) ? &names.former : nullptr;
    default:
      return nullptr;
  }
}

}  // namespace

SaveNames::SaveNames(const std::string& pathname)
    : store(pathname), fresh(pathname + kFresh), former(pathname + kFormer), old(pathname + kOld) {}

// "_old" is renamed over last, since that cannot be taken back: the version before the former one is
// gone then. A rename of the former version over the new one takes all the rest back.
void swapStore(const SaveNames& names) {
  const std::string* const former = takePlace(names);
  if (former == nullptr) {
    const std::string why = words();
    remove(names.fresh);
    fail("the store file cannot be replaced: " + why);
  }
  if (flushNames(names.store) && rename(*former, names.old)) {
    return;
  }
  const std::string why = words();
  if (!rename(*former, names.store)) {
    fail("the store file was replaced, but its former version stays " + *former + ": " + why);
  }
  fail("the former version cannot become " + names.old + ": " + why);
}

// An "_old" goes last here too: it may be all that is left of a store that was removed by hand.
void bringInFirst(const SaveNames& names) {
  if (!rename(names.fresh, names.store)) {
    const std::string why = words();
    remove(names.fresh);
    fail("the store file cannot get its name: " + why);
  }
  if (!flushNames(names.store)) {
    const std::string why = words();
    remove(names.store);
    fail("the store's folder cannot be flushed: " + why);
  }
  remove(names.old);
}

std::vector<std::string> filesLeftBeside(const std::string& pathname) {
  std::vector<std::string> found;
  for (const char* suffix : {kFresh, kOld, kFormer}) {
    Platform::FileStatus ignored;
    if (fileCalls().status((pathname + suffix).c_str(), &ignored) == FileResult::kDone) {
      found.push_back(pathname + suffix);
    }
  }
  return found;
}

// The other constructor has made the object whole before the first file is renamed, so that where
// the second one fails the destructor runs and gives the first its name back.
KeptAside::KeptAside(const std::string& pathname) : KeptAside() {
  const std::vector<std::string> left = filesLeftBeside(pathname);
  m_kept.reserve(left.size());
  for (const std::string& path : left) {
    setAside(path);
  }
}

// A name that is taken is never renamed over, since it may hold what an earlier save set aside.
void KeptAside::setAside(const std::string& path) {
  Names names{path, path};
  for (const char last : {'~', '1', '2', '3', '4', '5', '6', '7', '8', '9'}) {
    names.present.back() = last;
    Platform::FileStatus taken;
    if (fileCalls().status(names.present.c_str(), &taken) != FileResult::kAbsent) {
      continue;
    }
    if (!rename(names.former, names.present)) {
      fail("the file " + path + " cannot be set aside: " + words());
    }
    m_kept.push_back(std::move(names));
    return;
  }
  fail("the file " + path + " cannot be set aside, since names for it are used up");
}

KeptAside::~KeptAside() {
  for (const Names& names : m_kept) {
    (void)rename(names.present, names.former);
  }
}

}  // namespace LTLib::detail
