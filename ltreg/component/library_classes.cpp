#include "ltreg/component/library_classes.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <system_error>

#include "ltreg/cli/failure.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/registry/text_file.h"

namespace ltreg {
namespace {

// The loader tells classes apart as the registry tells their keys.
void addNamed(std::istream& lines, std::vector<LTLib::ComponentOffer>& classes) {
  for (std::string id; std::getline(lines, id);) {
    id.erase(id.find_last_not_of("\r \t") + 1);
    const bool isNew = std::none_of(classes.begin(), classes.end(),
                                    [&](const auto& each) { return sameName(each.id, id); });
    if (!id.empty() && isNew) {
      classes.push_back({id, {}, {}});
    }
  }
}

}  // namespace

std::vector<LTLib::ComponentOffer> classesOf(const std::string& library) {
  LTLib::LibraryOffers offers = LTLib::libraryOffers(library);
  const std::string file = textOf(fileOf(library).replace_extension(".classes"));
  std::error_code error;
  if (std::filesystem::exists(fileOf(file), error)) {
    std::istringstream lines(readTextFile(file));
    addNamed(lines, offers.classes);
  }
  if (offers.classes.empty()) {
    throw Failure(ExitCode::kAbsent,
                  inQuotes(library) + " tells of no class: " + offers.failure + "; nor does " +
                      inQuotes(file) +
                      ", which a build with ltlib_add_component(... CLASSES ...) writes; name each"
                      " class of the library");
  }
  return std::move(offers.classes);
}

std::string interfacesOf(const LTLib::ComponentOffer& offer) {
  std::string all;
  for (const std::string& each : offer.interfaces) {
    all.append(all.empty() ? "" : ", ").append(each);
  }
  return all;
}

}  // namespace ltreg
