// Every operation compares or hashes each name of its path, so that both work on eight bytes at once.
// What is read goes through memcpy, since a name begins at any address.
#include "ltlib/fileregistry/tree/folded_name.h"

#include <algorithm>
#include <bit>
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
  return bytes - (letters >> 2);  // the top bit, 0x80, becomes the 0x20 between the cases
}

template <class Word>
std::uint64_t load(const char* bytes) {
  Word word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// A name of fewer than eight bytes, read by its two ends, which may overlap.
std::uint64_t loadShort(std::string_view name) {
  const std::size_t size = name.size();
  if (size >= 4) {
    return load<std::uint32_t>(name.data()) << 32 | load<std::uint32_t>(name.data() + size - 4);
  }
  if (size >= 2) {
    return load<std::uint16_t>(name.data()) << 16 | load<std::uint16_t>(name.data() + size - 2);
  }
  return size == 1 ? load<std::uint8_t>(name.data()) : 0;
}

// Up to eight bytes, the first one lowest, whatever the machine's order.
std::uint64_t loadFew(const char* bytes, std::size_t size) {
  std::uint64_t few = 0;
  for (std::size_t i = 0; i < size; ++i) {
    few |= load<std::uint8_t>(bytes + i) << (8 * i);
  }
  return few;
}

std::uint64_t loadEight(const char* bytes) {
  return std::endian::native == std::endian::little ? load<std::uint64_t>(bytes)
                                                    : loadFew(bytes, 8);
}

// Gives the place of each eight bytes of a longer name to `take`, the last of which may overlap
// those before, while `take` gives true.
template <class Take>
bool eachEight(std::size_t size, Take take) {
  constexpr std::size_t kEight = sizeof(std::uint64_t);
  for (std::size_t place = 0; place + kEight < size; place += kEight) {
    if (!take(place)) {
      return false;
    }
  }
  return take(size - kEight);
}

// An odd multiplier of evenly spread bits, which the shift brings down to where the next bytes come
// in. Names come from files that their owner can write anyway: the hash spreads them, and guards
// against nobody.
std::uint64_t mixFolded(std::uint64_t hash, std::uint64_t eight) {
  hash = (hash ^ eight) * 0x9E3779B97F4A7C15u;
  return hash ^ (hash >> 29);
}

std::uint64_t mix(std::uint64_t hash, std::uint64_t eight) {
  return mixFolded(hash, foldEight(eight));
}

// A product's low bits know nothing of the high ones of its factors, which hold the last bytes of a
// name: two rounds bring them down, since tables look at the low bits.
std::uint64_t finish(std::uint64_t hash) {
  hash = (hash ^ (hash >> 32)) * 0xD6E8FEB86659FD93u;
  return hash ^ (hash >> 32);
}

}  // namespace

bool equalNames(std::string_view left, std::string_view right) noexcept {
  const auto equal = [](std::uint64_t a, std::uint64_t b) {
    return a == b || foldEight(a) == foldEight(b);
  };
  if (left.size() != right.size()) {
    return false;
  }
  if (left.size() < sizeof(std::uint64_t)) {
    return equal(loadShort(left), loadShort(right));
  }
  return eachEight(left.size(), [&](std::size_t place) {
    return equal(load<std::uint64_t>(left.data() + place),
                 load<std::uint64_t>(right.data() + place));
  });
}

std::string foldedName(std::string_view name) {
  std::string folded(name);
  std::transform(folded.begin(), folded.end(), folded.begin(), fold);
  return folded;
}

std::uint64_t hashOfName(std::string_view name) noexcept {
  // The two ends of a short name may overlap, so that its length must tell "aaa" from "aa".
  std::uint64_t hash = name.size();
  if (name.size() < sizeof(std::uint64_t)) {
    return finish(mix(hash, loadShort(name)));
  }
  eachEight(name.size(), [&](std::size_t place) {
    hash = mix(hash, load<std::uint64_t>(name.data() + place));
    return true;
  });
  return finish(hash);
}

// Bytes wait in `m_rest` until they are eight, wherever the parts begin.
void PathHash::add(std::string_view part) noexcept {
  const unsigned int held = m_size % 8 * 8;
  m_size += static_cast<std::uint32_t>(part.size());
  const char* bytes = part.data();
  std::size_t left = part.size();
  for (; left >= 8; left -= 8, bytes += 8) {
    const std::uint64_t eight = foldEight(loadEight(bytes));
    m_eights = mixFolded(m_eights, m_rest | eight << held);
    m_rest = held != 0 ? eight >> (64 - held) : 0;
  }
  if (left == 0) {
    return;
  }
  // The last eight bytes of a longer part hold the last few, and are read in one go.
  const std::uint64_t few = foldEight(
      part.size() > 8 ? loadEight(bytes + left - 8) >> (64 - 8 * left) : loadFew(bytes, left));
  m_rest |= few << held;
  if (held + 8 * left >= 64) {
    m_eights = mixFolded(m_eights, m_rest);
    m_rest = held != 0 ? few >> (64 - held) : 0;
  }
}

std::uint64_t PathHash::value() const noexcept {
  return finish(mixFolded(m_eights ^ m_size, m_rest));
}

}  // namespace LTLib::detail
