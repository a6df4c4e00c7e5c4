// The face for settings by type, on whichever backend serves. tests/project/face.cpp has the table of
// what must not compile.
#include "ltlib/settings.h"

#include <array>

#include "tests/registry/registry_fixture.h"
#include "tests/support/system.h"

using namespace std::chrono_literals;

namespace {

enum class Level { kLow, kHigh, kNameless };

struct Colour {
  std::uint32_t rgb = 0;
  bool operator==(const Colour&) const = default;
};

}  // namespace

template <>
inline constexpr std::array LTLib::enumNames<Level> = {std::pair{Level::kLow, "low"},
                                                       std::pair{Level::kHigh, "high"}};

template <>
struct LTLib::SettingTraits<Colour> {
  using Stored = std::uint32_t;
  static std::optional<Colour> fromStored(std::uint32_t rgb) {
    return rgb <= 0xFFFFFF ? std::optional(Colour{rgb}) : std::nullopt;
  }
  static std::uint32_t toStored(const Colour& colour) { return colour.rgb; }
};

namespace LTLib::Testing {
namespace {

class Settings : public RegistryObjects {
 protected:
  const Key m_key{Root::kCurrentUser, path("Settings")};

  // What a T is read as: "is", "absent", or the condition; with the code, that alone tells.
  template <SettingType T>
  std::string readAs(const T& expected) const {
    std::error_code code;
    const std::optional<T> got = m_key.get<T>("Value", code);
    bool threw = false;
    try {
      EXPECT_EQ(m_key.get<T>("Value"), got);
    } catch (const SettingsError& error) {
      threw = error.code() == code;
    }
    EXPECT_EQ(threw, static_cast<bool>(code));
    return code               ? code.default_error_condition().message()
           : !got             ? "absent"
           : *got == expected ? "is"
                              : "is something else";
  }
};

TEST_F(Settings, EachTypeComesBackAndNothingIsCut) {
  const auto check = [&](const char* label, const NewValue& value, auto expected,
                         const char* answer = "is") {
    m_key.set("Value", value);
    EXPECT_EQ(readAs(expected), answer) << label;
  };
  constexpr auto kOtherType = "is of another type";
  constexpr auto kOutOfRange = "is out of range";
  EXPECT_EQ(readAs(1), "absent");
  check("zero", 0, 0);
  check("a number over a number", 7, 7u);
  check("a text over a number", "eight", std::string("eight"));
  check("a text as a number", "eight", 8, kOtherType);
  check("a number as a text", 8, std::string("8"), kOtherType);
  check("the whole of a text", "8080", 8080);
  check("the front of a text", "8080x", 8080, kOtherType);
  check("unsigned", 4294967295u, 4294967295u);
  check("unsigned as signed", 4294967295u, -1, kOutOfRange);
  check("negative", -5, -5);
  check("negative as unsigned", -5, 5u, kOtherType);
  check("64 bits", std::int64_t{1} << 62, std::int64_t{1} << 62);
  check("64 bits as 32", std::int64_t{1} << 62, 0, kOutOfRange);
  check("a byte", 255, std::uint8_t{255});
  check("past a byte", 256, std::uint8_t{0}, kOutOfRange);
  check("true", true, true);
  check("two as a bool", 2, true, kOutOfRange);
  check("a fraction", 1.5, 1.5);
  check("a tenth", 0.1, 0.1);
  check("a fraction as an integer", 1.5, 1, kOtherType);
  check("an integer as a fraction", 16, 16.0);
  check("past a float", 16777217, 16777216.0f, kOutOfRange);
  check("list", {"one", "two"}, std::vector<std::string>{"one", "two"});
  check("no items", std::vector<std::string>{}, std::vector<std::string>{});
  check("list as a text", {"one"}, std::string("one"), kOtherType);
  const std::vector<std::byte> bytes{std::byte{1}, std::byte{255}};
  check("bytes", bytes, bytes);
  check("bytes as a text", bytes, std::string("\1\377"), kOtherType);
  check("path", std::filesystem::path("/a b/c"), std::filesystem::path("/a b/c"));
  check("seconds as milliseconds", 2s, 2000ms);
  check("milliseconds as seconds", 1500ms, 1s, kOutOfRange);
  check("whole milliseconds as seconds", 3000ms, 3s);
  check("too many seconds", std::chrono::seconds::max(), 0ms, kOutOfRange);
  check("a plain number as seconds", 30, 30s);
  check("a name", Level::kHigh, Level::kHigh);
  check("an unknown name", "middle", Level::kHigh, kOutOfRange);
  check("a type of the program's own", Colour{5}, Colour{5});
  check("what that refuses", 0x1000000, Colour{}, kOutOfRange);
}

TEST_F(Settings, WhatCannotBeKeptIsRefusedAndTheFormerValueStays) {
  m_key.set("Value", "former");
  const auto refuses = [&](const char* label, const Key& key, const Name& name,
                           const NewValue& value) {
    std::error_code code;
    key.set(name, value, code);
    EXPECT_EQ(code, SettingsErrc::kNoForm) << label;
    EXPECT_THROW(key.set(name, value), SettingsError) << label;
    EXPECT_EQ(m_key.get("Value", ""), "former") << label;
  };
  refuses("a NUL in a text", m_key, "Value", std::string("a\0b", 3));
  refuses("a NUL in a name", m_key, std::string("Value\0b", 7), 1);
  refuses("an item without text", m_key, "Value", {"one", ""});
  refuses("a name that is in no table", m_key, "Value", Level::kNameless);
  if (Testing::filesServe()) {
    refuses("a NUL in bytes", m_key, "Value", std::vector<std::byte>(3));
    refuses("a comma", m_key, "Value", {"a,b"});
    refuses("a key right below a root", Key(Root::kCurrentUser, "Software"), "Value", 1);
    refuses("a line feed and a bracket", m_key / "a]\nb", "Value", 1);
  }
  EXPECT_THROW(Key(Root::kCurrentUser, "%NoSuchVariable%\\Net"), SettingsError);
}

TEST_F(Settings, AbsenceIsNoFailure) {
  std::error_code code = make_error_code(kFailure);
  EXPECT_FALSE(m_key.exists(code) || code);
  EXPECT_EQ(m_key.get("Port", 8080), 8080);
  EXPECT_EQ(m_key.get("Host", "localhost"), "localhost");
  EXPECT_FALSE(m_key.contains("Port") || m_key.erase("Port") || m_key.eraseAll());
  for (const auto& [name, value] : m_key.values()) {
    ADD_FAILURE() << name;
  }
  m_key.set("Port", "none");
  EXPECT_TRUE(m_key.exists() && m_key.contains("Port"));
  EXPECT_THROW((void)m_key.get("Port", 8080), SettingsError) << "no default hides a mistake";
  EXPECT_EQ(m_key.get("Port", 8080, code), 8080);
  EXPECT_EQ(code, SettingsErrc::kWrongType);
  EXPECT_TRUE(m_key.erase("Port"));
  m_key.set("", "the default");
  EXPECT_EQ(m_key.get("", "none"), "the default");
}

TEST_F(Settings, WalksGoOnAsEntriesGo) {
  const std::string longName(230, 'n');
  for (const char* name : {"a", "b", "c"}) {
    m_key.set(name, 1);
    (m_key / name / "below").set(longName, name);
  }
  m_key.child("%d%").set("Value", 1);
  Names seen;
  for (auto& [name, value] : m_key.values()) {
    seen.push_back(name);
    EXPECT_EQ(value.as<int>(), 1);
    EXPECT_FALSE(value.as<std::string>());
    // The one given last, and one ahead of it.
    m_key.erase("a");
    m_key.erase(name == "b" ? "" : name);
  }
  EXPECT_EQ(seen, (Names{"a", "b", "c"}));
  Names names;
  for (const Key& sub : m_key.branch()) {
    names.emplace_back(sub.name());
    for (const auto& [name, value] : sub.values()) {
      names.push_back(name == longName ? value.as<std::string>().value() : name);
    }
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names,
            (Names{"%d%", "Value", "a", "a", "b", "b", "below", "below", "below", "c", "c"}));
  for (const Key& sub : m_key.subkeys()) {
    EXPECT_TRUE(sub.eraseAll());
  }
  EXPECT_TRUE(m_key.subkeys().begin() == std::default_sentinel);
}

TEST_F(Settings, ChangesAreToldWhereTheSystemTellsOfThem) {
  std::string told;
  std::error_code code;
  Changes changes(
      m_key / "Sub", [&](const Change& change) { told += change.after ? change.name : "gone"; },
      code);
  ASSERT_EQ(!code, Testing::filesServe() || kOnWindows);
  const auto next = [&] {
    EXPECT_EQ(SaveConfiguration(kUser), 0);
    for (told.clear(); told.empty() && changes.wait(1min);) {
      changes.dispatch();
    }
    return told;
  };
  // There is nothing to watch, then the key, then nothing again, and the key once more.
  for (int round = 0; round < (code ? 0 : 4); ++round) {
    (m_key / "Sub").set("Value", round);
    EXPECT_EQ(next(), "Value");
    EXPECT_EQ(round % 2 == 1 && (m_key / "Sub").eraseAll() ? next() : "gone", "gone");
  }
}

TEST_F(Settings, EachTypeIsDescribed) {
  const auto describes = []<class T>(const T& fallback, const std::string& expected,
                                     const T* least = nullptr, const T* most = nullptr) {
    const SettingDescription made = detail::describe<T>("", fallback, least, most, "");
    EXPECT_EQ(made.type + detail::inJson(made.fallback) + made.least + '-' + made.most +
                  detail::inJson(made.names),
              expected);
  };
  const std::chrono::seconds bounds[] = {1s, 9s};
  const Level low = Level::kLow;
  describes(true, R"(bool["1"]0-1[])");
  describes(std::int8_t{-5}, R"(integer["-5"]-128-127[])");
  describes(Names{"a\n", "\"b"}, R"(list["a\u000a","\"b"]-[])");
  describes(std::vector{std::byte{0xAB}, std::byte{0}}, R"(bytes["ab00"]-[])");
  describes(bounds[0], R"(seconds["1s"]1s-9s[])", &bounds[0], &bounds[1]);
  describes(low, R"(name["low"]-["low","high"])");
  describes(low, R"(name["low"]-["low"])", &low, &low);
  describes(Colour{7}, R"(integer["7"]0-4294967295[])");
}

struct Net {
  int port;
  std::string host;
};

TEST_F(Settings, AGroupIsReadWithItsDefaultsAndRanges) {
  const Group<Net> group = {{"Port", &Net::port, 8080, 1, 65535, "where it listens"},
                            {"Host", &Net::host, "localhost", "whom it asks"}};
  const Net defaults = group.read(m_key);
  EXPECT_TRUE(defaults.port == 8080 && defaults.host == "localhost");
  group.write(m_key, {80, "elsewhere"});
  EXPECT_EQ(m_key.get<int>("Port"), 80);
  EXPECT_THROW(group.write(m_key, {0, "nowhere"}), SettingsError);
  EXPECT_EQ(group.read(m_key).host, "elsewhere");
  m_key.set("Port", 70000);
  EXPECT_THROW((void)group.read(m_key), SettingsError);
  std::vector<Group<Net>::Complaint> complaints;
  EXPECT_EQ(group.read(m_key, complaints).port, 8080);
  ASSERT_EQ(complaints.size(), 1u);
  EXPECT_EQ(complaints[0].name, "Port");
  EXPECT_EQ(complaints[0].code, SettingsErrc::kOutOfRange);
  EXPECT_EQ(
      group.description(Root::kLocalMachine, "%A%\\B"),
      R"({"format":"ltlib-settings","version":1,"key":"HKEY_LOCAL_MACHINE\\%A%\\B","settings":[)"
      R"({"name":"Port","type":"integer","default":["8080"],"least":"1","most":"65535",)"
      R"("help":"where it listens"},)"
      R"({"name":"Host","type":"text","default":["localhost"],"help":"whom it asks"}]})"
      "\n");
}

}  // namespace
}  // namespace LTLib::Testing
