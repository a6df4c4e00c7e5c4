#include "ltlib/foundation/uid.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "ltlib/foundation/uid_seed.h"
#include "tests/support/child_process.h"
#include "tests/support/latch.h"
#include "tests/support/recording_tracer.h"

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
  struct Case {
    const char* text;
    bool parses;
    const char* value;
  };
  const Case cases[] = {
      {kSample, true, kSample},
      {"01234567-89AB-CDEF-FEDC-BA9876543210", true, kSample},
      {"01234567-89ab-cdef-fedc-ba9876543210 and more", true, kSample},
      {" 01234567- 89ab- cdef-\tfedc-\nba98 76543210", true, kSample},
      {"1-2-3-4-00056", true, "00000001-0002-0003-0004-000500000006"},
      {"1-2-3-4-5 6", true, "00000001-0002-0003-0004-000500000006"},
      {kZero, true, kZero},
      {"", false, kZero},
      {"no identifier", false, kZero},
      {"01234567-89ab-cdef-fedc-ba98", false, kZero},
      {"01234567-89ab-cdef-fedc", false, kZero},
      {"01234567-89abcdef-fedc-ba9876543210", false, kZero},
      {"0123456789ab-cdef-fedc-ba9876543210", false, kZero},
      {"{01234567-89ab-cdef-fedc-ba9876543210}", false, kZero},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.text);
    UID id(kSample);
    EXPECT_EQ(id.fromString(row.text), row.parses);
    EXPECT_EQ(textOf(id), row.value);
    EXPECT_EQ(textOf(UID(row.text)), row.value);
  }
}

TEST(Uid, ToStringAsksForItsSizeAndKeepsToIt) {
  struct Case {
    bool buffer;
    int size;
    int result;
  };
  const Case cases[] = {{false, 0, 37}, {false, -1, 37}, {true, 36, -1}, {true, 0, -1},
                        {true, -1, -1}, {true, 37, 37},  {true, 40, 37}};
  for (const Case& row : cases) {
    char buffer[41] = "untouched";
    EXPECT_EQ(UID(kSample).toString(row.buffer ? buffer : nullptr, row.size), row.result)
        << row.size;
    EXPECT_STREQ(buffer, row.buffer && row.result == 37 ? kSample : "untouched") << row.size;
  }
}

TEST(Uid, BytesStandInTheOrderOfTheText) {
  const unsigned char told[16] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef,
                                  0xfe, 0xdc, 0xba, 0x98, 0x76, 0x54, 0x32, 0x10};
  const UID id(kSample);
  unsigned char bytes[16] = {};
  id.to16bytes(bytes);
  EXPECT_EQ(std::memcmp(bytes, told, sizeof told), 0);
  UID back = UID::Generate();
  back.from16bytes(bytes);
  EXPECT_EQ(back.Compare(id), 0);
  id.to16bytes(nullptr);
  back.from16bytes(nullptr);
  EXPECT_EQ(textOf(back), kSample);
}

TEST(Uid, ComparesBytesWithTheLowByteOfEachWordFirst) {
  struct Case {
    const char *left, *right;
    int result;
  };
  const Case cases[] = {
      {kSample, kSample, 0},
      {"01000000-0000-0000-0000-000000000000", "00000001-0000-0000-0000-000000000000", -1},
      {"000000ff-0000-0000-0000-000000000000", "ff000000-0000-0000-0000-000000000000", 1},
      {"00000000-0000-0001-0000-000000000000", "00000000-0100-0000-0000-000000000000", 1},
      {"00000000-0000-0000-0000-000000000001", "00000000-0000-0000-0000-000000000080", -1},
      {"00000000-0000-0000-0000-0000ffffff00", "00000000-0000-0000-0001-000000000000", -1},
      {"00000001-ffff-ffff-ffff-ffffffffffff", "00000002-0000-0000-0000-000000000000", -1},
  };
  for (const Case& row : cases) {
    EXPECT_EQ(UID(row.left).Compare(UID(row.right)), row.result) << row.left;
    EXPECT_EQ(UID(row.right).Compare(UID(row.left)), -row.result) << row.left;
  }
}

// More than the counter's range in all, from threads that draw their engines at once.
TEST(Uid, GeneratedValuesDiffer) {
  constexpr int kThreads = 4;
  constexpr int kEach = 20000;
  std::vector<std::vector<std::string>> drawn(kThreads);
  LTLib::Testing::Latch start(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (std::vector<std::string>& mine : drawn) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      for (int i = 0; i < kEach; ++i) {
        mine.push_back(textOf(UID::Generate()));
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  std::set<std::string> all;
  for (const std::vector<std::string>& mine : drawn) {
    all.insert(mine.begin(), mine.end());
  }
  EXPECT_EQ(all.size(), std::size_t{kThreads} * kEach);
}

// Generates twice, on two threads, with a device of that kind, and tells the traces.
const Scenario s_seeder("seeder", [](const std::vector<std::string>& arguments) {
  LTLib::detail::entropySource() = [] { return EntropyDraw{7, 31.25}; };
  if (arguments[0] == "failing") {
    LTLib::detail::entropySource() = []() -> EntropyDraw { throw std::runtime_error("none"); };
  }
  TraceRecording recording;
  UID second;
  const UID first = UID::Generate();
  std::thread([&] { second = UID::Generate(); }).join();
  for (const TraceLine& line : recording.take()) {
    tellParent(std::to_string(line.detail) + " " + line.file + " " + line.tag + " " +
               line.function + " " + line.text);
  }
  return first.Compare(second) != 0 ? 0 : 1;
});

// One process per case, since a process seeds once.
TEST(UidSeed, IsTracedOnceHoweverItWent) {
  struct Case {
    const char *device, *trace;
  };
  const Case cases[] = {
      {"working", "4 uid UID: operator() UID::Generate - using hardware entropy:31.250000"},
      {"failing",
       "0 uid UID: operator() UID::Generate - random_device failed, using time-based seed"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.device);
    ChildProcess child("seeder", {row.device});
    EXPECT_EQ(child.hear(), row.trace);
    EXPECT_EQ(child.hear(), "");
    EXPECT_EQ(child.wait(), 0);
  }
}

}  // namespace
