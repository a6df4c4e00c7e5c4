// Whole files that the command line names.
#ifndef LTREG_REGISTRY_TEXT_FILE_H
#define LTREG_REGISTRY_TEXT_FILE_H

#include <filesystem>
#include <string>

namespace ltreg {

/// The file that a word or an entry names, and the text of a file. Texts are UTF-8; another one names
/// no file where the system has code pages, and elsewhere the file of these bytes.
[[nodiscard]] std::filesystem::path fileOf(const std::string& text);
[[nodiscard]] std::string textOf(const std::filesystem::path& file);

/// All bytes of a file. Throws Failure where it cannot be read.
[[nodiscard]] std::string readTextFile(const std::string& file);

/// Replaces a file. Throws Failure where it cannot be written.
void writeTextFile(const std::string& file, const std::string& bytes);

}  // namespace ltreg

#endif  // LTREG_REGISTRY_TEXT_FILE_H
