// The text of a store file, read and written by the library itself.
#ifndef LTREG_EXCHANGE_STORE_TEXT_H
#define LTREG_EXCHANGE_STORE_TEXT_H

#include <optional>
#include <string>
#include <string_view>

#include "ltreg/exchange/document.h"
#include "ltreg/registry/scratch_folder.h"

namespace ltreg {

/// A text that can be looked at, changed and written again. It lies in a folder of its own, so that
/// neither the folder of the file that it came from nor a lock is touched.
class StoreText {
 public:
  /// Complains of lines that programs pass over, as those of the file. Throws Failure for a text
  /// that does not load.
  StoreText(std::string text, const std::string& file);

  /// Where it can be read and changed.
  [[nodiscard]] Session& session() { return *m_session; }

  /// What lies at and below a path; nothing where there is no such key.
  [[nodiscard]] Branch content(const std::string& path);

  /// The text as a save writes it.
  [[nodiscard]] std::string text() const;

  /// How many lines of the text that it was made of no save keeps, comments among them.
  [[nodiscard]] std::size_t droppedLines() const { return m_droppedLines; }

 private:
  ScratchFolder m_folder;
  std::optional<Session> m_session;
  std::size_t m_droppedLines = 0;
};

/// The text that a save of the session's root writes, as far as it lies at or below a key. Requires:
/// the root lies in a store file.
[[nodiscard]] std::string savedText(const Session& session, const std::string& path);

}  // namespace ltreg

#endif  // LTREG_EXCHANGE_STORE_TEXT_H
