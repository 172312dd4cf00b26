// The date display through its exports, so that each test also proves the wiring.
#include "datetime/date_display.h"

#include <gtest/gtest.h>
#include <mailslice/exports.h>
#include <time.h>

#include <cmath>
#include <optional>
#include <string>

#include "platform/ole_date.h"
#include "support/test_support.h"

namespace mailslice::datetime {
namespace {

using mailslice::testing::ScopedEnv;
using mailslice::testing::ScratchFolder;
using mailslice::testing::Utf8;

// The device as a test sets it up: zone, language, clock setting and message files.
struct Device {
  Device(const char* zone, int language, std::optional<int> timeFormat = std::nullopt)
      : zone_("TZ", zone),
        language_("MAILSLICE_LANGUAGE", std::to_string(language)),
        messages_("MAILSLICE_MESSAGES", (folder_.path() / "messages").string()),
        registry_("MAILSLICE_REGISTRY", folder_.Write("registry.reg", Store(timeFormat))) {
    tzset();
  }
  static std::string Store(std::optional<int> timeFormat) {
    if (!timeFormat) return "Windows Registry Editor Version 5.00\n";
    return "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvane\\"
           "TimeSet]\n\"TimeFormat\"=dword:0000000" +
           std::to_string(*timeFormat) + "\n";
  }
  void WriteMessages(const std::string& name, const std::string& lines) const {
    folder_.Write("messages/" + name, lines);
  }

  ScratchFolder folder_;
  ScopedEnv zone_, language_, messages_, registry_;
};

double OleDate(int year, int month, int day, int hour, int minute, int second) {
  return platform::ToOleDate({year, month, day, hour, minute, second}).value();
}

TEST(DateDisplayTest, TimeZoneBiasIsMinutesEastWithDaylightSaving) {
  const std::pair<const char*, int> cases[] = {
      {"JST-9", 540},
      {"<+0530>-5:30", 330},
      {"<-03>3", -180},
      {"EST5EDT,0/0,J365/25", -240}};  // the last keeps daylight time all year
  for (auto [zone, bias] : cases) {
    Device device(zone, 1);
    EXPECT_EQ(GetTimeZoneBias(), bias) << zone;
  }
}

TEST(DateDisplayTest, DisplayTimeMovesUniversalTimeIntoTheDevicesZone) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"JST-9", "2008/12/31 18:30:00", "2009/01/01 03:30:00"},
      {"<-05>5", "2008/03/01 02:00:00", "2008/02/29 21:00:00"},
      {"JST-9", "0000/00/00 00:00:00", "0000/00/00 00:00:00"},  // a Date that was unreadable
      {"JST-9", "9999/12/31 20:00:00", "0000/00/00 00:00:00"},
      {"JST-9", "x", "0000/00/00 00:00:00"}};
  for (auto [zone, universalTime, shown] : cases) {
    Device device(zone, 1);
    EXPECT_EQ(ConvertToDisplayTime(CString(universalTime)).ToUtf8(), shown) << universalTime;
  }
}

TEST(DateDisplayTest, MonthsAndWeekdaysUseTheirMessageNumbers) {
  Device device("UTC0", 1);
  std::string lines, months, weekdays;
  for (int number = 100; number < 200; ++number) {
    lines += std::to_string(number) + "\t#" + std::to_string(number) + "\n";
  }
  device.WriteMessages("Email", lines);
  for (int month = 0; month <= 13; ++month) months += ConvertMonthNumToString(month).ToUtf8() + " ";
  for (int weekday = 0; weekday <= 8; ++weekday)
    weekdays += GetDayOfWeekString(weekday).ToUtf8() + " ";
  EXPECT_EQ(months, " #154 #155 #156 #157 #158 #159 #160 #161 #162 #116 #117 #118  ");
  EXPECT_EQ(weekdays, " #131 #120 #122 #124 #126 #128 #130  ");
  EXPECT_TRUE(GetDayOfWeekString(-2147483647 - 1).IsEmpty());
}

TEST(DateDisplayTest, TimeFollowsTheClockSettingAndTheLanguage) {
  const struct {
    int language;
    std::optional<int> timeFormat;  // nothing: never set, which means 12-hour
    int hour, minute;
    std::u16string expected;
  } cases[] = {{1, 0, 13, 5, u"13:05:09"},       {1, 2, 0, 5, u"00:05:09"},
               {1, 1, 0, 5, u"12:05:09 AM"},     {1, std::nullopt, 11, 59, u"11:59:09 AM"},
               {1, 1, 12, 0, u"12:00:09 PM"},    {7, 1, 23, 59, u"11:59:09 PM"},
               {82, 1, 13, 5, u"오후 01:05:09"}, {81, 1, 9, 0, u"午前 09:00:09"}};
  for (const auto& c : cases) {
    Device device("UTC0", c.language, c.timeFormat);
    EXPECT_EQ(Utf8(GetTimeMsg(0, 0, OleDate(2009, 1, 5, c.hour, c.minute, 9)).Str()),
              Utf8(c.expected));
  }
  Device device("UTC0", 1, 1);
  EXPECT_EQ(Get12hoursMsg(u"10:20", 1191).ToUtf8(), "10:20");         // not a marker
  device.WriteMessages("Email", "1024\t%s%n %d.%02d.%02d %5d %%\n");  // no way past the ints
  EXPECT_EQ(GetTimeMsg(0, 0, OleDate(2009, 1, 5, 13, 5, 9)).ToUtf8(), "%s%n 1.05.09     0 % PM");
}

TEST(DateDisplayTest, DateFollowsTheLanguage) {
  const std::pair<int, std::u16string> cases[] = {{1, u"Mon, Jan 5, 2009"},
                                                  {7, u"Mon, Jan 5, 2009"},
                                                  {81, u"2009年1月5日(月)"},
                                                  {82, u"2009년 1월 5일 (월)"}};
  for (const auto& [language, expected] : cases) {
    Device device("UTC0", language);
    EXPECT_EQ(Utf8(GetDateMsg(0, 0, OleDate(2009, 1, 5, 23, 59, 59)).Str()), Utf8(expected));
  }
  Device device("UTC0", 1);
  EXPECT_EQ(GetDateMsg(0, 0, OleDate(2004, 2, 29, 0, 0, 0)).ToUtf8(), "Sun, Feb 29, 2004");
  device.WriteMessages("Resource", "2\t%D.%m.%Y (%W) %Q %% %s%\n");
  EXPECT_EQ(GetDateMsg(0, 0, OleDate(2009, 10, 5, 0, 0, 0)).ToUtf8(), "5.10.2009 (Mon) %Q % %s%");
  for (double notADate : {std::nan(""), 1e300, -700000.0}) {
    EXPECT_TRUE(GetDateMsg(0, 0, notADate).IsEmpty());
    EXPECT_TRUE(GetTimeMsg(0, 0, notADate).IsEmpty());
  }
}

}  // namespace
}  // namespace mailslice::datetime
