#include "ltlib/fileregistry/kFileRegistry.h"

#include <exception>
#include <memory>

#include "ltlib/fileregistry/load_merge.h"
#include "ltlib/fileregistry/store_files.h"
#include "ltlib/fileregistry/store_swap.h"
#include "ltlib/fileregistry/text_writer.h"
#include "ltlib/platform/files.h"

namespace LTLib::detail {
namespace {

using Platform::FileResult;

// Reads into a tree of its own first, since a repeated reading must not double what is there.
ReadResult readStore(QSCfgRoot& root, const std::string& pathname) {
  Platform::FileCalls& calls = Platform::fileCalls();
  const std::unique_ptr<Platform::File, FileResult (*)(Platform::File*)> file(
      calls.openForReading(pathname.c_str()), calls.close);
  QSCfgDataSection read(root.section->name());
  ReadResult result = ReadResult::kWhole;
  if (file != nullptr) {
    FileLineSource source(*file);
    ReadContext context{source, root.lineCount, printSyntaxMessage};
    try {
      result = cfgReadText(context, read);
    } catch (...) {
      takeOverReading(root, read, false);
      throw;
    }
  }
  takeOverReading(root, read, result == ReadResult::kWhole);
  return result;
}

void loadStep(QSCfgRoot& root) {
  const std::string pathname = cfgDefaultPathname(root.root);
  if (pathname.empty()) {
    root.loadFailed = false;
    return;
  }
  root.loadFailed = true;
  root.loaded = cfgLoadFile(root, pathname) == ReadResult::kWhole;
  root.loadFailed = !root.loaded;
}

void writeStore(const QSCfgDataSection& section, const std::string& path,
                const Platform::FilePermissions* permissions) {
  Platform::FileCalls& calls = Platform::fileCalls();
  std::unique_ptr<Platform::File, FileResult (*)(Platform::File*)> file(
      calls.openForWriting(path.c_str(), permissions), calls.close);
  if (file == nullptr) {
    throw QSException("kFileRegistry", __LINE__, kFailure, "registry file cannot be made");
  }
  LineSink sink(*file);
  for (std::size_t i = 0; i < section.sectionCount(); ++i) {
    cfgWriteSection(sink, section.sectionAt(i));
  }
  sink.flush();
  const bool flushed = calls.flush(*file) == FileResult::kDone;
  const bool closed = calls.close(file.release()) == FileResult::kDone;
  if (!flushed || !closed) {
    throw QSException("kFileRegistry", __LINE__, kFailure, "registry file cannot be kept");
  }
}

// The new text is whole and on the device before the store file is touched. Its file is removed
// here, while the directory is locked: later it might be another process's.
void replaceStore(const QSCfgDataSection& section, const std::string& pathname) {
  const std::string newName = pathname + "_new";
  try {
    Platform::FileStatus store;
    const bool exists = Platform::fileCalls().status(pathname.c_str(), &store) == FileResult::kDone;
    if (exists && !store.regular) {
      throw QSException("kFileRegistry", __LINE__, kFailure, "registry file is no file");
    }
    writeStore(section, newName, exists ? &store.permissions : nullptr);
    swapStore(newName, pathname);
  } catch (...) {
    (void)Platform::fileCalls().remove(newName.c_str());
    throw;
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
    makeRootSections();
  }
  if (!root.loaded) {
    loadStep(root);
  }
  if (root.loadFailed) {
    throw QSException("kFileRegistry", __LINE__, kFailure, "registry file was not read");
  }
  return true;
}

}  // namespace

ReadResult cfgLoadFile(QSCfgRoot& root, const std::string& pathname) {
  root.fileName = pathname;
  const StoreHold hold(pathname);
  try {
    return readStore(root, pathname);
  } catch (...) {
    throw QSException("kFileRegistry", __LINE__, kFailure, "registry read failed");
  }
}

void cfgEnsureLoaded(const QSFileKeyHandle& key) {
  const ScopedLock hold(treeLock());
  QSCfgRoot& root = cfgRootOf(key.root);
  if (root.loaded) {
    return;
  }
  makeRootSections();
  root.touched = true;
  if (isRootHandle(key.root)) {
    loadStep(root);
  }
}

QSResult cfgSaveFile(enumRegRoot root, std::string& pathname) {
  const ScopedLock hold(treeLock());
  if (registryRootName(root) == nullptr) {
    return kFailure;
  }
  if (pathname.empty()) {
    pathname = defaultFileName(root);
  }
  try {
    QSCfgRoot& record = cfgRootOf(predefinedRootHandle(root));
    const bool ready = readyToSave(record, pathname);
    const StoreHold store(pathname);
    if (ready) {
      replaceStore(*record.section, pathname);
    }
    return kSuccess;
  } catch (const std::exception&) {
    return kFailure;
  }
}

}  // namespace LTLib::detail
