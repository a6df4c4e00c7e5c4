#include "ltlib/fileregistry/store_swap.h"

#include <utility>

#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {
namespace {

using Platform::fileCalls;
using Platform::FileResult;

// No longer than "_new" and "_old", so that each name of a store that can be saved once can be
// saved again.
constexpr char kFormer[] = "_tmp";
constexpr const char* kLeftBehind[] = {"_new", "_old", kFormer};

[[noreturn]] void fail(const std::string& text) {
  throw QSException("kFileRegistry", __LINE__, kFailure, text.c_str());
}

[[noreturn]] void failWithWords(const std::string& text) {
  fail(text + ": " + Platform::lastFileFailure());
}

bool rename(const std::string& from, const std::string& to) {
  return fileCalls().rename(from.c_str(), to.c_str()) == FileResult::kDone;
}

void remove(const std::string& path) {
  (void)fileCalls().remove(path.c_str());
}

bool flushNames(const std::string& path) {
  const FileResult flushed = fileCalls().flushDirectory(path.c_str());
  return flushed == FileResult::kDone || flushed == FileResult::kUnsupported;
}

// For systems that cannot exchange names: a second name keeps the store file in its place, and a
// rename serves where there are none. False with the store file as it was.
bool exchangeByNames(const std::string& newName, const std::string& store,
                     const std::string& former) {
  remove(former);
  const FileResult linked = fileCalls().link(store.c_str(), former.c_str());
  if (linked != FileResult::kDone &&
      (linked != FileResult::kUnsupported || !rename(store, former))) {
    return false;
  }
  if (rename(newName, store)) {
    return true;
  }
  if (linked == FileResult::kDone) {
    remove(former);
  } else {
    (void)rename(former, store);
  }
  return false;
}

}  // namespace

// The former version gets the "_old" name last: until then a failure can be taken back.
void swapStore(const std::string& newName, const std::string& pathname) {
  const std::string old = pathname + "_old";
  std::string former = newName;
  FileResult exchanged = fileCalls().exchange(newName.c_str(), pathname.c_str());
  if (exchanged == FileResult::kUnsupported) {
    former = pathname + kFormer;
    exchanged =
        exchangeByNames(newName, pathname, former) ? FileResult::kDone : FileResult::kFailed;
  }
  if (exchanged != FileResult::kDone) {
    const std::string words = Platform::lastFileFailure();
    remove(newName);
    fail("the store file cannot be replaced: " + words);
  }
  if (flushNames(pathname) && rename(former, old)) {
    return;
  }
  const std::string words = Platform::lastFileFailure();
  if (former != newName
          ? !rename(former, pathname)
          : fileCalls().exchange(newName.c_str(), pathname.c_str()) != FileResult::kDone) {
    fail("the store file was replaced, but its former version stays " + former + ": " + words);
  }
  remove(newName);
  fail("the former version cannot become " + old + ": " + words);
}

void bringInFirst(const std::string& newName, const std::string& pathname) {
  const std::string old = pathname + "_old";
  if (!rename(newName, pathname)) {
    const std::string words = Platform::lastFileFailure();
    remove(newName);
    fail("the store file cannot get its name: " + words);
  }
  if (!flushNames(pathname)) {
    const std::string words = Platform::lastFileFailure();
    remove(pathname);
    fail("the store's folder cannot be flushed: " + words);
  }
  remove(old);
}

std::vector<std::string> filesLeftBeside(const std::string& pathname) {
  std::vector<std::string> found;
  for (const char* suffix : kLeftBehind) {
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
      failWithWords("the file " + path + " cannot be set aside");
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
