#include "ltlib/foundation/uid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <stdexcept>

#include "ltlib/foundation/uid_seed.h"
#include "tests/support/child_process.h"
#include "tests/support/recording_tracer.h"
#include "tests/support/threads.h"

namespace {

using namespace LTLib::Testing;
using LTLib::detail::EntropyDraw;

constexpr char kZero[] = "00000000-0000-0000-0000-000000000000";
constexpr char kSample[] = "01234567-89ab-cdef-fedc-ba9876543210";

std::string textOf(const UID& id) {
  char buffer[37];
  EXPECT_EQ(id.toString(buffer, sizeof buffer), 37);
  return buffer;
}

TEST(Uid, ParsesAsLenientlyAsItsFormat) {
  const std::pair<const char*, std::string> cases[] = {
      {kSample, kSample},
      {"01234567-89AB-CDEF-FEDC-BA9876543210 and more", kSample},
      {" 01234567- 89ab- cdef-\tfedc-\nba98 76543210", kSample},
      {"01234567-89ab-cdef-fedc-ba987654321", "01234567-89ab-cdef-fedc-ba9807654321"},
      {"0x234567-89ab-cdef-fedc-ba9876543210", "00234567-89ab-cdef-fedc-ba9876543210"},
      {"1-2-3-4-00056", "00000001-0002-0003-0004-000500000006"},
      {"01234567-89ab-cdef-fedc-ba98", kZero},
      {"01234567-89abcdef-fedc-ba9876543210", kZero},
  };
  for (const auto& [text, value] : cases) {
    UID id(kSample);
    EXPECT_EQ(id.fromString(text), value != kZero) << text;
    EXPECT_EQ(textOf(id), value) << text;
  }
}

TEST(Uid, TextAndBytesAreOfOneOrderAndKeepToTheirPlace) {
  const UID id(kSample);
  char buffer[37] = "old";
  EXPECT_EQ(id.toString(buffer, 36), -1);
  EXPECT_STREQ(buffer, "old");

  const unsigned char told[16] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef,
                                  0xfe, 0xdc, 0xba, 0x98, 0x76, 0x54, 0x32, 0x10};
  unsigned char bytes[16] = {};
  id.to16bytes(bytes);
  EXPECT_TRUE(std::equal(bytes, bytes + 16, told));
  UID back = UID::Generate();
  back.from16bytes(bytes);
  EXPECT_EQ(textOf(back), kSample);
}

UID withByte(int place, unsigned char byte) {
  unsigned char bytes[16] = {};
  bytes[place] = byte;
  UID id;
  id.from16bytes(bytes);
  return id;
}

// The last of the four bytes of a word, as they are told, comes first.
TEST(Uid, ComparesBytesWithTheLowByteOfEachWordFirst) {
  const int order[] = {3, 2, 1, 0, 7, 6, 5, 4, 11, 10, 9, 8, 15, 14, 13, 12};
  UID greater = withByte(order[0], 2);
  for (const int place : order) {
    const UID smaller = withByte(place, 1);
    EXPECT_EQ(smaller.Compare(greater), -1) << place;
    EXPECT_EQ(greater.Compare(smaller), 1) << place;
    greater = smaller;
  }
  EXPECT_EQ(greater.Compare(greater), 0);
}

// More than the counter's range in all, from threads that draw their engines at once.
TEST(Uid, GeneratedValuesDiffer) {
  constexpr int kThreads = 4;
  constexpr std::size_t kEach = 20000;
  std::vector<std::string> drawn(kThreads * kEach);
  runTogether(kThreads, [&drawn](int thread) {
    for (std::size_t i = 0; i < kEach; ++i) {
      drawn[static_cast<std::size_t>(thread) * kEach + i] = textOf(UID::Generate());
    }
  });
  EXPECT_EQ(std::set(drawn.begin(), drawn.end()).size(), drawn.size());
}

// Generates on two threads, with a device that fails, and tells the traces.
const Scenario s_seeder("seeder", [](const std::vector<std::string>&) {
  LTLib::detail::entropySource() = []() -> EntropyDraw { throw std::runtime_error("none"); };
  static_cast<void>(UID::Generate());
  std::thread([] { static_cast<void>(UID::Generate()); }).join();
  for (const std::string& line : takeTraces()) {
    tellParent(line);
  }
  return 0;
});

// In a process of its own, since a process seeds once.
TEST(UidSeed, GoesOnWithoutTheDeviceAndSaysSoOnce) {
  ChildProcess child("seeder", {});
  EXPECT_EQ(child.hear(),
            "0 uid UID: operator() UID::Generate - random_device failed, using time-based seed");
  EXPECT_EQ(child.hear(), "");
  EXPECT_EQ(child.wait(), 0);
}

}  // namespace
