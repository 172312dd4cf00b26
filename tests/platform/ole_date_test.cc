#include "platform/ole_date.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <string>

namespace mailslice::platform {
namespace {

CalendarTime At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return {year, month, day, hour, minute, second};
}

// The calendar fields of a date as "Y-M-D h:m:s", or "none".
std::string Fields(std::optional<double> date) {
  std::optional<CalendarTime> t = date ? FromOleDate(*date) : std::nullopt;
  if (!t) return "none";
  char text[64];
  std::snprintf(text, sizeof text, "%d-%d-%d %d:%d:%d", t->year, t->month, t->day, t->hour,
                t->minute, t->second);
  return text;
}

TEST(OleDateTest, KnownValues) {
  EXPECT_EQ(ToOleDate(At(1899, 12, 30)), 0.0);
  EXPECT_EQ(ToOleDate(At(1900, 1, 1)), 2.0);
  EXPECT_EQ(ToOleDate(At(2000, 1, 1, 12)), 36526.5);
  EXPECT_EQ(ToOleDate(At(1899, 12, 29, 6)), -1.25);  // before the epoch the fraction counts up
  EXPECT_EQ(ToOleDate(At(100, 1, 1)), -657434.0);
  EXPECT_EQ(FromOleDate(36526.0)->dayOfWeek, 7);  // a Saturday
  EXPECT_EQ(FromOleDate(36527.0)->dayOfWeek, 1);  // Sunday counts as 1
  EXPECT_EQ(Fields(-1.25), "1899-12-29 6:0:0");
  EXPECT_EQ(Fields(-0.5), "1899-12-30 12:0:0");
}

TEST(OleDateTest, InvalidFieldsAndRangesGiveNothing) {
  for (CalendarTime time :
       {At(2009, 0, 5), At(2009, 13, 5), At(2009, 2, 29), At(2009, 1, 0), At(2009, 1, 5, 24),
        At(2009, 1, 5, 0, 60), At(99, 1, 5), At(10000, 1, 1)}) {
    EXPECT_FALSE(ToOleDate(time)) << time.year << "-" << time.month << "-" << time.day;
  }
  EXPECT_TRUE(ToOleDate(At(2008, 2, 29)));
  for (double date : {2958466.0, -657435.0, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(FromOleDate(date)) << date;
  }
}

TEST(OleDateTest, SpansCrossDayMonthAndYearEnds) {
  auto moved = [](CalendarTime from, long hours, long minutes, long seconds) {
    return Fields(AddSpan(*ToOleDate(from), 0, hours, minutes, seconds));
  };
  // Leap days and the zone shifts across day and year ends show in date_display_test.cc.
  EXPECT_EQ(moved(At(2009, 2, 28, 23), 2, 0, 0), "2009-3-1 1:0:0");
  EXPECT_EQ(moved(At(2009, 12, 31, 23, 59, 59), 0, 0, 1), "2010-1-1 0:0:0");
  EXPECT_EQ(moved(At(1899, 12, 30, 1), -2, 0, 0), "1899-12-29 23:0:0");
  EXPECT_EQ(moved(At(9999, 12, 31, 23), 1, 0, 0), "none");
  EXPECT_FALSE(AddSpan(0.0, 1L << 50, 0, 0, 0));
}

}  // namespace
}  // namespace mailslice::platform
