#include "ltlib/foundation/uid.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <optional>
#include <random>
#include <sstream>

#include "ltlib/foundation/do_once.h"
#include "ltlib/foundation/uid_seed.h"
#include "ltlib/platform/fork.h"
#include "ltlib/platform/process.h"
#include "lttracer/tracer.h"

namespace LTLib::detail {
namespace {

// The device that the default constructor picks: a named one does not exist everywhere.
EntropyDraw drawFromDevice() {
  std::random_device device;
  const unsigned int word = device();
  return {word, device.entropy()};
}

}  // namespace

EntropySource& entropySource() noexcept {
  static EntropySource source = drawFromDevice;
  return source;
}

}  // namespace LTLib::detail

namespace {

using LTLib::Platform::MonotonicTime;
using LTLib::Platform::monotonicTime;
using LTLib::Platform::processId;

constexpr int kTextSize = 37;
constexpr int kFieldCount = 6;
constexpr int kByteCount = 16;

constexpr char kUidSource[] = "uid";
constexpr char kUidTag[] = "UID:";
constexpr char kFunction[] = "operator()";

// std::mt19937 with words as wide as its numbers are: on Linux it takes words of twice that width,
// which take three times as long.
using Engine =
    std::mersenne_twister_engine<std::uint32_t, 32, 624, 397, 31, 0x9908b0df, 11, 0xffffffff, 7,
                                 0x9d2c5680, 15, 0xefc60000, 18, 1812433253>;

constinit ltDoOnce_t s_seeded;
constinit std::atomic<std::uint16_t> s_sequence{0};

// Engines have no destructors, so that identifiers can be made to the very end of the process.
constinit std::optional<Engine> s_seedEngine;
constinit thread_local std::optional<Engine> t_engine;

// A child of a fork would go on with its parent's numbers.
void forgetEngines() noexcept {
  t_engine.reset();
  s_seeded.done.store(0, std::memory_order_relaxed);
  s_seeded.entered.store(-1, std::memory_order_relaxed);
}

const LTLib::Platform::ForkedChildHook s_childHook(forgetEngines);

std::uint32_t drawHardwareSeed() {
  const LTLib::detail::EntropyDraw draw = LTLib::detail::entropySource()();
  char entropy[64];
  std::snprintf(entropy, sizeof entropy, "%f", draw.entropy);
  std::stringstream text;
  Tracer::_internal_::Log(Tracer::kDetailEnvironment,
                          text << "UID::Generate - using hardware entropy"
                               << ":" << entropy,
                          kUidSource, __LINE__, kUidTag, kFunction);
  return draw.word;
}

std::uint32_t drawTimeSeed() {
  std::stringstream text;
  Tracer::_internal_::Warning(text << "UID::Generate - random_device failed, using time-based seed",
                              kUidSource, __LINE__, kUidTag, kFunction);
  return static_cast<std::uint32_t>(std::time(nullptr));
}

std::uint32_t drawSeed() {
  try {
    return drawHardwareSeed();
  } catch (...) {
    return drawTimeSeed();
  }
}

// Time and process are mixed in for a device that gives each process the same.
void seed() {
  const std::uint32_t drawn = drawSeed();
  s_seedEngine.emplace(drawn ^ static_cast<std::uint32_t>(std::clock()) ^ processId());
}

// One device for the process, asked once: each thread's engine is seeded by the one that it seeded.
// Not inline: the filling of an engine would have every call of Generate save registers for it.
[[gnu::noinline]] void makeEngine(std::optional<Engine>& engine) {
  const LTLib::Platform::ThreadLockScope hold(
      LTLib::Platform::processLock(LTLib::Platform::ProcessLock::kSeeds));
  engine.emplace((*s_seedEngine)());
}

Engine& threadEngine() {
  std::optional<Engine>& engine = t_engine;
  if (!engine) {
    makeEngine(engine);
  }
  return *engine;
}

std::uint64_t nanoseconds(const MonotonicTime& time) {
  // In two parts, since ticks times 10^9 would overflow within seconds of some clocks.
  constexpr std::uint64_t kPerSecond = 1000000000u;
  // By the formula, too, but without its divisions.
  if (time.ticksPerSecond == kPerSecond) {
    return time.ticks;
  }
  return (time.ticks / time.ticksPerSecond) * kPerSecond +
         ((time.ticks % time.ticksPerSecond) * kPerSecond) / time.ticksPerSecond;
}

// The word whose order is that of the given word's bytes, the least significant first.
std::uint32_t reversed(std::uint32_t word) {
  return (word << 24) | ((word & 0xFF00u) << 8) | ((word >> 8) & 0xFF00u) | (word >> 24);
}

// The text form is the two digits of each byte, with dashes ahead of these.
constexpr bool followsDash(int byte) {
  return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

using DigitPairs = std::array<char[2], 256>;
using DigitValues = std::array<std::uint8_t, 256>;

constexpr std::uint8_t kNoDigit = 0xFF;

constexpr DigitPairs kDigitPairs = [] {
  constexpr char kDigits[] = "0123456789abcdef";
  DigitPairs pairs{};
  for (std::size_t byte = 0; byte < pairs.size(); ++byte) {
    pairs[byte][0] = kDigits[byte >> 4];
    pairs[byte][1] = kDigits[byte & 15];
  }
  return pairs;
}();

constexpr DigitValues kDigitValues = [] {
  DigitValues values{};
  values.fill(kNoDigit);
  for (std::uint8_t digit = 0; digit < 16; ++digit) {
    values[static_cast<unsigned char>("0123456789abcdef"[digit])] = digit;
    values[static_cast<unsigned char>("0123456789ABCDEF"[digit])] = digit;
  }
  return values;
}();

std::uint8_t valueOf(char digit) {
  return kDigitValues[static_cast<unsigned char>(digit)];
}

// Takes a text form with all its digits, as nearly every one is; false for any other text, which
// may parse all the same. Reads no further than the first byte that does not belong there.
bool takeFullForm(const char* text, unsigned char (&bytes)[kByteCount]) {
  for (int i = 0; i < kByteCount; ++i) {
    if (followsDash(i) && *text++ != '-') {
      return false;
    }
    const std::uint8_t high = valueOf(*text++);
    if (high == kNoDigit) {
      return false;
    }
    const std::uint8_t low = valueOf(*text++);
    if (low == kNoDigit) {
      return false;
    }
    bytes[i] = static_cast<unsigned char>(high << 4 | low);
  }
  return true;
}

void putTogether(const unsigned char* bytes, std::uint32_t (&words)[4]) {
  for (std::uint32_t& word : words) {
    for (int i = 0; i < 4; ++i) {
      word = (word << 8) | *bytes++;
    }
  }
}

bool scan(const char* text, std::uint32_t (&words)[4]) {
  unsigned int fields[kFieldCount];
  // The very format of the text form, whose leniency is wanted; what overflows a field is cut.
  const int taken = std::sscanf(text, "%08x-%04x-%04x-%04x-%04x%08x", &fields[0], &fields[1],
                                &fields[2], &fields[3], &fields[4], &fields[5]);
  if (taken != kFieldCount) {
    return false;
  }
  words[0] = fields[0];
  words[1] = (fields[1] << 16) | fields[2];
  words[2] = (fields[3] << 16) | fields[4];
  words[3] = fields[5];
  return true;
}

bool parse(const char* text, std::uint32_t (&words)[4]) {
  unsigned char bytes[kByteCount];
  if (takeFullForm(text, bytes)) {
    putTogether(bytes, words);
    return true;
  }
  return scan(text, words);
}

}  // namespace

UID::UID(const char* text) {
  parse(text, m_words);
}

bool UID::fromString(const std::string& text) {
  *this = UID();
  return parse(text.c_str(), m_words);
}

int UID::toString(char* buffer, int size) const {
  if (buffer == nullptr) {
    return kTextSize;
  }
  if (size < kTextSize) {
    return -1;
  }
  unsigned char bytes[kByteCount];
  to16bytes(bytes);
  for (int i = 0; i < kByteCount; ++i) {
    if (followsDash(i)) {
      *buffer++ = '-';
    }
    std::memcpy(buffer, kDigitPairs[bytes[i]], 2);
    buffer += 2;
  }
  *buffer = '\0';
  return kTextSize;
}

void UID::to16bytes(unsigned char* out) const {
  if (out == nullptr) {
    return;
  }
  for (const std::uint32_t word : m_words) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      *out++ = static_cast<unsigned char>(word >> shift);
    }
  }
}

void UID::from16bytes(const unsigned char* in) {
  if (in == nullptr) {
    return;
  }
  putTogether(in, m_words);
}

// As a comparison of the 16 bytes in memory of a machine that stores the low byte first.
int UID::Compare(const UID& other) const {
  for (int i = 0; i < 4; ++i) {
    if (m_words[i] != other.m_words[i]) {
      return reversed(m_words[i]) < reversed(other.m_words[i]) ? -1 : 1;
    }
  }
  return 0;
}

UID UID::Generate() {
  ltDoOnce(s_seeded, seed);
  const std::uint64_t ns = nanoseconds(monotonicTime());
  const auto hi = static_cast<std::uint32_t>(ns >> 32);
  const std::uint32_t pid = processId();
  Engine& engine = threadEngine();
  const std::uint32_t a = engine();
  const std::uint32_t b = engine();
  // Tells apart what two threads draw at one tick; 16 bits, which the words below have room for.
  const std::uint32_t c = s_sequence.fetch_add(1, std::memory_order_relaxed);

  UID value;
  value.m_words[0] = a ^ hi;
  value.m_words[1] = b ^ pid ^ c;
  value.m_words[2] = a ^ ((static_cast<std::uint32_t>(ns & 0xFFFFu) << 16) | (pid & 0xFFFFu));
  value.m_words[3] = (c << 8) ^ pid ^ (((b & 0xFFFFu) << 16) | (hi & 0xFFFFu));
  return value;
}
