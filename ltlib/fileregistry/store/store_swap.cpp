#include "ltlib/fileregistry/store/store_swap.h"

#include <new>
#include <utility>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {
namespace {

using Platform::fileCalls;
using Platform::FileResult;

// No longer than "_new" and "_old", so that each name of a store that can be saved once can be
// saved again.
constexpr char kFresh[] = "_new";
constexpr char kFormer[] = "_tmp";
constexpr char kOld[] = "_old";

[[noreturn]] void fail(const std::string& text) {
  throw QSException("kFileRegistry", __LINE__, kFailure, text.c_str());
}

// Asked for where something is still to be put right, so that a lack of memory costs the words alone.
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

// For systems that cannot exchange names: a second name keeps the store file in its place, and a
// rename serves where there are none. False with the store file as it was.
bool exchangeByNames(const SaveNames& names) {
  remove(names.former);
  const FileResult linked = fileCalls().link(names.store.c_str(), names.former.c_str());
  if (linked != FileResult::kDone &&
      (linked != FileResult::kUnsupported || !rename(names.store, names.former))) {
    return false;
  }
  if (rename(names.fresh, names.store)) {
    return true;
  }
  if (linked == FileResult::kDone) {
    remove(names.former);
  } else {
    (void)rename(names.former, names.store);
  }
  return false;
}

FileResult exchange(const SaveNames& names) {
  return fileCalls().exchange(names.fresh.c_str(), names.store.c_str());
}

}  // namespace

SaveNames::SaveNames(const std::string& pathname)
    : store(pathname), fresh(pathname + kFresh), former(pathname + kFormer), old(pathname + kOld) {}

// The former version gets the "_old" name last: until then a failure can be taken back.
void swapStore(const SaveNames& names) {
  FileResult exchanged = exchange(names);
  const bool byNames = exchanged == FileResult::kUnsupported;
  if (byNames) {
    exchanged = exchangeByNames(names) ? FileResult::kDone : FileResult::kFailed;
  }
  if (exchanged != FileResult::kDone) {
    const std::string why = words();
    remove(names.fresh);
    fail("the store file cannot be replaced: " + why);
  }
  const std::string& former = byNames ? names.former : names.fresh;
  if (flushNames(names.store) && rename(former, names.old)) {
    return;
  }
  const std::string why = words();
  if (byNames ? !rename(former, names.store) : exchange(names) != FileResult::kDone) {
    fail("the store file was replaced, but its former version stays " + former + ": " + why);
  }
  remove(names.fresh);
  fail("the former version cannot become " + names.old + ": " + why);
}

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

// The object is whole before the first file is renamed, so that its end undoes half a start.
KeptAside::KeptAside(const std::string& pathname) : KeptAside() {
  const std::vector<std::string> left = filesLeftBeside(pathname);
  m_kept.reserve(left.size());
  for (const std::string& path : left) {
    setAside(path);
  }
}

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
