#include "ltlib/foundation/process_helpers.h"

#include "ltlib/platform/apartment.h"

using LTLib::Platform::ApartmentEntry;

QSResult ltInitComForMT() {
  const bool inside = LTLib::Platform::enterMultiThreadedApartment() != ApartmentEntry::kRefused;
  return inside ? LTLib::kSuccess : LTLib::kFailure;
}

void ltUninitComForMT() {
  LTLib::Platform::leaveApartment();
}

ltRedirectCriticalErrorMessage::ltRedirectCriticalErrorMessage(unsigned int mode)
    : m_previousMode(LTLib::Platform::exchangeErrorMode(mode)) {}

ltRedirectCriticalErrorMessage::~ltRedirectCriticalErrorMessage() {
  LTLib::Platform::exchangeErrorMode(m_previousMode);
}

ltRedirectCriticalErrorMessage& ltRedirectCriticalErrorMessage::operator=(
    const ltRedirectCriticalErrorMessage& other) = default;
