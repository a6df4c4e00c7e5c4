// A look gives the lock up for a load or for keys that it adds, so that another thread may come in
// between: it keeps nothing from before but what the handle remembers and looks through again.
#include "ltlib/fileregistry/tree_operations.h"

#include <charconv>
#include <limits>
#include <string>
#include <utility>

#include "ltlib/fileregistry/store/store.h"
#include "ltlib/fileregistry/text/file_form.h"
#include "ltlib/fileregistry/text/list_text.h"
#include "ltlib/fileregistry/tree/tree_walk.h"

namespace LTLib::detail {
namespace {

// Ends before the caller goes on to look: readers wait for nobody.
void addSections(const QSFileKeyHandle& key) {
  const TreeWriting writing;
  MadeWay(*cfgRootOf(key.root()).tree, key.path()).keep();
}

// Calls `change` while nobody else uses the trees. A load that fails is thrown before anything else
// happens.
template <class Change>
bool changeTree(QSFileKeyHandle& key, Change change) {
  const TreeWriting writing;
  if (!cfgRootOf(key.root()).loaded) {
    cfgEnsureLoaded(key);
  }
  key.dropTrailingBackslash();
  QSCfgRoot& root = cfgRootOf(key.root());
  const bool done = change(*root.tree);
  root.changed = root.changed || done;
  return done;
}

// Only some codes make a new field; a text for any other goes to a field that is there. What has no
// form in a file is refused before a field changes, and what was added for it goes again.
bool setField(QSCfgDataSection& section, std::string_view name, std::string_view text,
              QSCfgTypeCode code, bool mayAdd) {
  FieldList& fields = section.fields();
  const std::size_t place = fields.find(name);
  const bool isThere = place != FieldList::kNowhere;
  if (!sectionComesBack(section) ||
      !fieldComesBack(name, isThere ? fields.field(place).type() : code, text)) {
    return false;
  }
  if (isThere) {
    fields.field(place).setValue(text);
  } else if (mayAdd) {
    fields.append(QSCfgDataField::copyOf(name, code, text));
  }
  return true;
}

bool setText(QSFileKeyHandle& key, std::string_view name, std::string_view text, QSCfgTypeCode code,
             bool mayAdd) {
  return changeTree(key, [&](QSCfgTree& tree) {
    if (QSCfgDataSection* const section = findSection(key); section != nullptr) {
      return setField(*section, name, text, code, mayAdd);
    }
    MadeWay way(tree, key.path());
    if (way.section() != nullptr && !setField(*way.section(), name, text, code, mayAdd)) {
      return false;
    }
    way.keep();
    return true;
  });
}

}  // namespace

// A key that is missing is added apart from reading, and then sought once more: nobody else can have
// made it in between but with what is wanted of it.
KeyLook::KeyLook(QSFileKeyHandle& key, Missing sections) : m_key(key) {
  if (!cfgRootOf(key.root()).loaded) {
    m_reading.end();
    cfgEnsureLoaded(key);
    m_reading.begin();
  }
  key.dropTrailingBackslash();
  m_section = findSection(key);
  if (m_section == nullptr && sections == Missing::kIsAdded) {
    m_reading.end();
    addSections(key);
    m_reading.begin();
    m_section = findSection(key);
  }
}

const QSCfgDataField* KeyLook::field(std::string_view name) {
  if (m_section == nullptr) {
    return nullptr;
  }
  const FieldList& fields = m_section->fields();
  m_key.fieldHint = fields.find(name, m_key.fieldHint);
  return m_key.fieldHint != FieldList::kNowhere ? &fields.field(m_key.fieldHint) : nullptr;
}

// A count is a change, and so another turn; what was looked at before may be gone by then.
template <class List>
void KeyLook::countPlaces(List listOf) {
  m_reading.end();
  {
    const TreeWriting writing;
    if (QSCfgDataSection* const section = findSection(m_key); section != nullptr) {
      listOf(*section).countPlaces();
    }
  }
  m_reading.begin();
  m_section = findSection(m_key);
}

const QSCfgDataField* KeyLook::fieldAt(std::size_t position) {
  if (m_section != nullptr && m_section->fields().lacksCount(position)) {
    countPlaces([](QSCfgDataSection& section) -> FieldList& { return section.fields(); });
  }
  if (m_section == nullptr || position >= m_section->fields().size()) {
    return nullptr;
  }
  m_key.fieldHint = m_section->fields().placeOf(position);
  return &m_section->fields().field(m_key.fieldHint);
}

const QSCfgDataSection* KeyLook::childAt(std::size_t position) {
  if (m_section != nullptr && m_section->lacksCount(position)) {
    countPlaces([](QSCfgDataSection& section) -> QSCfgDataSection& { return section; });
  }
  return m_section != nullptr && position < m_section->sectionCount()
             ? &m_section->sectionAt(position)
             : nullptr;
}

bool cfgSetValue(QSFileKeyHandle& key, const char* name, std::string_view text,
                 QSCfgTypeCode code) {
  if (code == kCfgListString) {
    return setText(key, orDefault(name), quoteListItems(text), code, true);
  }
  return setText(key, orDefault(name), text, code, code == kCfgString || code == kCfgBinary);
}

bool cfgSetNumber(QSFileKeyHandle& key, const char* name, std::uint32_t number) {
  char text[12];
  const auto end = std::to_chars(text, text + sizeof text, static_cast<std::int32_t>(number)).ptr;
  return setText(key, orDefault(name), {text, end}, kCfgULong, true);
}

bool cfgCreateKey(QSFileKeyHandle& key, QSCfgTypeCode code) {
  return cfgSetValue(key, nullptr, "0", code);
}

bool cfgDeleteKey(QSFileKeyHandle& key) {
  return changeTree(key, [&](QSCfgTree& /*tree*/) { return removeSectionOf(key); });
}

bool cfgDeleteField(QSFileKeyHandle& key, const char* name) {
  return changeTree(key, [&](QSCfgTree& tree) {
    QSCfgDataSection* const section = findSection(key);
    if (section == nullptr) {
      MadeWay(tree, key.path()).keep();
      return false;
    }
    const std::size_t place = section->fields().find(orDefault(name));
    if (place != FieldList::kNowhere) {
      section->fields().remove(place);
    }
    return place != FieldList::kNowhere;
  });
}

std::uint32_t numberOfText(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
  if (start == std::string_view::npos) {
    return 0;
  }
  text.remove_prefix(start);
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') {
    text.remove_prefix(1);
  }
  // The sign is off, so that a second one ends the number before it begins.
  if (text.empty() || text.front() == '-') {
    return 0;
  }
  std::uint64_t magnitude = 0;
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), magnitude);
  constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  const std::uint64_t limit = negative ? kMost + 1 : kMost;
  if (parsed.ec == std::errc::result_out_of_range || magnitude > limit) {
    magnitude = limit;
  }
  return static_cast<std::uint32_t>(negative ? 0 - magnitude : magnitude);
}

}  // namespace LTLib::detail
