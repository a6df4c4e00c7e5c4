// Keys, names and values that match a pattern.
#include <functional>
#include <regex>

#include "ltreg/cli/json.h"
#include "ltreg/cli/shown_text.h"
#include "ltreg/commands/commands.h"
#include "ltreg/commands/read_key.h"
#include "ltreg/registry/key_walk.h"

namespace ltreg {
namespace {

using Matcher = std::function<bool(const std::string& text)>;

// The standard library's expressions recurse for each byte, so that a long text would use the stack
// up and end the tool.
constexpr std::size_t kLongestForRegex = 10000;

bool matchesGlob(std::string_view text, std::string_view pattern) {
  std::size_t at = 0;
  std::size_t part = 0;
  std::size_t star = std::string_view::npos;  // the last one passed, which may stand for more
  std::size_t afterStar = 0;                  // where the text goes on behind what it stands for
  while (at < text.size()) {
    if (part < pattern.size() && pattern[part] == '*') {
      star = part++;
      afterStar = at;
    } else if (part < pattern.size() && (pattern[part] == '?' || pattern[part] == text[at])) {
      ++part;
      ++at;
    } else if (star != std::string_view::npos) {
      part = star + 1;
      at = ++afterStar;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', part) == std::string_view::npos;
}

Matcher regexMatcher(const Request& request) {
  auto flags = std::regex::ECMAScript;
  if (request.ignoreCase) {
    flags |= std::regex::icase;
  }
  try {
    return [expression = std::regex(*request.text, flags)](const std::string& text) {
      if (text.size() > kLongestForRegex) {
        complain("warning: " + inQuotes(text) + " is too long for --regex and was passed over");
        return false;
      }
      return std::regex_search(text, expression);
    };
  } catch (const std::regex_error& error) {
    throw Failure(ExitCode::kBadInput,
                  inQuotes(*request.text) + " is no regular expression: " + error.what());
  }
}

Matcher matcherOf(const Request& request) {
  if (request.glob && request.regex) {
    throw Failure(ExitCode::kUsage, "--glob and --regex exclude one another");
  }
  if (request.regex) {
    return regexMatcher(request);
  }
  const auto folded = [ignoreCase = request.ignoreCase](const std::string& text) {
    return ignoreCase ? foldedName(text) : text;
  };
  const std::string pattern = folded(*request.text);
  if (request.glob) {
    return [=](const std::string& text) { return matchesGlob(folded(text), pattern); };
  }
  return [=](const std::string& text) { return folded(text).find(pattern) != std::string::npos; };
}

bool looksIn(const Request& request, std::string_view place) {
  return !request.places || request.places->find(place) != std::string::npos;
}

// What to look at, and what to do with what is found.
class Search {
 public:
  Search(const Request& request, Output& output)
      : m_request(request), m_output(output), m_matches(matcherOf(request)) {
    if (request.type) {
      m_type = typeOfWord(*request.type)->type;
    }
  }

  void look(ReadKey& key, const std::string& path) {
    const std::string name = fullName(key.root(), path);
    if (!m_type && looksIn(m_request, "keys") && m_matches(std::string(lastComponent(path)))) {
      found("key\t" + escapeControls(name), Json().with("key", name));
    }
    for (const NamedValue& value : key.session().values(path)) {
      if (isHit(value)) {
        found(lineOf(value, name), jsonOf(value).with("key", name));
      }
    }
  }

  ExitCode finish(ExitCode readOutcome) {
    if (m_request.json) {
      m_output.json(versionedJson("found", std::move(m_all)));
    }
    return readOutcome == ExitCode::kDone && !m_any ? ExitCode::kAbsent : readOutcome;
  }

 private:
  [[nodiscard]] bool isHit(const NamedValue& value) const {
    return (!m_type || *m_type == value.value.type) &&
           ((looksIn(m_request, "names") && m_matches(value.name)) ||
            (looksIn(m_request, "values") && m_matches(onOneLine(value.value))));
  }

  void found(const std::string& line, Json json) {
    m_any = true;
    if (m_request.json) {
      m_all.push(std::move(json));
    } else {
      m_output.row(line, 3);
    }
  }

  const Request& m_request;
  Output& m_output;
  Matcher m_matches;
  std::optional<unsigned int> m_type;
  Json m_all = Json::array();
  bool m_any = false;
};

}  // namespace

ExitCode findEntries(const Request& request, Output& output) {
  Search search(request, output);
  ReadKey key(request);
  walkKeys(key.session(), key.path(), [&](const std::string& path) { search.look(key, path); });
  return search.finish(key.outcome());
}

}  // namespace ltreg
