// What two keys, stores or exports do not have in common.
#include <filesystem>

#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/changes_shown.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/html_page.h"
#include "ltreg/exchange/form.h"
#include "ltreg/exchange/reg_text.h"
#include "ltreg/registry/absent.h"
#include "ltreg/registry/branch.h"
#include "ltreg/registry/spare_root.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

constexpr std::string_view kOldVersion = "old:";
constexpr const char* kBackends[] = {kFileBackend, kSystemBackend};

std::optional<KeyArgument> keyOf(const std::string& word) {
  try {
    return parseKey(word);
  } catch (const Failure&) {
    return std::nullopt;
  }
}

// One of the two, by what its word says.
struct Side {
  std::optional<KeyArgument> key;      // none for a file
  std::string file;                    // empty for a key of a registry as it is
  std::optional<std::string> backend;  // which one, where the word says so
  bool onFiles = false;                // once it was read
};

Side oldVersion(const Request& request, const std::string& word) {
  Side side{keyOf(word), word + "_old", {}, false};
  if (side.key) {
    const Backend backend(request, side.key->root);
    if (!backend.onFiles()) {
      throw Failure(ExitCode::kUsage,
                    "the operating system's registry keeps no version before the last change, so"
                    " that there is no " +
                        inQuotes(std::string(kOldVersion) + word) +
                        "; compare with an export that was made before");
    }
    side.file = backend.storeOf(side.key->root) + "_old";
  }
  return side;
}

Side sideOf(const Request& request, const std::string& word) {
  if (word.starts_with(kOldVersion)) {
    return oldVersion(request, word.substr(kOldVersion.size()));
  }
  for (const std::string backend : kBackends) {
    if (word.starts_with(backend + ':')) {
      return {parseKey(word.substr(backend.size() + 1)), {}, backend, false};
    }
  }
  Side side{keyOf(word), {}, {}, false};
  if (!side.key) {
    side.file = word;
  }
  return side;
}

void demandFile(const std::string& file) {
  std::error_code error;
  if (!std::filesystem::exists(fileOf(file), error)) {
    throw Failure(ExitCode::kAbsent, "there is no file " + inQuotes(file) +
                                         ", and no root of that name; give a key or a file");
  }
}

Branch readLive(const Request& request, Side& side) {
  Request ofSide = request;
  if (side.backend) {
    ofSide.backend = side.backend;
    ofSide.store.reset();
  }
  KeyArgument key = *side.key;
  Session session(ofSide, key, Access::kRead);
  if (!session.keyExists(key.path)) {
    throwAbsentKey(session, key);
  }
  side.onFiles = session.onFiles();
  return readContent(session, key.path);
}

Branch readFile(Side& side, const KeyArgument& top) {
  demandFile(side.file);
  std::string text = readTextFile(side.file);
  const Form form = guessForm(text, side.file);
  side.onFiles = form == Form::kStore;
  return readKeyIn(form, std::move(text), side.file, top);
}

// Below which key of a file to look: that of the key on the other side.
KeyArgument topFor(const Side& side, const Side& other) {
  const std::optional<KeyArgument>& key = side.key ? side.key : other.key;
  if (!key) {
    return {REG_ROOT_LOCAL_MACHINE, ""};
  }
  return {key->root, key->path.find('%') != std::string::npos ? expandPath(key->path) : key->path};
}

Branch readSide(const Request& request, Side& side, const Side& other) {
  return side.file.empty() ? readLive(request, side) : readFile(side, topFor(side, other));
}

}  // namespace

ExitCode showDifferences(const Request& request, Output& output) {
  Side one = sideOf(request, *request.key);
  Side other = sideOf(request, *request.target);
  for (const Side& side : {one, other}) {
    if (side.key) {
      keepRoot(side.key->root);
    }
  }
  const KeyArgument top = topFor(one, other);
  Branch before = readSide(request, one, other);
  Difference difference = differenceOf(std::move(before), readSide(request, other, one));
  const ExitCode outcome = difference.empty() ? ExitCode::kDone : ExitCode::kAbsent;
  const std::string defaultName = nameInBackend("", one.onFiles || other.onFiles);
  if (request.asPatch) {
    output.bytes(writeRegText(patchOf(top, std::move(difference))));
  } else if (request.html) {
    showDifferencePage(output, {*request.key, *request.target}, top, difference, defaultName);
  } else {
    showDifference(request, output, top, difference, defaultName);
  }
  return outcome;
}

}  // namespace ltreg
