// A load and a save, step by step. A save touches nothing until it holds the locks and knows that
// the tree is the store's whole state; from then on each failure leaves the files as they were.
#include "ltlib/fileregistry/store/store.h"

#include <exception>
#include <memory>
#include <optional>
#include <utility>

#include "ltlib/fileregistry/store/load_merge.h"
#include "ltlib/fileregistry/store/store_failure.h"
#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/fileregistry/store/store_reload.h"
#include "ltlib/fileregistry/store/store_swap.h"
#include "ltlib/fileregistry/text/text_writer.h"
#include "ltlib/fileregistry/tree/tree_lock.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {
namespace {

using Platform::FileHandle;
using Platform::FileResult;

[[noreturn]] void fail(int line, const std::string& text) {
  throw QSException("kFileRegistry", line, kFailure, text.c_str());
}

// Reads into a tree of its own first, since a repeated reading must not double what is there.
ReadResult readText(QSCfgRoot& root, Platform::File& file) {
  auto read = std::make_unique<QSCfgTree>(root.tree->top().name());
  FileLineSource source(file, read->texts());
  ReadContext context{source, root.lineCount, printSyntaxMessage};
  ReadResult result = ReadResult::kWhole;
  try {
    result = cfgReadText(context, *read);
  } catch (...) {
    takeOverReading(root, std::move(read), false);
    throw;
  }
  takeOverReading(root, std::move(read), result == ReadResult::kWhole);
  return result;
}

// A file that is there and cannot be opened reads as empty, as a missing one does, but no save may
// put what was made up instead in its place.
void countAsUnreadable(QSCfgRoot& root, const std::string& pathname, const std::string& reason) {
  root.unreadable = "the store " + pathname + " counts as empty, since " + reason;
  traceStoreFailure(root.unreadable);
}

// A store that is missing beside what a save leaves was most likely lost by a crash: the root is empty
// all the same, but the next save must not make away with what may be the last version.
void lookForLeftFiles(QSCfgRoot& root, const std::string& located) {
  std::string names;
  for (const std::string& left : filesLeftBeside(located)) {
    names.append(names.empty() ? "" : ", ").append(left);
  }
  if (!names.empty()) {
    root.leftBehind = located;
    traceStoreFailure("there is no store " + located + ", but a save has left " + names);
  }
}

ReadResult readStore(QSCfgRoot& root, const std::string& pathname, const std::string& located) {
  FileHandle file;
  const FileResult opened = Platform::openFile(located, Platform::Links::kRefused, file);
  if (opened == FileResult::kDone) {
    return readText(root, *file);
  }
  if (opened == FileResult::kAbsent) {
    lookForLeftFiles(root, located);
  } else {
    countAsUnreadable(root, pathname, "it cannot be opened: " + Platform::lastFileFailure());
  }
  return ReadResult::kWhole;
}

// A root without a file is asked about again at each touch, as the environment may name one later.
void loadStep(QSCfgRoot& root) {
  const std::string pathname = cfgDefaultPathname(root.root);
  if (pathname.empty()) {
    root.loadFailed = false;
    return;
  }
  // True until the file was read to its end, since an exception may pass from here on.
  root.loadFailed = true;
  root.loaded = cfgLoadFile(root, pathname) == ReadResult::kWhole;
  root.loadFailed = !root.loaded;
}

// A device may tell of a failed write as late as at the flush or the close. What the first of the two
// had to say is kept, as the close may have other words.
void writeStore(const QSCfgDataSection& top, Platform::File* made) {
  Platform::FileCalls& calls = Platform::fileCalls();
  FileHandle file(made);
  LineSink sink(*file);
  for (std::size_t i = 0; i < top.sectionCount(); ++i) {
    cfgWriteSection(sink, top.sectionAt(i));
  }
  sink.flush();
  const bool flushed = calls.flush(*file) == FileResult::kDone;
  const std::string words = flushed ? std::string() : Platform::lastFileFailure();
  const bool closed = calls.close(file.release()) == FileResult::kDone;
  if (!flushed || !closed) {
    fail(__LINE__, "the new text cannot be brought to the device: " +
                       (flushed ? Platform::lastFileFailure() : words));
  }
}

// A file of that name is the rest of a save that was cut off, or a trap: whatever it is, it goes.
Platform::File* makeNew(const std::string& newName, const char* like) {
  Platform::FileCalls& calls = Platform::fileCalls();
  const FileResult removed = calls.remove(newName.c_str());
  Platform::File* file = nullptr;
  if ((removed != FileResult::kDone && removed != FileResult::kAbsent) ||
      calls.create(newName.c_str(), like, &file) != FileResult::kDone) {
    fail(__LINE__, "the file " + newName + " cannot be made: " + Platform::lastFileFailure());
  }
  return file;
}

// The new text is whole and on the device before the store file is touched. Its file is removed
// here, while the directory is locked: later it might be another process's.
void writeNew(const QSCfgDataSection& top, const std::string& newName, const char* like) {
  Platform::File* const file = makeNew(newName, like);
  try {
    writeStore(top, file);
  } catch (...) {
    (void)Platform::fileCalls().remove(newName.c_str());
    throw;
  }
}

void replaceStore(QSCfgRoot& root, const std::string& located) {
  Platform::FileStatus store;
  const FileResult status = Platform::fileCalls().status(located.c_str(), &store);
  if (status != FileResult::kDone && status != FileResult::kAbsent) {
    fail(__LINE__, "the store cannot be looked at: " + Platform::lastFileFailure());
  }
  // Made here, since memory may run out: from the first change of a file on nothing asks for any.
  const SaveNames names(located);
  if (status == FileResult::kDone) {
    if (!store.regular) {
      fail(__LINE__, "the store is no regular file");
    }
    writeNew(root.tree->top(), names.fresh, located.c_str());
    swapStore(names);
    return;
  }
  // Ahead of writing: the new text would otherwise go over a "_new" that is to be kept.
  std::optional<KeptAside> left;
  if (root.leftBehind == located) {
    left.emplace(located);
  }
  writeNew(root.tree->top(), names.fresh, nullptr);
  bringInFirst(names);
  if (left) {
    left->keep();
    root.leftBehind.clear();
  }
}

// Whether the root's tree is what has to be written. The file of a root that was never touched is
// its state as it stands; what was not read yet is read first, so that no save loses it.
bool readyToSave(QSCfgRoot& root, const std::string& pathname) {
  if (!root.touched) {
    const std::string own = cfgDefaultPathname(root.root);
    if (pathname == (own.empty() ? defaultFileName(root.root) : own)) {
      return false;
    }
    root.touched = true;
    makeTrees();
  }
  if (!root.loaded) {
    loadStep(root);
  }
  if (root.loadFailed) {
    fail(__LINE__, "the store has not been read");
  }
  if (!root.unreadable.empty()) {
    fail(__LINE__, root.unreadable);
  }
  return true;
}

}  // namespace

// What locking throws passes unchanged, as it says nothing about the file; what reading throws becomes
// the one failure of a load, with its reason kept for lastStoreFailure.
ReadResult cfgLoadFile(QSCfgRoot& root, const std::string& pathname) {
  root.unreadable.clear();
  root.leftBehind.clear();
  std::string located;
  try {
    located = locateStore(pathname);
  } catch (const QSException& failure) {
    countAsUnreadable(root, pathname, failure.What());
    return ReadResult::kWhole;
  }
  const StoreHold hold(located);
  try {
    return readStore(root, pathname, located);
  } catch (const std::exception& failure) {
    noteStoreFailure(located, "was not read", failure.what());
    throw QSException("kFileRegistry", __LINE__, kFailure, "registry read failed");
  }
}

void cfgEnsureLoaded(const QSFileKeyHandle& key) {
  const TreeWriting writing;
  QSCfgRoot& root = cfgRootOf(key.root());
  if (root.loaded) {
    return;
  }
  makeTrees();
  root.touched = true;
  // Any other handle works on the machine's root, and must not make it read a file.
  if (isRootHandle(key.root())) {
    loadStep(root);
  }
}

QSResult cfgSaveFile(enumRegRoot root, std::string& pathname) {
  const TreeWriting writing;
  if (registryRootName(root) == nullptr) {
    return kFailure;
  }
  if (pathname.empty()) {
    pathname = defaultFileName(root);
  }
  try {
    QSCfgRoot& record = cfgRootOf(predefinedRootHandle(root));
    // Ahead of the locks, since a load takes its own. Where there is nothing to write they are taken
    // all the same: the result tells whether a save would have got that far.
    const bool ready = readyToSave(record, pathname);
    const std::string located = locateStore(pathname);
    const StoreHold store(located);
    if (ready) {
      replaceStore(record, located);
      record.changed = record.changed && pathname != cfgDefaultPathname(root);
    }
    return kSuccess;
  } catch (const std::exception& failure) {
    noteStoreFailure(pathname, "was not saved", failure.what());
    return kFailure;
  }
}

// The tree that was is kept until the file has been read, so that a failure leaves it as it stood.
QSResult cfgReloadFile(enumRegRoot root, UnsavedChanges unsaved) {
  const TreeWriting writing;
  if (registryRootName(root) == nullptr) {
    return kFailure;
  }
  QSCfgRoot& record = cfgRootOf(predefinedRootHandle(root));
  if (record.changed && unsaved == UnsavedChanges::kAreKept) {
    return kHasChanges;
  }
  QSCfgRoot fresh;
  fresh.root = root;
  fresh.touched = true;
  fresh.tree = std::make_unique<QSCfgTree>(registryRootName(root));
  makeTrees();
  std::swap(record, fresh);
  const auto failed = [&] {
    if (unsaved == UnsavedChanges::kAreKept) {
      std::swap(record, fresh);
    }
    return kFailure;
  };
  try {
    loadStep(record);
  } catch (...) {
    (void)failed();
    throw;
  }
  return record.loadFailed || !record.unreadable.empty() ? failed() : kSuccess;
}

}  // namespace LTLib::detail

QSResult LTLib::reloadStore(enumRegRoot root, UnsavedChanges unsaved) {
  return GetConfigurationPathname(root).empty() ? kSuccess : detail::cfgReloadFile(root, unsaved);
}
