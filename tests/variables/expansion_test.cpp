// The engine of the expansion over tables of the test's own, and against its plain form.
#include "ltlib/variables/expansion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <tuple>

namespace {

using LTLib::ExpansionStep;
using LTLib::detail::expandReferences;

using Table = std::map<std::string, std::string, std::less<>>;

class TableSource final : public LTLib::detail::ReplacementSource {
 public:
  explicit TableSource(const Table& table, bool fixed = true) : m_table(table), m_fixed(fixed) {}

  bool isFixed() const override { return m_fixed; }

  bool find(std::string_view name, std::string_view& replacement) override {
    ++lookUps;
    const auto row = m_table.find(name);
    if (row != m_table.end()) {
      replacement = row->second;
    }
    return row != m_table.end();
  }

  std::size_t lookUps = 0;

 private:
  const Table& m_table;
  bool m_fixed;
};

// From "name=value;" for each row.
Table tableOf(std::string_view rows) {
  Table table;
  for (; !rows.empty(); rows.remove_prefix(rows.find(';') + 1)) {
    const std::size_t equals = rows.find('=');
    table[std::string(rows.substr(0, equals))] =
        rows.substr(equals + 1, rows.find(';') - equals - 1);
  }
  return table;
}

TEST(Expansion, ReplacesLeftmostFirst) {
  const Table table = tableOf(
      "x=!;=empty;A=A;Deep=<%D1%>;D1=(%D2%);D2=.;Open=%De;Pair=%x%%x%;Even=%Odd%;Odd=-%Even%;"
      "Mark=%;Parts=%Mark%Parts%Mark%;Detour=%Pair%%Detour%;");
  const std::tuple<const char*, bool, const char*> cases[] = {
      {"%", false, "%"},
      {"%%", true, "empty"},
      {"%A%", false, "%A%"},
      {"%Open%ep%%Deep%", true, "<(.)><(.)>"},
      {"%x%%Missing%%x%", false, "!%Missing%%x%"},
      // What leads back to itself is refused at once.
      {"%Even%", false, "-%Even%"},
      {"%Parts%", false, "%Parts%Mark%"},
      {"%Detour%", false, "!!%Detour%"},
  };
  for (const auto& [start, succeeds, expanded] : cases) {
    TableSource source(table);
    std::string text = start;
    EXPECT_EQ(expandReferences(text, source), succeeds ? 0 : LTLib::kFailure) << start;
    EXPECT_EQ(text, expanded) << start;
    EXPECT_LT(source.lookUps, 10u) << start;
  }
}

// The plain form of the expansion, of which this is one step: the leftmost reference is replaced,
// starting over from the beginning of the text. False when there is none that can be.
bool step(const Table& table, std::string& text) {
  const std::size_t first = text.find('%');
  const std::size_t second = first != text.npos ? text.find('%', first + 1) : text.npos;
  const auto row =
      second != text.npos ? table.find(text.substr(first + 1, second - first - 1)) : table.end();
  if (row == table.end() || row->second == row->first) {
    return false;
  }
  text.replace(first, second - first + 1, row->second);
  return true;
}

std::string randomText(std::mt19937& random, unsigned int pieces) {
  constexpr const char* kPieces[] = {"%A%", "%B%", "%C%", "%%", "%", "A", "B", "x", ""};
  std::string made;
  for (std::size_t count = random() % (pieces + 1); count != 0; --count) {
    made += kPieces[random() % std::size(kPieces)];
  }
  return made;
}

// Whatever ends by the plain steps ends in the same way; whatever does not fails.
TEST(Expansion, AgreesWithThePlainSteps) {
  const unsigned int seed = std::random_device()();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937 random(seed);
  int endless = 0;
  for (int round = 0; round < 1000 && !HasFailure(); ++round) {
    Table table;
    for (const char* name : {"", "A", "B", "C", "AB", "x"}) {
      if (random() % 5 != 0) {
        table[name] = randomText(random, 4);
      }
    }
    const std::string start = randomText(random, 6);
    std::string plain = start;
    int left = 5000;
    while (left > 0 && plain.size() < 20000 && step(table, plain)) {
      --left;
    }
    const bool ends = left > 0 && plain.size() < 20000;
    endless += ends ? 0 : 1;
    TableSource tracing(table);
    std::vector<ExpansionStep> steps;
    std::string traced = start;
    (void)expandReferences(traced, tracing, &steps);
    std::string stepped = start;
    for (const ExpansionStep& taken : steps) {
      ASSERT_TRUE(step(table, stepped));
      ASSERT_EQ(taken.text, stepped);
      ASSERT_EQ(table.at(taken.name), taken.replacement);
    }
    EXPECT_EQ(traced, ends ? plain : stepped) << start;
    for (const bool fixed : {true, false}) {
      if (!ends && !fixed && round % 50 != 0) {
        continue;  // it takes its time
      }
      TableSource source(table, fixed);
      std::string text = start;
      const bool succeeds = ends && plain.find('%') == std::string::npos;
      EXPECT_EQ(expandReferences(text, source), succeeds ? 0 : LTLib::kFailure) << start;
      EXPECT_EQ(text, ends || fixed ? traced : text) << start;
    }
  }
  EXPECT_GT(endless, 0);
}

// Names that each hold the one before twice, from an empty one on.
Table doublingTable() {
  Table table = {{"0", ""}};
  for (int i = 1; i <= 64; ++i) {
    const std::string below = "%" + std::to_string(i - 1) + "%";
    table[std::to_string(i)] = below + below;
  }
  return table;
}

TEST(Expansion, WorksOutANameOnce) {
  const Table table = doublingTable();
  TableSource source(table);
  std::string text = "<";
  for (int i = 0; i < 100000; ++i) {
    text += "%64%";
  }
  EXPECT_EQ(expandReferences(text += ">", source), 0);
  EXPECT_EQ(text, "<>");
  EXPECT_LE(source.lookUps, 66u);
}

// The size is that of the text, if it was no longer at the start.
TEST(Expansion, StopsAtItsLimits) {
  Table table = doublingTable();
  table.insert({{"x", "y"}, {"Two", "%x%%x%"}, {"Q", "ten bytes."}, {"E", "%Q%%Q%"}, {"N", ""}});
  const LTLib::detail::ExpansionLimits size{.size = 20};
  const LTLib::detail::ExpansionLimits replacements{.replacements = 4};
  const std::tuple<const char*, LTLib::detail::ExpansionLimits, bool, bool, const char*> cases[] = {
      {"%E%", size, true, true, "ten bytes.ten bytes."},
      {"%Q%%Q%x", size, true, false, "ten bytes.%Q%x"},
      {"longer than twenty bytes%N%", size, true, true, "longer than twenty bytes"},
      {"longer than twenty bytes%Q%", size, true, false, "longer than twenty bytes%Q%"},
      {"%x%%x%%x%%x%", replacements, true, true, "yyyy"},
      {"%x%%x%%x%%x%%x%", replacements, true, false, "yyyy%x%"},
      {"%Two%%Two%", replacements, true, true, "yyyy"},
      {"%Two%%Two%", replacements, false, false, "yy%x%%x%"},
      {"%64%", replacements, false, false, "%60%%60%%61%%62%%63%"},
  };
  for (const auto& [start, limits, fixed, succeeds, expanded] : cases) {
    TableSource source(table, fixed);
    std::string text = start;
    EXPECT_EQ(expandReferences(text, source, nullptr, limits), succeeds ? 0 : LTLib::kFailure);
    EXPECT_EQ(text, expanded) << start;
  }
}

// Without its bound a trace that keeps a text for each of 2^64 replacements would not end; the
// expansion goes on as without it.
TEST(Expansion, ATraceEndsAheadOfAnExpansionWithoutMeasure) {
  const Table table = doublingTable();
  TableSource source(table);
  std::string text = "<%64%>";
  std::vector<ExpansionStep> steps;
  EXPECT_EQ(expandReferences(text, source, &steps, {.noted = 1000}), 0);
  EXPECT_EQ(text, "<>");
  ASSERT_FALSE(steps.empty());
  EXPECT_LT(steps.size(), 1000 / sizeof(ExpansionStep) + 1);
}

}  // namespace
