#include "ltlib/component/library_file.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "ltlib/component/library_image.h"
#include "ltlib/component/offer_record.h"

namespace LTLib {
namespace {

struct Machine {
  LibraryFormat format;
  unsigned int number;
  const char* name;
};

constexpr Machine kMachines[] = {
    {LibraryFormat::kElf, 3, "x86"},        {LibraryFormat::kElf, 8, "MIPS"},
    {LibraryFormat::kElf, 20, "PowerPC"},   {LibraryFormat::kElf, 21, "PowerPC 64"},
    {LibraryFormat::kElf, 22, "S390"},      {LibraryFormat::kElf, 40, "ARM"},
    {LibraryFormat::kElf, 62, "x86-64"},    {LibraryFormat::kElf, 183, "ARM 64"},
    {LibraryFormat::kElf, 243, "RISC-V"},   {LibraryFormat::kElf, 258, "LoongArch"},
    {LibraryFormat::kPe, 0x14C, "x86"},     {LibraryFormat::kPe, 0x1C4, "ARM"},
    {LibraryFormat::kPe, 0x8664, "x86-64"}, {LibraryFormat::kPe, 0xAA64, "ARM 64"},
};

// The records of a section.
class OfferReader {
 public:
  explicit OfferReader(std::string_view bytes) : m_left(bytes) {}

  // Empty where any record is broken.
  std::vector<ComponentOffer> readAll() {
    std::vector<ComponentOffer> all;
    while (skipNulls()) {
      all.push_back(readOne());
    }
    return m_isWhole ? all : std::vector<ComponentOffer>();
  }

 private:
  // Whether another record comes.
  bool skipNulls() {
    m_left.remove_prefix(std::min(m_left.find_first_not_of('\0'), m_left.size()));
    return m_isWhole && !m_left.empty();
  }

  ComponentOffer readOne() {
    ComponentOffer offer;
    m_isWhole = m_left.front() == detail::kOfferStart;
    m_left.remove_prefix(1);
    offer.id = readText();
    for (std::string name = readText(); !name.empty(); name = readText()) {
      offer.interfaces.push_back(std::move(name));
    }
    offer.words = readText();
    m_isWhole = m_isWhole && !offer.id.empty();
    return offer;
  }

  std::string readText() {
    const std::size_t end = m_left.find('\0');
    m_isWhole = m_isWhole && end != std::string_view::npos;
    if (!m_isWhole) {
      return {};
    }
    std::string text(m_left.substr(0, end));
    m_left.remove_prefix(end + 1);
    return text;
  }

  std::string_view m_left;
  bool m_isWhole = true;
};

std::string whyNoOffers(LibraryFormat format, bool hasSection) {
  return format == LibraryFormat::kUnreadable ? "it cannot be read"
         : format == LibraryFormat::kOther    ? "it is no library"
         : hasSection                         ? "what it tells of its classes is cut off or broken"
                      : "it has no section " LTLIB_OFFERS_SECTION ", which LTLIB_COMPONENT makes";
}

}  // namespace

bool LibraryHeader::sameProcessor(const LibraryHeader& other) const {
  return format == other.format && bits == other.bits && machine == other.machine &&
         bigEndian == other.bigEndian;
}

std::string LibraryHeader::text() const {
  std::string name = "machine " + std::to_string(machine);
  for (const Machine& row : kMachines) {
    if (row.format == format && row.number == machine) {
      name = row.name;
    }
  }
  return std::string(format == LibraryFormat::kPe ? "PE" : "ELF") + " for " + name + ", " +
         std::to_string(bits) + " bits" + (bigEndian ? ", big-endian" : "");
}

LibraryHeader readLibraryHeader(const std::string& library) {
  return detail::LibraryImage(library).header();
}

LibraryOffers libraryOffers(const std::string& library) {
  detail::LibraryImage image(library);
  const std::optional<std::string> section = image.section(LTLIB_OFFERS_SECTION);
  LibraryOffers offers{OfferReader(section ? *section : std::string()).readAll(), {}};
  if (offers.classes.empty()) {
    offers.failure = whyNoOffers(image.header().format, section.has_value());
  }
  // The compiler and the linker have laid them down in an order of their own.
  std::sort(
      offers.classes.begin(), offers.classes.end(),
      [](const ComponentOffer& one, const ComponentOffer& other) { return one.id < other.id; });
  return offers;
}

}  // namespace LTLib
