#include "ltlib/component/iqsunknown.h"

#include <cstring>

bool iqsID::operator==(const iqsID& other) const {
  // Identifiers are mostly one literal; this also makes two null texts equal.
  if (m_text == other.m_text) {
    return true;
  }
  return m_text != nullptr && other.m_text != nullptr && std::strcmp(m_text, other.m_text) == 0;
}

QSResult iqsCInnerUnknown::QueryInterface(const iqsID& id, void** out) {
  return m_owner->InnerQueryInterface(id, out);
}

std::uint32_t iqsCInnerUnknown::AddRef() const {
  return m_owner->InnerAddRef();
}

std::uint32_t iqsCInnerUnknown::Release() const {
  return m_owner->InnerRelease();
}

iqsCUnknown::iqsCUnknown(iqsUnknown* outer)
    : m_innerUnknown(*this), m_outerUnknown(outer != nullptr ? outer : &m_innerUnknown) {}

iqsCUnknown::~iqsCUnknown() = default;

QSResult iqsCUnknown::InnerQueryInterface(const iqsID& id, void** out) {
  // The interface counts before the pointer: who asks for what is not there learns that either way.
  const bool isKnown = id == LTLib::kUnknownID;
  if (out == nullptr) {
    return isKnown ? LTLib::kNullArgument : LTLib::kNotAvailable;
  }
  if (!isKnown) {
    *out = nullptr;
    return LTLib::kNotAvailable;
  }
  iqsUnknown* const face = &m_innerUnknown;
  *out = face;
  face->AddRef();
  return LTLib::kSuccess;
}

std::uint32_t iqsCUnknown::InnerAddRef() {
  return ++m_refCount;
}

std::uint32_t iqsCUnknown::InnerRelease() {
  const std::uint32_t left = --m_refCount;
  if (left == 0 && FinalRelease()) {
    delete this;
  }
  return left;
}

QSResult iqsCUnknown::Init() {
  return LTLib::kSuccess;
}

bool iqsCUnknown::FinalRelease() {
  // With a count of 1 the destructor may hand the object out and take it back without dying twice.
  // No exchange, which would cost as much as a release: nobody else has the object any more.
  m_refCount.store(1, std::memory_order_relaxed);
  return true;
}
