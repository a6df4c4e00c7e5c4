#include "ltlib/component/library_image.h"

#include <algorithm>
#include <exception>
#include <filesystem>

namespace LTLib::detail {
namespace {

constexpr std::uint64_t kMostBytes = 4 << 20;  // of a piece; a full table of sections has fewer
constexpr std::size_t kStartSize = 64;         // all of an ELF header, and where PE tells its place
constexpr std::size_t kElfSize = 20;           // of a header as far as it has to be there
constexpr std::size_t kPeSize = 26;
constexpr std::size_t kPeStart = 0x3C;  // where a PE file tells its header's place
constexpr std::size_t kPeNameSize = 8;
constexpr unsigned int kElfShared = 3;  // also that of a program at any address
constexpr unsigned int kElfNoBits = 8;  // a section without bytes in the file
constexpr unsigned int kPeIsDll = 0x2000;
constexpr unsigned int kPe64 = 0x20B;

// Where an ELF header tells of the table of sections, and where an entry of it tells of its section.
struct ElfPlaces {
  std::size_t width;  // of a place or a size in the file
  std::size_t tableStart;
  std::size_t entrySize;
  std::size_t entryCount;
  std::size_t namesIndex;
  std::size_t start;
  std::size_t size;
};
constexpr ElfPlaces kElf32Places{4, 32, 46, 48, 50, 16, 20};
constexpr ElfPlaces kElf64Places{8, 40, 58, 60, 62, 24, 32};

const ElfPlaces& elfPlaces(const LibraryHeader& header) {
  return header.bits == 64 ? kElf64Places : kElf32Places;
}

// Opens a file and gives its size. What is no file might never end, or begin.
std::uint64_t openRegular(std::ifstream& file, const std::string& pathname) {
  try {
    const std::filesystem::path path = std::u8string(pathname.begin(), pathname.end());
    if (std::filesystem::is_regular_file(path)) {
      file.open(path, std::ios::binary);
      return std::filesystem::file_size(path);
    }
  } catch (const std::exception&) {
    file.close();
  }
  return 0;
}

}  // namespace

// Both formats are known by their first bytes; what a file is called says nothing.
LibraryImage::LibraryImage(const std::string& pathname) : m_size(openRegular(m_file, pathname)) {
  const std::string start = piece(0, kStartSize);
  if (!m_file.is_open() || m_file.bad()) {
    return;
  }
  m_header.format = LibraryFormat::kOther;
  if (start.starts_with("\x7F"
                        "ELF") &&
      start.size() >= kElfSize) {
    readElf(start);
  } else if (start.starts_with("MZ") && start.size() == kStartSize) {
    readPe(start);
  }
}

// Class, byte order, type and machine have the same places in files of 32 and of 64 bits.
void LibraryImage::readElf(std::string_view start) {
  m_header.format = LibraryFormat::kElf;
  m_header.bits = number(start, 4, 1) == 2 ? 64 : 32;
  m_header.bigEndian = number(start, 5, 1) == 2;
  m_header.isLibrary = number(start, 16, 2) == kElfShared;
  m_header.machine = number(start, 18, 2);
  const ElfPlaces& places = elfPlaces(m_header);
  m_tableStart = longNumber(start, places.tableStart, places.width);
  m_entrySize = number(start, places.entrySize, 2);
  m_entryCount = number(start, places.entryCount, 2);
  m_namesIndex = number(start, places.namesIndex, 2);
}

// Places count from the signature: the file header's machine, number of sections, size of the optional
// header and characteristics, and that header's magic number, which tells the width. The table of
// sections comes behind it.
void LibraryImage::readPe(std::string_view start) {
  const std::uint64_t place = number(start, kPeStart, 4);
  const std::string header = piece(place, kPeSize);
  if (!header.starts_with(std::string_view("PE\0\0", 4)) || header.size() != kPeSize) {
    return;
  }
  m_header.format = LibraryFormat::kPe;
  m_header.machine = number(header, 4, 2);
  m_header.isLibrary = (number(header, 22, 2) & kPeIsDll) != 0;
  m_header.bits = number(header, 24, 2) == kPe64 ? 64 : 32;
  m_tableStart = place + 24 + number(header, 20, 2);
  m_entrySize = 40;
  m_entryCount = number(header, 6, 2);
}

std::optional<std::string> LibraryImage::section(std::string_view name) {
  const std::string table = wholePiece(m_tableStart, m_entryCount * m_entrySize);
  if (table.empty()) {
    return m_entryCount != 0 ? std::optional(table) : std::nullopt;
  }
  const auto entry = [&](std::size_t index) {
    return std::string_view(table).substr(std::min(index, m_entryCount) * m_entrySize, m_entrySize);
  };
  // A name ends in a null, but for that of a PE section which fills its place.
  const bool isElf = m_header.format == LibraryFormat::kElf;
  std::string wanted(name);
  wanted.resize(isElf ? name.size() + 1 : kPeNameSize);
  const std::string names = isElf ? content(entry(m_namesIndex)) : std::string();
  for (std::size_t index = 0; index < m_entryCount; ++index) {
    const std::string_view each = entry(index);
    const std::string_view all = isElf ? names : each;
    const std::size_t at = isElf ? number(each, 0, 4) : 0;
    if (at < all.size() && all.substr(at, wanted.size()) == wanted) {
      return content(each);
    }
  }
  return std::nullopt;
}

// The bytes of a section by its entry in the table.
std::string LibraryImage::content(std::string_view entry) {
  if (m_header.format == LibraryFormat::kElf) {
    const ElfPlaces& places = elfPlaces(m_header);
    return number(entry, 4, 4) == kElfNoBits
               ? std::string()
               : wholePiece(longNumber(entry, places.start, places.width),
                            longNumber(entry, places.size, places.width));
  }
  // What memory gets is what counts, as the file is filled up.
  return wholePiece(number(entry, 20, 4), std::min(number(entry, 8, 4), number(entry, 16, 4)));
}

std::string LibraryImage::piece(std::uint64_t start, std::uint64_t size) {
  const std::uint64_t left = m_size - std::min(start, m_size);
  std::string bytes(static_cast<std::size_t>(std::min({size, left, kMostBytes})), '\0');
  m_file.clear();
  m_file.seekg(static_cast<std::streamoff>(std::min(start, m_size)));
  m_file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<std::size_t>(m_file.gcount()));
  return bytes;
}

std::string LibraryImage::wholePiece(std::uint64_t start, std::uint64_t size) {
  std::string bytes = piece(start, size);
  return bytes.size() == size ? bytes : std::string();
}

std::uint64_t LibraryImage::longNumber(std::string_view bytes, std::size_t at,
                                       std::size_t width) const {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < width; ++i) {
    const std::size_t place = at + (m_header.bigEndian ? i : width - 1 - i);
    value = value << 8 | (place < bytes.size() ? static_cast<unsigned char>(bytes[place]) : 0U);
  }
  return value;
}

}  // namespace LTLib::detail
