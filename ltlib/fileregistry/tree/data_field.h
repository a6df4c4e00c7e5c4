// A value of the tree, and the values of one key.
#ifndef LTLIB_FILEREGISTRY_TREE_DATA_FIELD_H
#define LTLIB_FILEREGISTRY_TREE_DATA_FIELD_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "ltlib/fileregistry/tree/folded_name.h"
#include "ltlib/fileregistry/tree/gap_list.h"
#include "ltlib/fileregistry/tree/hash_slots.h"

/// What a field is; the numbers stand in no file.
enum QSCfgTypeCode : std::uint8_t {
  kCfgULong = 0,       // a number as decimal text
  kCfgString = 1,      // a text
  kCfgDir = 2,         // a text; only a file makes such a field
  kCfgBinary = 3,      // bytes as far as the first NUL
  kCfgListString = 4,  // quoted elements, joined
};

/// A named value: a type code, set once, and a text. A store holds more of these than of anything
/// else, so that each has its place in the list itself and costs 32 bytes beside its texts.
class QSCfgDataField {
 public:
  /// Holds nothing, as a gap of a list does.
  QSCfgDataField() noexcept = default;

  /// What is known of a field's form in a file. In a line both name and text stand in a line as it would
  /// be written.
  enum class Form : std::uint8_t { kLacks, kHas, kInLine };

  /// Points at name and text, which must stay where they are as long as the field lives; the text's
  /// bytes are the field's own to write to.
  QSCfgDataField(std::string_view name, QSCfgTypeCode type, std::string_view text, Form form);

  /// With name and text of its own, which have a form in a file.
  static QSCfgDataField copyOf(std::string_view name, QSCfgTypeCode type, std::string_view text);

  QSCfgDataField(QSCfgDataField&& other) noexcept { takeFrom(other); }
  QSCfgDataField& operator=(QSCfgDataField&& other) noexcept {
    release();
    takeFrom(other);
    return *this;
  }
  ~QSCfgDataField() { release(); }

  bool operator==(std::nullptr_t) const { return m_is.name == nullptr; }

  [[nodiscard]] std::string_view name() const { return {m_is.name, m_is.nameSize}; }
  [[nodiscard]] QSCfgTypeCode type() const { return m_is.type; }
  [[nodiscard]] std::string_view getValue() const { return {m_is.text, m_is.textSize}; }
  /// The lower half of hashOfName.
  [[nodiscard]] std::uint32_t hash() const { return m_is.hash; }

  /// A text that was set has a form; a file may bring one that has none.
  [[nodiscard]] Form form() const { return m_is.form; }
  /// The bytes from the name's quote to the end of the text. Requires: it stands in a line.
  [[nodiscard]] std::string_view line() const { return {m_is.name - 1, m_is.text + m_is.textSize}; }

  /// Replaces the text by one that has a form in a file; on failure it stands.
  void setValue(std::string_view text);

 private:
  // All that a field is, to be copied as a whole.
  struct Content {
    const char* name = nullptr;
    char* text = nullptr;
    std::uint32_t nameSize = 0;
    std::uint32_t textSize = 0;
    std::uint32_t hash = 0;
    QSCfgTypeCode type = kCfgULong;
    Form form = Form::kLacks;
    bool ownsName = false;  // the name begins a block of this field
    bool ownsText = false;  // the text begins a block of this field
  };

  void takeFrom(QSCfgDataField& other) noexcept { m_is = std::exchange(other.m_is, {}); }

  void release() noexcept {
    if (m_is.ownsName) {
      delete[] m_is.name;
    }
    if (m_is.ownsText) {
      delete[] m_is.text;
    }
  }

  Content m_is;
};

namespace LTLib::detail {

/// The values of a key in order of arrival. Several may bear one name; look-ups and removals act on
/// the first. An operation that runs out of memory leaves the list as it was.
class FieldList {
 public:
  static constexpr std::size_t kNowhere = UINT32_MAX;

  [[nodiscard]] std::size_t size() const { return m_fields.size(); }
  /// How many places there are; an empty field is no field.
  [[nodiscard]] std::size_t places() const { return m_fields.places(); }
  /// The place of a position, with which `field` gives what is there.
  [[nodiscard]] std::size_t placeOf(std::size_t position) const {
    return m_fields.placeOf(position);
  }
  /// As those of GapList.
  [[nodiscard]] bool lacksCount(std::size_t position) const {
    return m_fields.lacksCount(position);
  }
  void countPlaces() noexcept { m_fields.countPlaces(); }
  [[nodiscard]] const QSCfgDataField& at(std::size_t position) const {
    return m_fields.at(position);
  }
  [[nodiscard]] QSCfgDataField& field(std::size_t place) { return m_fields.slot(place); }
  [[nodiscard]] const QSCfgDataField& field(std::size_t place) const {
    return m_fields.slot(place);
  }

  /// The place of the first field of that name, or kNowhere. `hint` is the place where it may well
  /// be, which spares most of the search then.
  [[nodiscard]] std::size_t find(std::string_view name, std::size_t hint = kNowhere) const;

  void append(QSCfgDataField field);
  /// Appends all of them, which are empty then, or on failure none.
  void append(std::vector<QSCfgDataField>& fields);

  /// Destroys the field at a place, which must be the first of its name. Needs no memory.
  void remove(std::size_t place) noexcept;

 private:
  // Comparing the hashes of so few neighbours costs less than a look into a table.
  static constexpr std::size_t kIndexedFrom = 16;

  // The places of a long list's names, each counted from 1; of a name that repeats, the first. It is
  // true at any time: append and remove alone change places, and both bring it up to date.
  struct Index {
    HashSlots<std::uint32_t, std::uint32_t> places;
    bool repeats = false;  // whether a name did ever repeat
  };

  void checkRoom(std::size_t more) const;
  [[nodiscard]] bool isAt(std::size_t place, std::string_view name) const {
    return m_fields.slot(place) != nullptr && equalNames(m_fields.slot(place).name(), name);
  }
  [[nodiscard]] bool isFirstOfName(std::size_t place) const;
  [[nodiscard]] std::size_t findInRow(std::string_view name, std::size_t from) const;
  [[nodiscard]] std::size_t findByIndex(std::string_view name, std::uint32_t hash) const;
  void makeIndex(std::size_t more);
  void enter(Index& index, std::size_t place) const noexcept;

  GapList<QSCfgDataField> m_fields;
  std::unique_ptr<Index> m_index;  // null for a short list
};

}  // namespace LTLib::detail

#endif  // LTLIB_FILEREGISTRY_TREE_DATA_FIELD_H
