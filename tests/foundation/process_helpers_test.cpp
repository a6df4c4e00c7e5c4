#include "ltlib/foundation/process_helpers.h"

#include <gtest/gtest.h>

#include "ltlib/platform/apartment.h"

namespace {

using namespace LTLib::Platform;

TEST(Apartment, IsLeftAsOftenAsItIsEntered) {
  EXPECT_EQ(ltInitComForMT(), 0);
  EXPECT_EQ(ltInitComForMT(), 0);
  ltUninitComForMT();
  EXPECT_EQ(enterSingleThreadedApartment(), ApartmentEntry::kRefused) << "one entry is left";
  ltUninitComForMT();
  EXPECT_EQ(enterSingleThreadedApartment(), ApartmentEntry::kEntered);
  EXPECT_EQ(ltInitComForMT(), LTLib::kFailure);
  leaveApartment();
}

// The mode can only be read by setting one.
TEST(RedirectCriticalErrorMessage, SetsTheModeForItsLifeAndAssignsWhatItRestores) {
  exchangeErrorMode(2);
  const ltRedirectCriticalErrorMessage outer(1);
  {
    ltRedirectCriticalErrorMessage quiet;
    EXPECT_EQ(exchangeErrorMode(4), 0x8001u);
    quiet = outer;
  }
  EXPECT_EQ(exchangeErrorMode(0), 2u);
}

}  // namespace
