// Loading takes the tree's lock by itself and gives it up again, so that another thread may come in
// between; no operation keeps anything from before. Everything is found anew, from the path.
#include "ltlib/fileregistry/tree_operations.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>

#include "ltlib/fileregistry/store/store.h"
#include "ltlib/fileregistry/text/file_form.h"
#include "ltlib/fileregistry/text/list_text.h"
#include "ltlib/fileregistry/tree/key_path.h"
#include "ltlib/fileregistry/tree/tree_walk.h"

namespace LTLib::detail {
namespace {

const char* orDefault(const char* name) {
  return name != nullptr ? name : "Default";
}

// The names that a path to a section leads along.
std::vector<std::string_view> namesOfPath(std::string_view path) {
  if (lacksFirstComponent(path)) {
    return {bracketedName(path)};
  }
  std::vector<std::string_view> names;
  splitKeyPath(path, [&](std::string_view name) {
    names.push_back(name);
    return true;
  });
  return names;
}

// Only some codes make a new field; a text for any other goes to a field that is there. What has no
// form in a file is refused before the tree changes, and what is added goes in as one.
bool setText(QSFileKeyHandle& key, std::string_view name, std::string text, QSCfgTypeCode code,
             bool mayAdd) {
  const ScopedLock hold(treeLock());
  dropTrailingBackslash(key.path);
  KeyWalk walk(key, true);
  if (QSCfgDataSection* section = walk.section(); section != nullptr) {
    QSCfgDataField* field = section->findField(name);
    if (!headerComesBack(namesOfPath(key.path)) ||
        !fieldComesBack(name, field != nullptr ? field->type() : code, text)) {
      return false;
    }
    if (field != nullptr) {
      field->setValue(text);
    } else if (mayAdd) {
      section->addField(std::make_unique<QSCfgDataFieldString>(name, code, std::move(text)));
    }
  }
  walk.join();
  return true;
}

// The walk is joined ahead of the use: a section that a query adds stays, whether or not the field is
// there.
template <class Use>
bool withSection(QSFileKeyHandle& key, bool create, Use use) {
  cfgEnsureLoaded(key);
  const ScopedLock hold(treeLock());
  dropTrailingBackslash(key.path);
  KeyWalk walk(key, create);
  walk.join();
  return walk.section() != nullptr && use(*walk.section());
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
      // In the copy alone: the file has the commas.
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
  return removeSectionOf(key);
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
