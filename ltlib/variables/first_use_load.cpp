#include "ltlib/variables/first_use_load.h"

#include <memory>
#include <string_view>

#include "ltlib/platform/files.h"
#include "ltlib/platform/library_path.h"
#include "ltlib/registry/reg_enum.h"
#include "ltlib/registry/reg_value.h"
#include "ltlib/variables/variable_manager.h"

namespace LTLib::detail {
namespace {

using Platform::FileResult;

struct FileCloser {
  // Nothing was written, so that there is nothing to lose.
  void operator()(Platform::File* file) const { (void)Platform::fileCalls().close(file); }
};

constexpr std::string_view kWhiteSpace = "\t\n\v\f\r ";

bool isWhiteSpace(char byte) {
  return kWhiteSpace.find(byte) != std::string_view::npos;
}

// Takes the bytes of a file's first word and tells when it is complete.
class FirstWord {
 public:
  bool isComplete() const { return m_complete; }

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
  const std::string path = Platform::pathBesideLibrary("config.dat");
  const Platform::FileCalls& calls = Platform::fileCalls();
  const std::unique_ptr<Platform::File, FileCloser> file(calls.openForReading(path.c_str()));
  if (file == nullptr) {
    return std::nullopt;
  }
  FirstWord word;
  char piece[256];
  std::size_t taken = 0;
  while (!word.isComplete() &&
         calls.read(*file, piece, sizeof piece, &taken) == FileResult::kDone && taken != 0) {
    word.take({piece, taken});
  }
  return word.value();
}

// A value that is no plain text is passed over, and a name that is there already stays as it is.
void loadPublicVariables(QSConfigVariableManager& manager) {
  CQSRegEnumValue values(REG_ROOT_LOCAL_MACHINE, "%PublicVariables%");
  CQSRegValue value;
  while (values.GetNext(value) >= 0) {
    char* text = nullptr;
    if (value.Read(value.GetName(), text) >= 0) {
      (void)manager.AddVariable(value.GetName(), text);
    }
  }
}

}  // namespace LTLib::detail
