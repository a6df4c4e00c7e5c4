// The headers are read byte by byte, since the system that the tool runs on has the structures of its own
// format at most.
#include "ltreg/component/library_header.h"

#include <fstream>
#include <string_view>

namespace ltreg {
namespace {

constexpr std::size_t kElfSize = 20;    // as far as it is looked at
constexpr std::size_t kPeStart = 0x3C;  // where a PE file tells its header's place
constexpr std::size_t kPeSize = 26;     // as far as it is looked at
constexpr unsigned int kElfShared = 3;  // also that of a program at any address
constexpr unsigned int kPeIsDll = 0x2000;
constexpr unsigned int kPe64 = 0x20B;

struct Machine {
  FileFormat format;
  unsigned int number;
  const char* name;
};

constexpr Machine kMachines[] = {
    {FileFormat::kElf, 3, "x86"},        {FileFormat::kElf, 8, "MIPS"},
    {FileFormat::kElf, 20, "PowerPC"},   {FileFormat::kElf, 21, "PowerPC 64"},
    {FileFormat::kElf, 22, "S390"},      {FileFormat::kElf, 40, "ARM"},
    {FileFormat::kElf, 62, "x86-64"},    {FileFormat::kElf, 183, "ARM 64"},
    {FileFormat::kElf, 243, "RISC-V"},   {FileFormat::kElf, 258, "LoongArch"},
    {FileFormat::kPe, 0x14C, "x86"},     {FileFormat::kPe, 0x1C4, "ARM"},
    {FileFormat::kPe, 0x8664, "x86-64"}, {FileFormat::kPe, 0xAA64, "ARM 64"},
};

unsigned int byteAt(std::string_view bytes, std::size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

unsigned int pairAt(std::string_view bytes, std::size_t at, bool bigEndian = false) {
  const unsigned int first = byteAt(bytes, at);
  const unsigned int second = byteAt(bytes, at + 1);
  return bigEndian ? first << 8 | second : second << 8 | first;
}

// Fewer bytes where the file ends.
std::string readPiece(std::ifstream& file, std::size_t start, std::size_t size) {
  std::string piece(size, '\0');
  file.clear();
  file.seekg(static_cast<std::streamoff>(start));
  file.read(piece.data(), static_cast<std::streamsize>(size));
  piece.resize(static_cast<std::size_t>(file.gcount()));
  return piece;
}

// Class, byte order, type and machine have the same places in files of 32 and of 64 bits.
LibraryHeader parseElf(std::string_view bytes) {
  LibraryHeader header{.format = FileFormat::kElf};
  header.bits = byteAt(bytes, 4) == 2 ? 64 : 32;
  header.bigEndian = byteAt(bytes, 5) == 2;
  header.isLibrary = pairAt(bytes, 16, header.bigEndian) == kElfShared;
  header.machine = pairAt(bytes, 18, header.bigEndian);
  return header;
}

// Places count from the signature: the file header's machine and characteristics, and the magic number
// of the optional header, which tells the width.
LibraryHeader parsePe(std::string_view bytes) {
  LibraryHeader header{.format = FileFormat::kPe};
  header.machine = pairAt(bytes, 4);
  header.isLibrary = (pairAt(bytes, 22) & kPeIsDll) != 0;
  header.bits = pairAt(bytes, 24) == kPe64 ? 64 : 32;
  return header;
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
  return std::string(format == FileFormat::kPe ? "PE" : "ELF") + " for " + name + ", " +
         std::to_string(bits) + " bits" + (bigEndian ? ", big-endian" : "");
}

LibraryHeader readLibraryHeader(const std::filesystem::path& pathname) {
  std::ifstream file(pathname, std::ios::binary);
  if (!file || file.peek() == std::ifstream::traits_type::eof()) {
    return {.format = file.is_open() && !file.bad() ? FileFormat::kOther : FileFormat::kUnreadable};
  }
  // Both formats are known by their first bytes; what a file is called says nothing.
  const std::string start = readPiece(file, 0, kPeStart + 4);
  if (start.starts_with("\x7F"
                        "ELF") &&
      start.size() >= kElfSize) {
    return parseElf(start);
  }
  if (start.starts_with("MZ") && start.size() == kPeStart + 4) {
    const std::size_t place = pairAt(start, kPeStart) | pairAt(start, kPeStart + 2) << 16;
    const std::string header = readPiece(file, place, kPeSize);
    if (header.starts_with(std::string_view("PE\0\0", 4)) && header.size() == kPeSize) {
      return parsePe(header);
    }
  }
  return {.format = FileFormat::kOther};
}

}  // namespace ltreg
