/// \file
/// \brief What a component library tells of a class in its own file: the form in which LTLIB_COMPONENT
/// leaves it there, and in which library_file.h reads it.
///
/// A section of the library has a record for each class, with any number of nulls between them: a byte
/// 1, then the class's identifier, the identifiers of its interfaces, an empty text, and the line of
/// words; each text with its null. All of it is put together by the compiler, from the class itself.
#ifndef LTLIB_COMPONENT_OFFER_RECORD_H
#define LTLIB_COMPONENT_OFFER_RECORD_H

#include <cstddef>
#include <iterator>
#include <string_view>

#include "ltlib/component/iqsunknown.h"

/// The section's name: eight characters, more of which a PE file does not keep, and a name of C, as a
/// sanitizer pads what lies in any other. A macro, since attributes take literals alone.
#define LTLIB_OFFERS_SECTION "ltoffers"

namespace LTLib::detail {

inline constexpr char kOfferStart = '\1';

/// Gives each byte of the record of the class `C`, a Component, to `put`.
template <class C, class Put>
consteval void putOffer(const iqsID& id, std::string_view words, Put put) {
  const auto putText = [&](std::string_view text) {
    for (const char byte : text) {
      put(byte);
    }
    put('\0');
  };
  const auto putName = [&](std::string_view name) {
    if (name.empty()) {
      throw "the identifier of a class or an interface is empty";
    }
    putText(name);
  };
  put(kOfferStart);
  putName(id.text());
  for (std::size_t i = 0; i + 1 < std::size(C::kOfferedTexts); ++i) {  // all but the null
    putName(C::kOfferedTexts[i]);
  }
  putText({});
  putText(words);
}

template <class C>
consteval std::size_t offerSize(const iqsID& id, std::string_view words = {}) {
  std::size_t size = 0;
  putOffer<C>(id, words, [&](char) { ++size; });
  return size;
}

template <class C, std::size_t kSize>
struct OfferRecord {
  char bytes[kSize] = {};

  consteval explicit OfferRecord(const iqsID& id, std::string_view words = {}) {
    std::size_t size = 0;
    putOffer<C>(id, words, [&](char byte) { bytes[size++] = byte; });
  }

  /// The class's identifier. A registration that takes it from here keeps the linker from leaving the
  /// record out.
  [[nodiscard]] iqsID id() const { return bytes + 1; }
};

}  // namespace LTLib::detail

#endif  // LTLIB_COMPONENT_OFFER_RECORD_H
