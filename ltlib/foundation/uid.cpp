#include "ltlib/foundation/uid.h"

#include <atomic>
#include <cstdio>
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

constexpr char kSource[] = "uid";
constexpr char kTag[] = "UID:";
constexpr char kFunction[] = "operator()";

constinit ltDoOnce_t s_seeded;
constinit std::atomic<std::uint16_t> s_sequence{0};

// Engines have no destructors, so that identifiers can be made to the very end of the process.
constinit std::optional<std::mt19937> s_seedEngine;
constinit thread_local std::optional<std::mt19937> t_engine;

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
                          kSource, __LINE__, kTag, kFunction);
  return draw.word;
}

std::uint32_t drawTimeSeed() {
  std::stringstream text;
  Tracer::_internal_::Warning(text << "UID::Generate - random_device failed, using time-based seed",
                              kSource, __LINE__, kTag, kFunction);
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
std::uint32_t drawThreadSeed() {
  const LTLib::Platform::ThreadLockScope hold(
      LTLib::Platform::processLock(LTLib::Platform::ProcessLock::kSeeds));
  return static_cast<std::uint32_t>((*s_seedEngine)());
}

std::mt19937& threadEngine() {
  std::optional<std::mt19937>& engine = t_engine;
  if (!engine) {
    engine.emplace(drawThreadSeed());
  }
  return *engine;
}

std::uint64_t nanoseconds(const MonotonicTime& time) {
  // In two parts, since ticks times 10^9 would overflow within seconds of some clocks.
  constexpr std::uint64_t kPerSecond = 1000000000u;
  return (time.ticks / time.ticksPerSecond) * kPerSecond +
         ((time.ticks % time.ticksPerSecond) * kPerSecond) / time.ticksPerSecond;
}

// The word whose order is that of the given word's bytes, the least significant first.
std::uint32_t reversed(std::uint32_t word) {
  return (word << 24) | ((word & 0xFF00u) << 8) | ((word >> 8) & 0xFF00u) | (word >> 24);
}

bool parse(const char* text, std::uint32_t (&words)[4]) {
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
  const int length = std::snprintf(
      buffer, static_cast<std::size_t>(size), "%08x-%04x-%04x-%04x-%04x%08x", m_words[0],
      m_words[1] >> 16, m_words[1] & 0xFFFFu, m_words[2] >> 16, m_words[2] & 0xFFFFu, m_words[3]);
  return length == kTextSize - 1 ? kTextSize : -1;
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
  for (std::uint32_t& word : m_words) {
    for (int i = 0; i < 4; ++i) {
      word = (word << 8) | *in++;
    }
  }
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
  std::mt19937& engine = threadEngine();
  const auto a = static_cast<std::uint32_t>(engine());
  const auto b = static_cast<std::uint32_t>(engine());
  // Tells apart what two threads draw at one tick; 16 bits, which the words below have room for.
  const std::uint32_t c = s_sequence.fetch_add(1, std::memory_order_relaxed);

  UID value;
  value.m_words[0] = a ^ hi;
  value.m_words[1] = b ^ pid ^ c;
  value.m_words[2] = a ^ ((static_cast<std::uint32_t>(ns & 0xFFFFu) << 16) | (pid & 0xFFFFu));
  value.m_words[3] = (c << 8) ^ pid ^ (((b & 0xFFFFu) << 16) | (hi & 0xFFFFu));
  return value;
}
