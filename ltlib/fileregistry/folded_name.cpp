#include "ltlib/fileregistry/folded_name.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace LTLib::detail {
namespace {

constexpr std::uint64_t everyByte(std::uint64_t byte) {
  return byte * 0x0101010101010101u;
}

char fold(char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 0x20) : byte;
}

// Folds eight bytes at once: in each of them the sums carry into the top bit just when the byte is
// at least 'a', or above 'z'.
std::uint64_t foldEight(std::uint64_t bytes) {
  const std::uint64_t low = bytes & everyByte(0x7F);
  const std::uint64_t fromA = low + everyByte(0x80 - 'a');
  const std::uint64_t aboveZ = low + everyByte(0x7F - 'z');
  const std::uint64_t letters = (fromA ^ aboveZ) & ~bytes & everyByte(0x80);
  return bytes - (letters >> 2);
}

std::uint64_t loadUpToEight(const char* bytes, std::size_t count) {
  std::uint64_t loaded = 0;
  std::memcpy(&loaded, bytes, count);
  return loaded;
}

std::uint64_t mix(std::uint64_t hash, std::uint64_t eight) {
  hash = (hash ^ foldEight(eight)) * 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 29);
}

}  // namespace

bool equalNames(std::string_view left, std::string_view right) noexcept {
  if (left.size() != right.size()) {
    return false;
  }
  return std::memcmp(left.data(), right.data(), left.size()) == 0 ||
         std::equal(left.begin(), left.end(), right.begin(),
                    [](char a, char b) { return fold(a) == fold(b); });
}

std::string foldedName(std::string_view name) {
  std::string folded(name);
  std::transform(folded.begin(), folded.end(), folded.begin(), fold);
  return folded;
}

std::size_t hashOfName(std::string_view name) noexcept {
  std::uint64_t hash = name.size();
  const char* bytes = name.data();
  std::size_t left = name.size();
  for (; left >= sizeof(std::uint64_t); left -= sizeof(std::uint64_t)) {
    hash = mix(hash, loadUpToEight(bytes, sizeof(std::uint64_t)));
    bytes += sizeof(std::uint64_t);
  }
  return left > 0 ? mix(hash, loadUpToEight(bytes, left)) : hash;
}

}  // namespace LTLib::detail
