#include "ltlib/variables/first_use_load.h"

#include <string_view>

#include "ltlib/platform/files.h"
#include "ltlib/platform/library_path.h"
#include "ltlib/registry/reg_enum.h"
#include "ltlib/registry/reg_value.h"

namespace LTLib::detail {
namespace {

using Platform::FileResult;

// Longer than any name of a configuration; a file that holds no such thing must not be taken in.
constexpr std::size_t kLongestWord = 512;

constexpr std::string_view kWhiteSpace = "\t\n\v\f\r ";

bool isWhiteSpace(char byte) {
  return kWhiteSpace.find(byte) != std::string_view::npos;
}

// Takes the bytes of a file's first word and tells when it has ended or is too long to be one.
class FirstWord {
 public:
  bool isComplete() const { return m_complete || isTooLong(); }
  bool isTooLong() const { return m_word.size() > kLongestWord; }

  void take(std::string_view bytes) {
    for (const char byte : bytes) {
      if (!isWhiteSpace(byte)) {
        m_word.push_back(byte);
      } else if (!m_word.empty()) {
        m_complete = true;
        return;
      }
    }
  }

  /// A zero byte ends the value.
  std::string value() const { return m_word.substr(0, m_word.find('\0')); }

 private:
  std::string m_word;
  bool m_complete = false;
};

}  // namespace

std::optional<std::string> readConfigFile() {
  Platform::FileHandle file;
  if (Platform::openFile(Platform::pathBesideLibrary("config.dat"), Platform::Links::kFollowed,
                         file) != FileResult::kDone) {
    return std::nullopt;
  }
  FirstWord word;
  char piece[256];
  std::size_t taken = 0;
  // By pieces, and no further than the first word: the file may be anything of any size.
  while (!word.isComplete() &&
         Platform::fileCalls().read(*file, piece, sizeof piece, &taken) == FileResult::kDone &&
         taken != 0) {
    word.take({piece, taken});
  }
  return word.isTooLong() ? std::nullopt : std::optional(word.value());
}

// A value that is no plain text is passed over.
void loadPublicVariables(const TakeVariable& take) {
  CQSRegEnumValue values(REG_ROOT_LOCAL_MACHINE, "%PublicVariables%");
  CQSRegValue value;
  while (values.GetNext(value) >= 0) {
    char* text = nullptr;
    if (value.Read(value.GetName(), text) >= 0) {
      take(value.GetName(), text);
    }
  }
}

}  // namespace LTLib::detail
