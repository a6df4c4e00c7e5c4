// Every read ends here: a list is searched by hashes that lie side by side, and a name is compared
// where they agree.
#include "ltlib/fileregistry/tree/data_field.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace {

std::uint32_t sizeOf(std::string_view text) {
  if (text.size() > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("a name or a text of the file registry is longer than 4 GiB");
  }
  return static_cast<std::uint32_t>(text.size());
}

std::uint32_t hashOf(std::string_view name) {
  return static_cast<std::uint32_t>(LTLib::detail::hashOfName(name));
}

}  // namespace

QSCfgDataField::QSCfgDataField(std::string_view name, QSCfgTypeCode type, std::string_view text,
                               Form form)
    : m_is{name.data(),  const_cast<char*>(text.data()),
           sizeOf(name), sizeOf(text),
           hashOf(name), type,
           form} {}

// One block holds both, until a longer text comes.
QSCfgDataField QSCfgDataField::copyOf(std::string_view name, QSCfgTypeCode type,
                                      std::string_view text) {
  auto block = std::make_unique_for_overwrite<char[]>(name.size() + text.size() + 1);
  char* const ownText = std::copy(name.begin(), name.end(), block.get());
  std::copy(text.begin(), text.end(), ownText);
  QSCfgDataField field({block.get(), name.size()}, type, {ownText, text.size()}, Form::kHas);
  field.m_is.ownsName = true;
  static_cast<void>(block.release());
  return field;
}

// A text that is no longer than the former one takes its bytes, wherever they lie.
void QSCfgDataField::setValue(std::string_view text) {
  const std::uint32_t size = sizeOf(text);
  if (size <= m_is.textSize) {
    std::copy(text.begin(), text.end(), m_is.text);
  } else {
    auto block = std::make_unique_for_overwrite<char[]>(size);
    std::copy(text.begin(), text.end(), block.get());
    if (m_is.ownsText) {
      delete[] m_is.text;
    }
    m_is.text = block.release();
    m_is.ownsText = true;
  }
  m_is.textSize = size;
  m_is.form = m_is.ownsText || m_is.form != Form::kInLine ? Form::kHas : Form::kInLine;
}

namespace LTLib::detail {

std::size_t FieldList::find(std::string_view name, std::size_t hint) const {
  if (hint < m_fields.places() && isAt(hint, name) && isFirstOfName(hint)) {
    return hint;
  }
  return m_index != nullptr ? findByIndex(name, hashOf(name)) : findInRow(name, 0);
}

// May say no of a first one where there is an index.
bool FieldList::isFirstOfName(std::size_t place) const {
  if (m_index != nullptr) {
    return !m_index->repeats;
  }
  const std::uint32_t hash = m_fields.slot(place).hash();
  for (std::size_t before = 0; before < place; ++before) {
    if (m_fields.slot(before).hash() == hash) {
      return false;
    }
  }
  return true;
}

std::size_t FieldList::findInRow(std::string_view name, std::size_t from) const {
  const std::uint32_t hash = hashOf(name);
  for (std::size_t place = from; place < m_fields.places(); ++place) {
    if (m_fields.slot(place).hash() == hash && isAt(place, name)) {
      return place;
    }
  }
  return kNowhere;
}

std::size_t FieldList::findByIndex(std::string_view name, std::uint32_t hash) const {
  const std::uint32_t number = m_index->places.find(
      hash, [&](std::uint32_t candidate) { return isAt(candidate - 1, name); });
  return number != 0 ? number - 1 : kNowhere;
}

void FieldList::checkRoom(std::size_t more) const {
  if (more >= kNowhere - m_fields.places()) {
    throw std::length_error("a key of the file registry has too many values");
  }
}

void FieldList::append(QSCfgDataField field) {
  checkRoom(1);
  if (m_index == nullptr && m_fields.places() >= kIndexedFrom) {
    makeIndex(1);
  }
  if (m_index != nullptr) {
    m_index->places.makeRoom(1);
  }
  m_fields.makeRoom(1);
  m_fields.append(std::move(field));
  if (m_index != nullptr) {
    enter(*m_index, m_fields.places() - 1);
  }
}

void FieldList::append(std::vector<QSCfgDataField>& fields) {
  checkRoom(fields.size());
  if (m_index == nullptr && m_fields.places() + fields.size() > kIndexedFrom) {
    makeIndex(fields.size());
  }
  if (m_index != nullptr) {
    m_index->places.makeRoom(fields.size());
  }
  m_fields.makeRoom(fields.size());
  for (QSCfgDataField& field : fields) {
    m_fields.append(std::move(field));
    if (m_index != nullptr) {
      enter(*m_index, m_fields.places() - 1);
    }
  }
}

void FieldList::enter(Index& index, std::size_t place) const noexcept {
  const QSCfgDataField& field = m_fields.slot(place);
  const bool known = index.places.find(field.hash(), [&](std::uint32_t number) {
    return equalNames(m_fields.slot(number - 1).name(), field.name());
  }) != 0;
  if (known) {
    index.repeats = true;
  } else {
    index.places.enter(field.hash(), static_cast<std::uint32_t>(place + 1));
  }
}

// With room for so many fields more.
void FieldList::makeIndex(std::size_t more) {
  auto index = std::make_unique<Index>();
  index->places.makeRoom(m_fields.size() + more);
  for (std::size_t place = 0; place < m_fields.places(); ++place) {
    if (m_fields.slot(place) != nullptr) {
      enter(*index, place);
    }
  }
  m_index = std::move(index);
}

// The next field of a name that repeats is sought along the row. Closing the gaps gives every field
// another place, so that the names are entered anew.
void FieldList::remove(std::size_t place) noexcept {
  bool moved = false;
  const QSCfgDataField gone = m_fields.take(place, [&](std::size_t /*place*/) { moved = true; });
  if (m_index == nullptr) {
    return;
  }
  if (moved || m_fields.size() == 0) {
    m_index->places.clear();
    for (std::size_t at = 0; at < m_fields.places(); ++at) {
      enter(*m_index, at);
    }
    return;
  }
  m_index->places.leave(gone.hash(), static_cast<std::uint32_t>(place + 1));
  if (m_index->repeats) {
    if (const std::size_t next = findInRow(gone.name(), place); next != kNowhere) {
      enter(*m_index, next);
    }
  }
}

}  // namespace LTLib::detail
