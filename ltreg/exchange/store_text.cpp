#include "ltreg/exchange/store_text.h"

#include <algorithm>

#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/spare_root.h"
#include "ltreg/registry/store_messages.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

constexpr char kLoaded[] = "loaded.cfg";
constexpr char kSaved[] = "saved.cfg";

// Complaints must not bury the data of a store with thousands of such lines.
constexpr std::size_t kMostListed = 5;

// A message about the file that was meant.
std::string aboutFile(std::string message, const std::string& scratch, const std::string& file) {
  for (std::size_t at = message.find(scratch); at != std::string::npos;
       at = message.find(scratch, at + file.size())) {
    message.replace(at, scratch.size(), file);
  }
  return message;
}

// Comments, which load without a word, and are gone behind the next save.
std::size_t commentsIn(std::string_view text) {
  std::size_t comments = 0;
  bool continues = false;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1);
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    line.remove_suffix(line.ends_with('\r') ? 1 : 0);
    comments += !continues && !line.empty() && line[0] != '[' && line[0] != '"' ? 1 : 0;
    continues = line.ends_with('\\');
  }
  return comments;
}

std::string savedBy(const Session& session, const ScratchFolder& folder) {
  const std::string pathname = folder.file(kSaved);
  session.saveTo(pathname);
  return readTextFile(pathname);
}

}  // namespace

StoreText::StoreText(std::string text, const std::string& file) {
  Request request;
  request.store = m_folder.file(kLoaded);
  request.quiet = true;
  writeTextFile(*request.store, text);
  m_droppedLines = commentsIn(text);
  text = {};
  KeyArgument key{takeSpareRoot(), ""};
  try {
    m_session.emplace(request, key, Access::kRead);
  } catch (const Failure& failure) {
    throw Failure(failure.code(), aboutFile(failure.what(), *request.store, file));
  }
  const LTLib::StoreReport& report = m_session->report();
  using Kind = LTLib::StoreFaultKind;
  m_droppedLines += static_cast<std::size_t>(
      std::count_if(report.warnings.begin(), report.warnings.end(), [](const auto& warning) {
        return warning.kind == Kind::kDroppedLine || warning.kind == Kind::kNoKey;
      }));
  for (std::size_t i = 0; i < std::min(report.warnings.size(), kMostListed); ++i) {
    complain("warning: " + placeOf(file, report.warnings[i]));
  }
}

Branch StoreText::content(const std::string& path) {
  return m_session->keyExists(path) ? readContent(*m_session, path) : Branch();
}

std::string StoreText::text() const {
  return savedBy(*m_session, m_folder);
}

std::string savedText(const Session& session, const std::string& path) {
  const std::string all = savedBy(session, ScratchFolder());
  // A save writes each key's header at the beginning of a line, and nothing else begins so.
  std::string part;
  bool isPart = true;
  for (std::size_t at = 0; at < all.size();) {
    const std::size_t end = std::min(all.find('\n', at), all.size() - 1) + 1;
    const std::string_view line = std::string_view(all).substr(at, end - at);
    if (line.starts_with('[')) {
      isPart = isAtOrBelow(line.substr(1, line.rfind(']') - 1), path);
    }
    part.append(isPart ? line : std::string_view());
    at = end;
  }
  return part;
}

}  // namespace ltreg
