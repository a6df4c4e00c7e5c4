#include "ltlib/variables/expansion.h"

#include <algorithm>
#include <array>
#include <functional>
#include <memory_resource>
#include <unordered_map>
#include <utility>

#include "ltlib/variables/gap_text.h"
#include "ltlib/variables/name_hash.h"

namespace LTLib::detail {
namespace {

constexpr char kMark = '%';

// What this expansion knows of a name whose replacement holds references of its own.
struct NameState {
  std::size_t openSpans = 0;
  bool known = false;  // the full expansion is the settled text from `start`, `length` bytes long
  std::size_t start = 0;
  std::size_t length = 0;
};

// A replacement that is not yet read to its end. Spans nest: each ends at or before the end of
// the one that was opened before it.
struct Span {
  NameState* name;
  std::size_t start;       // where its expansion begins in the settled text
  std::size_t textBehind;  // the pending bytes behind its end
};

class Expansion {
 public:
  Expansion(std::string& text, ReplacementSource& source, std::vector<ExpansionStep>* steps,
            ExpansionLimits limits)
      : m_text(text),
        m_source(source),
        m_steps(steps),
        m_fixed(source.isFixed()),
        m_limits(limits) {
    m_limits.size = std::max(text.size(), limits.size);
  }

  QSResult run();

 private:
  using Names = std::pmr::unordered_map<std::pmr::string, NameState, NameHash, std::equal_to<>>;

  QSResult replace(std::string_view name);
  void put(std::string_view replacement, std::size_t reference, bool nested);
  void putAndNote(std::string_view name, std::string_view replacement, std::size_t reference,
                  bool nested);
  QSResult repeat(const NameState& state, std::size_t reference);
  bool fits(std::size_t length, std::size_t reference) const;
  bool openSpan(std::string_view name, std::size_t textBehind);
  void closePassedSpans(std::size_t plain);
  void closeCrossedSpans(std::size_t textBehind);

  GapText m_text;
  ReplacementSource& m_source;
  std::vector<ExpansionStep>* m_steps;
  bool m_fixed;
  ExpansionLimits m_limits;
  std::size_t m_replacements = 0;
  std::size_t m_noted = 0;

  // The few nested names of an ordinary text need no memory from the heap.
  std::array<std::byte, 1024> m_buffer;
  std::pmr::monotonic_buffer_resource m_memory{m_buffer.data(), m_buffer.size()};
  Names m_names{&m_memory};
  std::pmr::vector<Span> m_open{&m_memory};
};

QSResult Expansion::run() {
  for (;;) {
    const std::string_view pending = m_text.pending();
    const std::size_t plain = std::min(pending.find(kMark), pending.size());
    closePassedSpans(plain);
    m_text.settle(plain);
    if (m_text.pendingSize() == 0) {
      return kSuccess;
    }
    const std::string_view reference = m_text.pending();
    const std::size_t end = reference.find(kMark, 1);
    if (end == std::string_view::npos) {
      return kFailure;
    }
    if (const QSResult result = replace(reference.substr(1, end - 1)); result < 0) {
      return result;
    }
  }
}

// `name` lies in the pending text behind its mark, and is gone with any change there.
QSResult Expansion::replace(std::string_view name) {
  const std::size_t reference = name.size() + 2;
  const std::size_t textBehind = m_text.pendingSize() - reference;
  closeCrossedSpans(textBehind);
  if (m_replacements++ == m_limits.replacements) {
    return kFailure;
  }
  if (const auto known = m_names.find(name); known != m_names.end() && known->second.known) {
    return repeat(known->second, reference);
  }
  std::string_view replacement;
  if (!m_source.find(name, replacement) || replacement == name ||
      !fits(replacement.size(), reference)) {
    return kFailure;
  }
  const bool nested = replacement.find(kMark) != std::string_view::npos;
  if (nested && !openSpan(name, textBehind)) {
    return kFailure;
  }
  if (m_steps == nullptr) {
    put(replacement, reference, nested);
  } else {
    putAndNote(name, replacement, reference, nested);
  }
  return kSuccess;
}

void Expansion::put(std::string_view replacement, std::size_t reference, bool nested) {
  m_text.drop(reference, replacement.size());
  nested ? m_text.prependPending(replacement) : m_text.appendSettled(replacement);
}

// Each step has a copy of the text. Once nothing more is noted, repetitions need not be made one by
// one any longer. Not inline, as nearly every expansion notes nothing and would pay for the texts.
[[gnu::noinline]] void Expansion::putAndNote(std::string_view name, std::string_view replacement,
                                             std::size_t reference, bool nested) {
  ExpansionStep step{std::string(name), std::string(replacement), {}};
  put(replacement, reference, nested);
  step.text = m_text.str();
  m_noted += sizeof step + step.name.size() + step.replacement.size() + step.text.size();
  m_steps->push_back(std::move(step));
  if (m_noted >= m_limits.noted) {
    m_steps = nullptr;
  }
}

QSResult Expansion::repeat(const NameState& state, std::size_t reference) {
  if (!fits(state.length, reference)) {
    return kFailure;
  }
  m_text.drop(reference, state.length);
  m_text.repeatSettled(state.start, state.length);
  return kSuccess;
}

bool Expansion::fits(std::size_t length, std::size_t reference) const {
  return length <= reference || m_text.size() - reference + length <= m_limits.size;
}

// A reference that lies wholly inside the replacement of its own name, with all that led to it,
// comes up again without end as long as the answers stay the same.
bool Expansion::openSpan(std::string_view name, std::size_t textBehind) {
  auto state = m_names.find(name);
  if (state == m_names.end()) {
    state = m_names.try_emplace(std::pmr::string(name, &m_memory)).first;
  }
  if (state->second.openSpans > (m_fixed ? 0 : kDeepestRepetition)) {
    return false;
  }
  m_open.push_back({&state->second, m_text.settledSize(), textBehind});
  ++state->second.openSpans;
  return true;
}

// Closes the spans that end within the next `plain` bytes: no reference led out of them, so that
// what they came to is the same wherever their names stand.
void Expansion::closePassedSpans(std::size_t plain) {
  while (!m_open.empty()) {
    const Span& span = m_open.back();
    const std::size_t rest = m_text.pendingSize() - span.textBehind;
    if (rest > plain) {
      return;
    }
    NameState& state = *span.name;
    state.start = span.start;
    state.length = m_text.settledSize() + rest - span.start;
    state.known = m_fixed && m_steps == nullptr;
    --state.openSpans;
    m_open.pop_back();
  }
}

// Closes the spans that the reference in front of `textBehind` reaches past.
void Expansion::closeCrossedSpans(std::size_t textBehind) {
  while (!m_open.empty() && m_open.back().textBehind > textBehind) {
    --m_open.back().name->openSpans;
    m_open.pop_back();
  }
}

}  // namespace

QSResult expandReferences(std::string& text, ReplacementSource& source,
                          std::vector<ExpansionStep>* steps, ExpansionLimits limits) {
  return Expansion(text, source, steps, limits).run();
}

}  // namespace LTLib::detail
