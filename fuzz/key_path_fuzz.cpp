// Any path, name and text: exactly what the check of the file form accepts comes back from a store
// file, with its neighbours unharmed.
//
// The input is a type code as one byte, then path, name and text, parted by NULs.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/demand.h"
#include "ltlib/fileregistry/text/file_form.h"
#include "ltlib/fileregistry/text/list_text.h"
#include "ltlib/fileregistry/text/text_reader.h"
#include "ltlib/fileregistry/text/text_writer.h"
#include "ltlib/fileregistry/tree/key_path.h"
#include "ltlib/fileregistry/tree/tree_walk.h"
#include "tests/support/text_tree.h"

using LTLib::Fuzzing::demand;
using namespace LTLib::detail;
using namespace LTLib::Testing;

namespace {

using Names = std::vector<std::string_view>;

// Makes the sections of a path, and gives their names from the top's child down.
Names namesOfPath(std::string_view path, QSCfgTree& tree) {
  MadeWay way(tree, path);
  way.keep();
  demand(
      way.section() == nullptr || lacksFirstComponent(path) || tree.findPath(path) == way.section(),
      "a path does not lead where it did");
  Names names;
  for (const QSCfgDataSection* at = way.section(); at != nullptr && at->parent() != nullptr;
       at = at->parent()) {
    names.insert(names.begin(), at->name());
  }
  return names;
}

struct Field {
  QSCfgTypeCode code;
  std::string_view name;
  std::string_view text;
};

// What a tree shows of that field between two neighbours that it could spoil.
std::string shownFields(const Names& names, const Field& field, const std::string& text) {
  std::string path;
  for (const std::string_view name : names) {
    path.append(path.empty() ? "" : "/").append(name);
  }
  return path + "|first|0|1\n" + path + '|' + std::string(field.name) + '|' +
         std::to_string(field.code) + '|' + text + '\n' + path + "|last|0|2\n";
}

// What the writer would write if it did not ask the check.
std::string uncheckedText(const Names& names, const Field& field) {
  std::string text = "[";
  for (const std::string_view name : names) {
    text.append(name) += '\\';
  }
  text.back() = ']';
  return text + "\n\"first\"=ulong:1\n" + cfgFieldLine(field.name, field.code, field.text) +
         "\"last\"=ulong:2\n\n";
}

void checkFileForm(const Names& names, const Field& field) {
  const bool isList = field.code == kCfgListString;
  const std::string text = isList ? joinListLines(field.text) : std::string(field.text);
  const std::string unchecked = uncheckedText(names, field);
  const bool accepted =
      headerComesBack(names) && fieldComesBack(field.name, field.code, field.text);
  const Reading back = readText(unchecked);
  const bool same = back.end == "whole" &&
                    showFields(*back.tree) == shownFields(names, field, text) &&
                    (!isList || holdSameItems(text, field.text));
  demand(accepted || !same, "what comes back was refused");
  demand(same || !accepted, "what was accepted does not come back");
  demand(!accepted || text != field.text || writeText(*back.tree) == unchecked,
         "the writer writes something else");
}

std::string_view takePart(std::string_view& rest) {
  const std::string_view part = rest.substr(0, rest.find('\0'));
  rest.remove_prefix(part.size() < rest.size() ? part.size() + 1 : part.size());
  return part;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) {
    return 0;
  }
  std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  std::string_view path = takePart(rest);
  path.remove_suffix(path.ends_with('\\') ? 1 : 0);
  const std::string_view name = takePart(rest);
  const Field field{static_cast<QSCfgTypeCode>(data[0] % 5), name, takePart(rest)};
  QSCfgTree tree("root");
  const Names names = namesOfPath(path, tree);
  if (!names.empty()) {
    checkFileForm(names, field);
  }
  return 0;
}
