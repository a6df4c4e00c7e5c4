#include "ltreg/cli/shown_text.h"

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <utility>

namespace ltreg {
namespace {

// A name can be as long as a file; a message has to fit a screen.
constexpr std::size_t kMostQuoted = 200;
// Nobody mistypes more than that, and the time of a comparison grows with the square.
constexpr std::size_t kMostCompared = 100;

// The registry folds these letters alone; the C library would ask the locale.
char lowered(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

// Letters to change, add, leave out, or swap with the next one, as fingers do.
std::size_t distanceBetween(std::string_view one, std::string_view other) {
  std::vector<std::size_t> before;
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= one.size(); ++i) {
    std::vector<std::size_t> next(row.size(), i);
    for (std::size_t j = 1; j <= other.size(); ++j) {
      const bool same = one[i - 1] == other[j - 1];
      next[j] = std::min({row[j] + 1, next[j - 1] + 1, row[j - 1] + (same ? 0U : 1U)});
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
        next[j] = std::min(next[j], before[j - 2] + 1);
      }
    }
    before = std::exchange(row, std::move(next));
  }
  return row.back();
}

bool isControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return code < 0x20 || code == 0x7F;
}

}  // namespace

std::string hexDigits(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string digits;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    digits += kDigits[code >> 4];
    digits += kDigits[code & 0xF];
  }
  return digits;
}

std::string escapeControls(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const auto* control = std::find_if(text.begin(), text.end(), isControl);
    const auto plain = static_cast<std::size_t>(control - text.begin());
    shown.append(text.substr(0, plain));
    text.remove_prefix(plain);
    if (!text.empty()) {
      shown.append("\\x").append(hexDigits(text.substr(0, 1)));
      text.remove_prefix(1);
    }
  }
  return shown;
}

std::string inQuotes(std::string_view text) {
  const bool cut = text.size() > kMostQuoted;
  return '\'' + escapeControls(text.substr(0, kMostQuoted)) + (cut ? "...'" : "'");
}

std::string countOf(std::size_t count, const char* what) {
  return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

std::string inHexadecimal(std::int32_t result) {
  char text[11];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<std::uint32_t>(result));
  return text;
}

std::string commasForTabs(std::string_view text) {
  std::string shown;
  for (const char byte : text) {
    shown += byte == '\t' ? ", " : std::string(1, byte);
  }
  return shown;
}

std::size_t widthOf(std::string_view text) {
  const auto isStart = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; };
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isStart));
}

std::string blanksBehind(std::string_view text, std::size_t width) {
  return std::string(width - std::min(width, widthOf(text)), ' ');
}

const std::string* nearestTo(std::string_view word, const std::vector<std::string>& candidates) {
  const std::string wanted = foldedName(word.substr(0, kMostCompared));
  // One slip in three letters; of a single letter nothing would be left.
  std::size_t best = std::min(wanted.size(), (wanted.size() + 2) / 3 + 1);
  const std::string* nearest = nullptr;
  for (const std::string& candidate : candidates) {
    const std::size_t longer = std::max(candidate.size(), wanted.size());
    if (longer - std::min(candidate.size(), wanted.size()) < best) {
      const std::size_t distance = distanceBetween(wanted, foldedName(candidate));
      if (distance < best) {
        best = distance;
        nearest = &candidate;
      }
    }
  }
  return nearest;
}

std::string didYouMean(std::string_view word, const std::vector<std::string>& candidates,
                       const std::string& prefix) {
  const std::string* nearest = nearestTo(word, candidates);
  return nearest != nullptr ? "; did you mean " + inQuotes(prefix + *nearest) + '?' : std::string();
}

std::string foldedName(std::string_view name) {
  std::string folded(name);
  std::transform(folded.begin(), folded.end(), folded.begin(), lowered);
  return folded;
}

bool sameName(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return lowered(a) == lowered(b); });
}

}  // namespace ltreg
