#include "platform/time_zone.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace {

using mailslice::platform::CurrentTimeZone;
using mailslice::platform::LocalTimeOf;
using mailslice::testing::ScopedEnv;

// 2024-01-15 12:00:00 UTC, in winter north of the equator.
constexpr int64_t kWinterNoon = 1'705'320'000;

// The zone is taken up again as soon as TZ changes, however quickly the calls follow each other.
TEST(TimeZoneTest, EveryChangeOfTzShowsAtOnce) {
  int systemBias = 0;
  {
    ScopedEnv none("TZ", std::nullopt);
    systemBias = CurrentTimeZone().bias;
  }
  for (int round = 0; round < 2; ++round) {
    {
      ScopedEnv zone("TZ", "<-05>5");
      EXPECT_EQ(CurrentTimeZone().bias, 300);
      EXPECT_EQ(LocalTimeOf(kWinterNoon)->hour, 7);
    }
    {
      ScopedEnv zone("TZ", "JST-9");
      EXPECT_EQ(CurrentTimeZone().bias, -540);
      EXPECT_EQ(LocalTimeOf(kWinterNoon)->hour, 21);
    }
    {
      ScopedEnv zone("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
      EXPECT_EQ(LocalTimeOf(kWinterNoon)->hour, 13);
      EXPECT_EQ(LocalTimeOf(kWinterNoon + 182 * 86'400)->hour, 14);  // mid-July, summer time
    }
    ScopedEnv none("TZ", std::nullopt);
    EXPECT_EQ(CurrentTimeZone().bias, systemBias);
  }
}

}  // namespace
