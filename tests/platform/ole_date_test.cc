#include "platform/ole_date.h"

#include <gtest/gtest.h>

namespace mailslice::platform {
namespace {

CalendarTime At(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  return {year, month, day, hour, minute, second};
}

void ExpectFields(std::optional<double> date, CalendarTime expected) {
  ASSERT_TRUE(date);
  auto time = FromOleDate(*date);
  ASSERT_TRUE(time);
  EXPECT_EQ(time->year, expected.year);
  EXPECT_EQ(time->month, expected.month);
  EXPECT_EQ(time->day, expected.day);
  EXPECT_EQ(time->hour, expected.hour);
  EXPECT_EQ(time->minute, expected.minute);
  EXPECT_EQ(time->second, expected.second);
}

TEST(OleDateTest, KnownValues) {
  EXPECT_EQ(ToOleDate(At(1899, 12, 30)), 0.0);
  EXPECT_EQ(ToOleDate(At(1900, 1, 1)), 2.0);
  EXPECT_EQ(ToOleDate(At(2000, 1, 1)), 36526.0);
  EXPECT_EQ(ToOleDate(At(2000, 1, 1, 12)), 36526.5);
  EXPECT_EQ(ToOleDate(At(1899, 12, 29, 6)), -1.25);  // before the epoch the fraction counts up
  EXPECT_EQ(ToOleDate(At(100, 1, 1)), -657434.0);
  EXPECT_EQ(FromOleDate(36526.0)->dayOfWeek, 7);  // a Saturday
  EXPECT_EQ(FromOleDate(36527.0)->dayOfWeek, 1);  // Sunday counts as 1
  ExpectFields(-1.25, At(1899, 12, 29, 6));
  ExpectFields(-0.5, At(1899, 12, 30, 12));
}

TEST(OleDateTest, InvalidFieldsAndRangesGiveNothing) {
  EXPECT_FALSE(ToOleDate(At(2009, 0, 5)));
  EXPECT_FALSE(ToOleDate(At(2009, 13, 5)));
  EXPECT_FALSE(ToOleDate(At(2009, 2, 29)));
  EXPECT_TRUE(ToOleDate(At(2008, 2, 29)));
  EXPECT_FALSE(ToOleDate(At(2009, 1, 0)));
  EXPECT_FALSE(ToOleDate(At(2009, 1, 5, 24)));
  EXPECT_FALSE(ToOleDate(At(2009, 1, 5, 0, 60)));
  EXPECT_FALSE(ToOleDate(At(99, 1, 5)));  // two-digit years are outside the range
  EXPECT_FALSE(ToOleDate(At(10000, 1, 1)));
  EXPECT_FALSE(FromOleDate(2958466.0));
  EXPECT_FALSE(FromOleDate(-657435.0));
  EXPECT_FALSE(FromOleDate(std::numeric_limits<double>::quiet_NaN()));
}

TEST(OleDateTest, SpansCrossDayMonthAndYearEnds) {
  ExpectFields(AddSpan(*ToOleDate(At(2009, 1, 5, 5)), 0, 0, -540, 0), At(2009, 1, 4, 20));
  ExpectFields(AddSpan(*ToOleDate(At(2009, 1, 1, 3)), 0, 0, -240, 0), At(2008, 12, 31, 23));
  ExpectFields(AddSpan(*ToOleDate(At(2008, 2, 28, 23)), 0, 2, 0, 0), At(2008, 2, 29, 1));
  ExpectFields(AddSpan(*ToOleDate(At(2009, 2, 28, 23)), 0, 2, 0, 0), At(2009, 3, 1, 1));
  ExpectFields(AddSpan(*ToOleDate(At(2009, 12, 31, 23, 59, 59)), 0, 0, 0, 1), At(2010, 1, 1));
  ExpectFields(AddSpan(*ToOleDate(At(1899, 12, 30, 1)), 0, -2, 0, 0), At(1899, 12, 29, 23));
  EXPECT_FALSE(AddSpan(*ToOleDate(At(9999, 12, 31, 23)), 0, 1, 0, 0));
  EXPECT_FALSE(AddSpan(0.0, 1L << 50, 0, 0, 0));
}

}  // namespace
}  // namespace mailslice::platform
