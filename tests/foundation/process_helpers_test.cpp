#include "ltlib/foundation/process_helpers.h"

#include <gtest/gtest.h>

#include <thread>

#include "ltlib/platform/apartment.h"

namespace {

using namespace LTLib::Platform;

TEST(Apartment, EachThreadEntersForItself) {
  EXPECT_EQ(ltInitComForMT(), 0);
  EXPECT_EQ(ltInitComForMT(), 0);
  std::thread([] {
    EXPECT_EQ(enterSingleThreadedApartment(), ApartmentEntry::kEntered);
    EXPECT_EQ(ltInitComForMT(), LTLib::kFailure);
    leaveApartment();
  }).join();
  ltUninitComForMT();
  EXPECT_EQ(enterSingleThreadedApartment(), ApartmentEntry::kRefused) << "one entry is left";
  ltUninitComForMT();
  EXPECT_EQ(enterSingleThreadedApartment(), ApartmentEntry::kEntered);
  leaveApartment();
}

// The mode can only be read by setting one.
std::uint32_t errorMode() {
  const std::uint32_t mode = exchangeErrorMode(0);
  exchangeErrorMode(mode);
  return mode;
}

TEST(RedirectCriticalErrorMessage, SetsTheModeForItsLifeAndAssignsWhatItRestores) {
  exchangeErrorMode(2);
  {
    const ltRedirectCriticalErrorMessage outer(1);
    {
      ltRedirectCriticalErrorMessage quiet;
      EXPECT_EQ(errorMode(), 0x8001u);
      quiet = outer;
      EXPECT_EQ(errorMode(), 0x8001u);
    }
    EXPECT_EQ(errorMode(), 2u) << "what the other guard restores";
    exchangeErrorMode(4);
  }
  EXPECT_EQ(errorMode(), 2u);
}

}  // namespace
