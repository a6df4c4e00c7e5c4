// A save writes what a load has kept. What else stood in the file is written down here before that.
#include <string>

#include "ltlib/fileregistry/store/store_check.h"
#include "ltlib/fileregistry/store/store_lock.h"
#include "ltlib/foundation/kqsresult.h"
#include "ltlib/platform/files.h"

namespace LTLib {
namespace {

using Platform::fileCalls;
using Platform::FileResult;

[[noreturn]] void fail(const std::string& path) {
  const std::string text = "the file " + path + " cannot be made: " + Platform::lastFileFailure();
  throw QSException("kFileRegistry", __LINE__, kFailure, text.c_str());
}

// Makes the first file that is not there yet: earlier ones hold what earlier saves have dropped.
Platform::File* makeBeside(const std::string& located, std::string& path) {
  path = located + ".dropped";
  for (int number = 2;; ++number) {
    Platform::File* file = nullptr;
    if (fileCalls().create(path.c_str(), located.c_str(), &file) == FileResult::kDone) {
      return file;
    }
    Platform::FileStatus taken;
    if (fileCalls().status(path.c_str(), &taken) != FileResult::kDone) {
      fail(path);
    }
    path = located + ".dropped." + std::to_string(number);
  }
}

}  // namespace

std::string keepLostLines(const std::string& pathname) {
  const std::string located = detail::locateStore(pathname);
  const detail::StoreHold hold(located);
  std::string text;
  for (const StoreFault& warning : checkStoreFile(located, StoreReportSize::kFull).warnings) {
    if (warning.lost) {
      text.append(std::to_string(warning.line)).append(": ").append(warning.text) += '\n';
    }
  }
  if (text.empty()) {
    return {};
  }
  std::string path;
  Platform::File* const file = makeBeside(located, path);
  const bool written = fileCalls().write(*file, text.data(), text.size()) == FileResult::kDone &&
                       fileCalls().flush(*file) == FileResult::kDone;
  if (fileCalls().close(file) != FileResult::kDone || !written) {
    fail(path);
  }
  return path;
}

}  // namespace LTLib
