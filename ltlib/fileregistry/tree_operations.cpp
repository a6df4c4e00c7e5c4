#include "ltlib/fileregistry/tree_operations.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>

#include "ltlib/fileregistry/file_form.h"
#include "ltlib/fileregistry/kFileRegistry.h"
#include "ltlib/fileregistry/key_path.h"
#include "ltlib/fileregistry/list_text.h"

namespace LTLib::detail {
namespace {

const char* orDefault(const char* name) {
  return name != nullptr ? name : "Default";
}

QSCfgDataSection& sectionOf(const QSFileKeyHandle& key) {
  return *cfgRootOf(key.root).section;
}

// A walk that ends in a backslash, or adds a section each time, has to be made each time. Behind two
// backslashes in a row the rest is one name, so that such a path is the start of no other.
bool leadsBack(const std::string& path) {
  return path.back() != '\\' && !lacksFirstComponent(path) &&
         path.find("\\\\") == std::string::npos;
}

// The name by which a path goes on from another one; empty if it leads elsewhere, or further.
std::string_view nameBelow(std::string_view above, std::string_view path) {
  const std::size_t start = above.size() + 1;
  if (path.size() <= start || path[start - 1] != '\\' || !path.starts_with(above)) {
    return {};
  }
  const std::string_view name = path.substr(start);
  return name.find('\\') == std::string_view::npos ? name : std::string_view{};
}

QSCfgDataSection* resolve(QSFileKeyHandle& key, bool create) {
  QSCfgRoot& root = cfgRootOf(key.root);
  QSCfgLastWalk& last = root.lastWalk;
  if (last.section != nullptr && last.path == key.path) {
    return last.section;
  }
  const std::string_view name = nameBelow(last.path, key.path);
  const bool goesOn = last.section != nullptr && !name.empty();
  QSCfgDataSection* section = nullptr;
  if (goesOn) {
    section = create ? &last.section->findOrAddSection(name) : last.section->findSection(name);
  } else {
    section = cfgResolveSection(key.path, *root.section, create);
  }
  if (section != nullptr && (goesOn || leadsBack(key.path))) {
    last.path = key.path;
    last.section = section;
  }
  return section;
}

// The names that a path leads along; empty if it leads to no section.
std::vector<std::string_view> namesOfPath(std::string_view path) {
  std::vector<std::string_view> names;
  if (lacksFirstComponent(path)) {
    const std::string_view bracketed = bracketedName(path);
    if (!bracketed.empty()) {
      names.push_back(bracketed);
    }
  } else if (!splitKeyPath(path, [&](std::string_view name) {
               names.push_back(name);
               return true;
             })) {
    names.clear();
  }
  return names;
}

// Looks before anything is added, so that a refusal leaves no sections behind; the handle's path is
// shortened by the walk that follows.
bool isRefused(const QSFileKeyHandle& key, std::string_view name, std::string_view text,
               QSCfgTypeCode code) {
  QSFileKeyHandle searched = key;
  const QSCfgDataSection* section = resolve(searched, false);
  const std::vector<std::string_view> names = namesOfPath(searched.path);
  if (names.empty()) {
    return false;
  }
  const QSCfgDataField* field = section != nullptr ? section->findField(name) : nullptr;
  const ListLines lines = code == kCfgListString ? ListLines::kJoined : ListLines::kKept;
  return !headerComesBack(names) ||
         !fieldComesBack(name, field != nullptr ? field->type() : code, text, lines);
}

// Only some codes make a new field; a text for any other goes to a field that is there.
bool setText(QSFileKeyHandle& key, std::string_view name, std::string text, QSCfgTypeCode code,
             bool mayAdd) {
  const ScopedLock hold(treeLock());
  if (isRefused(key, name, text, code)) {
    dropTrailingBackslash(key.path);
    return false;
  }
  QSCfgDataSection* section = resolve(key, true);
  if (section == nullptr) {
    return true;
  }
  if (QSCfgDataField* field = section->findField(name); field != nullptr) {
    field->setValue(text);
  } else if (mayAdd) {
    section->addField(std::make_unique<QSCfgDataFieldString>(name, code, std::move(text)));
  }
  return true;
}

template <class Use>
bool withSection(QSFileKeyHandle& key, bool create, Use use) {
  cfgEnsureLoaded(key);
  const ScopedLock hold(treeLock());
  QSCfgDataSection* section = resolve(key, create);
  return section != nullptr && use(*section);
}

}  // namespace

bool cfgQueryValue(QSFileKeyHandle& key, const char* name, QSCfgFieldInfo& info,
                   std::string* text) {
  return withSection(key, true, [&](const QSCfgDataSection& section) {
    const QSCfgDataField* field = section.findField(orDefault(name));
    if (field == nullptr) {
      return false;
    }
    info = {field->type(), field->getValue().size()};
    if (text != nullptr) {
      *text = field->getValue();
      if (field->type() == kCfgListString) {
        std::replace(text->begin(), text->end(), ',', '\\');
      }
    }
    return true;
  });
}

bool cfgQueryNumber(QSFileKeyHandle& key, const char* name, std::uint32_t& number) {
  QSCfgFieldInfo info;
  std::string text;
  if (!cfgQueryValue(key, name, info, &text)) {
    return false;
  }
  number = numberOfText(text);
  return true;
}

bool cfgSetValue(QSFileKeyHandle& key, const char* name, std::string_view text,
                 QSCfgTypeCode code) {
  cfgEnsureLoaded(key);
  return setText(key, orDefault(name),
                 code == kCfgListString ? quoteListItems(text) : std::string(text), code,
                 code == kCfgString || code == kCfgBinary || code == kCfgListString);
}

bool cfgSetNumber(QSFileKeyHandle& key, const char* name, std::uint32_t number) {
  cfgEnsureLoaded(key);
  return setText(key, orDefault(name), std::to_string(static_cast<std::int32_t>(number)), kCfgULong,
                 true);
}

bool cfgCreateKey(QSFileKeyHandle& key, QSCfgTypeCode code) {
  return cfgSetValue(key, nullptr, "0", code);
}

bool cfgListSections(QSFileKeyHandle& key, std::vector<std::string>& names) {
  return withSection(key, false, [&](const QSCfgDataSection& section) {
    names.clear();
    for (std::size_t i = 0; i < section.sectionCount(); ++i) {
      names.push_back(section.sectionAt(i).name());
    }
    return true;
  });
}

bool cfgListFields(QSFileKeyHandle& key, std::vector<std::string>& names) {
  return withSection(key, false, [&](const QSCfgDataSection& section) {
    names.clear();
    for (std::size_t i = 0; i < section.fieldCount(); ++i) {
      names.push_back(section.fieldAt(i).name());
    }
    return true;
  });
}

bool cfgSectionName(QSFileKeyHandle& key, std::size_t position, std::string& name) {
  return withSection(key, false, [&](const QSCfgDataSection& section) {
    if (position >= section.sectionCount()) {
      return false;
    }
    name = section.sectionAt(position).name();
    return true;
  });
}

bool cfgFieldName(QSFileKeyHandle& key, std::size_t position, std::string& name) {
  return withSection(key, false, [&](const QSCfgDataSection& section) {
    if (position >= section.fieldCount()) {
      return false;
    }
    name = section.fieldAt(position).name();
    return true;
  });
}

bool cfgDeleteKey(QSFileKeyHandle& key) {
  cfgEnsureLoaded(key);
  const ScopedLock hold(treeLock());
  dropTrailingBackslash(key.path);
  cfgRootOf(key.root).lastWalk.section = nullptr;
  QSCfgDataSection* parent = &sectionOf(key);
  if (lacksFirstComponent(key.path)) {
    return parent->removeSection(key.path);
  }
  std::string_view last;
  const bool whole = splitKeyPath(key.path, [&](std::string_view component) {
    if (last.data() != nullptr) {
      parent = parent->findSection(last);
    }
    last = component;
    return parent != nullptr;
  });
  return whole && parent->removeSection(last);
}

bool cfgDeleteField(QSFileKeyHandle& key, const char* name) {
  return withSection(
      key, true, [&](QSCfgDataSection& section) { return section.removeField(orDefault(name)); });
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
