// Any path, name and text: the walk along a path finds what it made, and exactly what the check of
// the file form accepts comes back from a store file, with its neighbours unharmed.
//
// The input is a type code as one byte, then path, name and text, parted by NULs.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/fuzz_tree.h"
#include "ltlib/fileregistry/file_form.h"
#include "ltlib/fileregistry/key_path.h"
#include "ltlib/fileregistry/list_text.h"
#include "ltlib/fileregistry/text_reader.h"
#include "ltlib/fileregistry/text_writer.h"

using namespace LTLib::Fuzzing;
using namespace LTLib::detail;

namespace {

struct Input {
  QSCfgTypeCode code = kCfgString;
  std::string_view path;
  std::string_view name;
  std::string_view text;
};

std::string_view takePart(std::string_view& rest) {
  const std::string_view part = rest.substr(0, rest.find('\0'));
  rest.remove_prefix(part.size() < rest.size() ? part.size() + 1 : part.size());
  return part;
}

Input split(std::string_view bytes) {
  Input input;
  if (!bytes.empty()) {
    input.code = static_cast<QSCfgTypeCode>(static_cast<unsigned char>(bytes.front()) % 5);
    bytes.remove_prefix(1);
  }
  input.path = takePart(bytes);
  input.name = takePart(bytes);
  input.text = takePart(bytes);
  return input;
}

// The names from the root's child down to a section, along a chain of only children.
std::vector<std::string_view> namesOfChain(const QSCfgDataSection& root) {
  std::vector<std::string_view> names;
  for (const QSCfgDataSection* at = &root; at->sectionCount() == 1;) {
    at = &at->sectionAt(0);
    names.emplace_back(at->name());
  }
  return names;
}

std::vector<std::string_view> checkWalk(std::string_view path, QSCfgDataSection& root) {
  std::string forMaking(path);
  const QSCfgDataSection* made = cfgResolveSection(forMaking, root, true);
  std::string forFinding(path);
  const QSCfgDataSection* found = cfgResolveSection(forFinding, root, false);
  demand(forMaking == forFinding, "the two walks leave different paths");
  // A bracketed name adds a section each time and finds none.
  demand(found == (lacksFirstComponent(forFinding) ? nullptr : made),
         "the walk misses its section");
  return made != nullptr ? namesOfChain(root) : std::vector<std::string_view>();
}

void checkHeader(std::string_view path) {
  QSCfgDataSection root("root");
  const std::string line = '[' + std::string(path);
  const QSCfgDataSection* section = cfgParseHeader(line, root);
  const std::vector<std::string_view> names = namesOfChain(root);
  demand(section == nullptr || (!names.empty() && section->name() == names.back()),
         "a header leads past its last name");
}

// Adds the field between neighbours that it could spoil, to all of which the check does not apply.
void addField(QSCfgDataSection& section, std::string_view name, QSCfgTypeCode code,
              std::string text) {
  section.addField(std::make_unique<QSCfgDataFieldString>("first", kCfgULong, "1"));
  section.addField(std::make_unique<QSCfgDataFieldString>(name, code, std::move(text)));
  section.addField(std::make_unique<QSCfgDataFieldString>("last", kCfgULong, "2"));
}

QSCfgDataSection& addChain(QSCfgDataSection& root, const std::vector<std::string_view>& names) {
  QSCfgDataSection* section = &root;
  for (const std::string_view name : names) {
    section = &section->addSection(name);
  }
  return *section;
}

// What the writer would write if it did not ask the check.
std::string uncheckedText(const std::vector<std::string_view>& names, const Input& input) {
  std::string text = "[";
  for (const std::string_view name : names) {
    text.append(name) += '\\';
  }
  text.back() = ']';
  return text + "\n\"first\"=ulong:1\n" + cfgFieldLine(input.name, input.code, input.text) +
         "\"last\"=ulong:2\n\n";
}

void checkFileForm(const std::vector<std::string_view>& names, const Input& input) {
  const bool isList = input.code == kCfgListString;
  const bool accepted =
      headerComesBack(names) && fieldComesBack(input.name, input.code, input.text,
                                               isList ? ListLines::kJoined : ListLines::kKept);
  QSCfgDataSection expected("root");
  addField(addChain(expected, names), input.name, input.code,
           isList ? joinListLines(input.text) : std::string(input.text));
  const Reading back = readTree(uncheckedText(names, input));
  const bool same = back.whole && showFields(*back.root) == showFields(expected);
  demand(accepted || !same, "what comes back was refused");
  demand(same || !accepted, "what was accepted does not come back");
  if (accepted) {
    QSCfgDataSection root("root");
    addField(addChain(root, names), input.name, input.code, std::string(input.text));
    demand(writeTree(root) == uncheckedText(names, input), "the writer writes something else");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Input input = split({reinterpret_cast<const char*>(data), size});
  QSCfgDataSection root("root");
  const std::vector<std::string_view> names = checkWalk(input.path, root);
  checkHeader(input.path);
  if (!names.empty()) {
    checkFileForm(names, input);
  }
  return 0;
}
