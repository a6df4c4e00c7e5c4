#include "ltlib/variables/expansion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

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

// The plain form of the expansion: start over from the beginning after each replacement.
class PlainExpansion {
 public:
  enum class End { kSuccess, kFailure, kNone };

  PlainExpansion(const Table& table, std::string start) : text(std::move(start)) {
    for (int steps = 0; end == End::kNone && steps < 5000 && text.size() < 20000; ++steps) {
      if (steps < kKept) {
        texts.push_back(text);
      }
      step(table);
    }
  }

  static constexpr int kKept = 200;

  End end = End::kNone;
  std::string text;
  std::vector<std::string> texts;  // before each of the first steps

 private:
  void step(const Table& table) {
    const std::size_t first = text.find('%');
    if (first == std::string::npos) {
      end = End::kSuccess;
      return;
    }
    const std::size_t second = text.find('%', first + 1);
    const auto row = second == std::string::npos
                         ? table.end()
                         : table.find(text.substr(first + 1, second - first - 1));
    if (row == table.end() || row->second == row->first) {
      end = End::kFailure;
      return;
    }
    text.replace(first, second - first + 1, row->second);
  }
};

TEST(Expansion, ReplacesLeftmostFirst) {
  const Table table = {{"P", "5%"},         {"x", "!"},        {"", "empty"},
                       {"A", "A"},          {"B", "A"},        {"Deep", "<%D1%>"},
                       {"D1", "(%D2%)"},    {"D2", "."},       {"Open", "%De"},
                       {"Pair", "%x%%x%"},  {"Nothing", ""},   {"Self", "%Self%"},
                       {"Grow", "g%Grow%"}, {"Even", "%Odd%"}, {"Odd", "-%Even%"},
                       {"Across", "%Acr"},  {"Mark", "%"},     {"Twice", "%Mark%x%Mark%"}};
  struct Case {
    const char* text;
    bool succeeds;
    const char* expanded;
  };
  const Case cases[] = {
      {"", true, ""},
      {"plain", true, "plain"},
      {"%", false, "%"},
      {"a%", false, "a%"},
      {"a%b", false, "a%b"},
      {"%x%%x%", true, "!!"},
      {"%X%", false, "%X%"},
      {"%%", true, "empty"},
      {"%A%", false, "%A%"},
      {"%B%", true, "A"},
      {"a%Deep%b%Deep%c", true, "a<(.)>b<(.)>c"},
      {"%P%x%", true, "5!"},
      {"%P%x%%x%", true, "5!!"},
      {"%P%%x%", false, "5emptyx%"},
      {"%Open%ep%", true, "<(.)>"},
      {"%Open%ep%%Deep%", true, "<(.)><(.)>"},
      {"%Pair%%Pair%", true, "!!!!"},
      {"%Nothing%%Nothing%", true, ""},
      {"%x%%Missing%%x%", false, "!%Missing%%x%"},
      {"%x%%Self%%x%", false, "!%Self%%x%"},
      {"%Grow%", false, "g%Grow%"},
      {"%Even%", false, "-%Even%"},
      {"%Mark%x%", true, "!"},
      {"%Mark%x%%Mark%x%", true, "!!"},
      {"%Twice%", false, "!Mark%"},
      {"%Across%oss%", false, "%Acr"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.text);
    TableSource source(table);
    std::string text = row.text;
    EXPECT_EQ(expandReferences(text, source), row.succeeds ? 0 : LTLib::kFailure);
    EXPECT_EQ(text, row.expanded);
  }
}

class RandomText {
 public:
  explicit RandomText(unsigned int seed) : m_random(seed) {}

  std::string text(unsigned int pieces) {
    static const char* const kPieces[] = {"%A%", "%B%", "%C%", "%%", "%", "A", "B", "x", ""};
    std::string made;
    for (std::size_t count = m_random() % (pieces + 1); count != 0; --count) {
      made += kPieces[m_random() % std::size(kPieces)];
    }
    return made;
  }

  Table table() {
    Table made;
    for (const char* name : {"", "A", "B", "C", "AB", "x"}) {
      if (m_random() % 5 != 0) {
        made[name] = text(4);
      }
    }
    return made;
  }

 private:
  std::mt19937 m_random;
};

// Whatever ends by the plain steps ends in the same way; whatever does not fails at one of the
// texts that the plain steps come by.
TEST(Expansion, AgreesWithThePlainSteps) {
  const unsigned int seed = std::random_device()();
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  RandomText random(seed);
  std::size_t endless = 0;
  for (int round = 0; round < 1000 && !HasFailure(); ++round) {
    const Table table = random.table();
    const std::string start = random.text(6);
    const PlainExpansion plain(table, start);
    const bool ends = plain.end != PlainExpansion::End::kNone;
    endless += ends ? 0 : 1;
    std::string traced = start;
    std::vector<ExpansionStep> steps;
    TableSource stepping(table);
    const QSResult tracedResult = expandReferences(traced, stepping, &steps);
    for (const bool fixed : {true, false}) {
      if (!ends && !fixed && round % 50 != 0) {
        continue;
      }
      TableSource source(table, fixed);
      std::string text = start;
      const QSResult result = expandReferences(text, source);
      EXPECT_EQ(result == 0, plain.end == PlainExpansion::End::kSuccess) << start;
      if (ends) {
        EXPECT_EQ(text, plain.text) << start;
      } else if (fixed) {
        EXPECT_NE(std::find(plain.texts.begin(), plain.texts.end(), text), plain.texts.end());
        EXPECT_EQ(text, traced);
      }
      EXPECT_EQ(result, fixed ? tracedResult : result);
    }
    for (std::size_t i = 0; i < steps.size() && i + 1 < plain.texts.size(); ++i) {
      EXPECT_EQ(steps[i].text, plain.texts[i + 1]);
    }
  }
  EXPECT_GT(endless, 0u);
}

TEST(Expansion, RefusesCyclesAtOnce) {
  struct Case {
    const char* label;
    Table table;
  };
  Table ten;
  for (int i = 0; i < 10; ++i) {
    ten["V" + std::to_string(i)] = "-%V" + std::to_string((i + 1) % 10) + "%-";
  }
  const Case cases[] = {{"itself", {{"V0", "%V0%"}}},
                        {"two", {{"V0", "%B%"}, {"B", "%V0%"}}},
                        {"ten, growing", ten},
                        {"growing on the left", {{"V0", "x%V0%"}}},
                        {"growing on the right", {{"V0", "%V0%x"}}},
                        {"doubling", {{"V0", "%V0%%V0%"}}},
                        {"behind a detour", {{"V0", "%B%%B%%V0%"}, {"B", "%C%"}, {"C", ""}}},
                        {"put together from parts", {{"V0", "%M%V0%M%"}, {"M", "%"}}}};
  for (const Case& row : cases) {
    TableSource source(row.table);
    std::string text = "%V0%";
    EXPECT_EQ(expandReferences(text, source), LTLib::kFailure) << row.label;
    EXPECT_LT(source.lookUps, 20u) << row.label;
    TableSource changing(row.table, false);
    text = "%V0%";
    EXPECT_EQ(expandReferences(text, changing), LTLib::kFailure) << row.label;
  }
}

// Answers with a reference to the name itself until the count runs out.
class CountingSource final : public LTLib::detail::ReplacementSource {
 public:
  bool isFixed() const override { return false; }
  bool find(std::string_view /*name*/, std::string_view& replacement) override {
    replacement = left-- > 0 ? "x%N%" : "";
    return true;
  }
  int left = 5000;
};

TEST(Expansion, LetsChangingAnswersEndWhatLooksLikeACycle) {
  CountingSource source;
  std::string text = "%N%";
  EXPECT_EQ(expandReferences(text, source), 0);
  EXPECT_EQ(text, std::string(5000, 'x'));
}

TEST(Expansion, WorksOutANameOnce) {
  Table table = {{"V0", ""}};
  for (int i = 1; i <= 64; ++i) {
    const std::string below = "%V" + std::to_string(i - 1) + "%";
    table["V" + std::to_string(i)] = below + below;
  }
  TableSource source(table);
  std::string text = "<%V64%>";
  EXPECT_EQ(expandReferences(text, source), 0);
  EXPECT_EQ(text, "<>");
  EXPECT_LE(source.lookUps, 66u);

  std::string many;
  std::string expected;
  const Table paths = {{"Root", "Software\\%Maker%"}, {"Maker", "Somebody"}};
  for (int i = 0; i < 100000; ++i) {
    many += "%Root%;";
    expected += "Software\\Somebody;";
  }
  TableSource counted(paths);
  EXPECT_EQ(expandReferences(many, counted), 0);
  EXPECT_EQ(many, expected);
  EXPECT_EQ(counted.lookUps, 2u);
}

TEST(Expansion, StopsAtTheLargestText) {
  const std::size_t limit = 4000;
  const Table table = {{"Q", std::string(1000, 'q')}, {"E", "%Q%%Q%"}, {"N", ""}};
  struct Case {
    const char* label;
    std::string text;
    bool succeeds;
    std::size_t size;
  };
  const Case cases[] = {{"exact", "%Q%%Q%%Q%%Q%", true, 4000},
                        {"one more", "%Q%%Q%%Q%%Q%x", false, 3004},
                        {"exact with a known name", "%E%%E%", true, 4000},
                        {"more with a known name", "%E%%E%%N%", false, 2006},
                        {"large before", std::string(5000, '-') + "%N%", true, 5000},
                        {"large before and growing", std::string(5000, '-') + "%Q%", false, 5003}};
  for (const Case& row : cases) {
    TableSource source(table);
    std::string text = row.text;
    EXPECT_EQ(expandReferences(text, source, nullptr, limit), row.succeeds ? 0 : LTLib::kFailure)
        << row.label;
    EXPECT_EQ(text.size(), row.size) << row.label;
  }
}

}  // namespace
