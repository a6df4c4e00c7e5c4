#include "ltlib/foundation/process_helpers.h"

#include <gtest/gtest.h>

#include <thread>

#include "ltlib/platform/apartment.h"

namespace {

namespace Platform = LTLib::Platform;

// The mode can only be read by setting one.
std::uint32_t errorMode() {
  const std::uint32_t mode = Platform::exchangeErrorMode(0);
  Platform::exchangeErrorMode(mode);
  return mode;
}

TEST(Apartment, EachThreadEntersForItself) {
  EXPECT_EQ(ltInitComForMT(), 0);
  EXPECT_EQ(ltInitComForMT(), 0);
  EXPECT_EQ(Platform::enterSingleThreadedApartment(), Platform::ApartmentEntry::kRefused);
  std::thread([] {
    EXPECT_EQ(Platform::enterSingleThreadedApartment(), Platform::ApartmentEntry::kEntered);
    EXPECT_EQ(ltInitComForMT(), LTLib::kFailure);
    Platform::leaveApartment();
    EXPECT_EQ(ltInitComForMT(), 0);
    ltUninitComForMT();
  }).join();
  ltUninitComForMT();
  EXPECT_EQ(Platform::enterSingleThreadedApartment(), Platform::ApartmentEntry::kRefused);
  ltUninitComForMT();
  EXPECT_EQ(Platform::enterSingleThreadedApartment(), Platform::ApartmentEntry::kEntered);
  Platform::leaveApartment();
}

TEST(RedirectCriticalErrorMessage, SetsTheModeForItsLife) {
  Platform::exchangeErrorMode(2);
  {
    const ltRedirectCriticalErrorMessage quiet;
    EXPECT_EQ(errorMode(), 0x8001u);
    {
      const ltRedirectCriticalErrorMessage loud(0);
      EXPECT_EQ(errorMode(), 0u);
    }
    EXPECT_EQ(errorMode(), 0x8001u);
  }
  EXPECT_EQ(errorMode(), 2u);
  Platform::exchangeErrorMode(0);
}

TEST(RedirectCriticalErrorMessage, AssignmentMovesOnlyTheModeToRestore) {
  {
    ltRedirectCriticalErrorMessage left(1);
    {
      const ltRedirectCriticalErrorMessage right(2);
      EXPECT_EQ(&(left = right), &left);
      EXPECT_EQ(errorMode(), 2u);
    }
    EXPECT_EQ(errorMode(), 1u);
    Platform::exchangeErrorMode(0x8000);
  }
  EXPECT_EQ(errorMode(), 1u);
  Platform::exchangeErrorMode(0);
}

}  // namespace
