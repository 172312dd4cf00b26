#include "datetime/date_display.h"

#include <mailslice/device.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

#include "datetime/text_number.h"
#include "datetime/time_format_setting.h"
#include "platform/format_integers.h"
#include "platform/ole_date.h"
#include "platform/time_zone.h"

namespace mailslice::datetime {
namespace {

using platform::CalendarTime;

constexpr int kJapaneseLanguage = 81;
constexpr int kKoreanLanguage = 82;

// In the message file October to December (116..118) stand apart from the other months, and
// Sunday (131) apart from the other weekdays.
constexpr std::array<int, 12> kMonthMessages = {154, 155, 156, 157, 158, 159,
                                                160, 161, 162, 116, 117, 118};
constexpr std::array<int, 7> kWeekdayMessages = {131, 120, 122, 124, 126, 128, 130};

constexpr int kNoon = 12;

// The date pattern when the language's catalog gives none: weekday, month, day, year.
constexpr char16_t kFallbackDatePattern[] = u"%W, %M %D, %Y";

// A CSystemValue comes with the "Email" message file of the device's language loaded.
CSystemValue EmailMessages() { return CSystemValue(); }

int LanguageCode() { return CVelEdit().GetCurrentLanguageCode(); }

bool MarkerGoesFirst(int language) {
  return language == kJapaneseLanguage || language == kKoreanLanguage;
}

std::u16string Decimal(int value) {
  std::string digits = std::to_string(value);
  return std::u16string(digits.begin(), digits.end());
}

CString MessageOf(const CSystemValue& messages, std::span<const int> numbers, int index) {
  if (index < 1 || index > static_cast<int>(numbers.size())) return CString();
  return messages.GetMessageW(numbers[static_cast<size_t>(index - 1)]);
}

CString MarkedTime(const CSystemValue& messages, const CString& time, int marker) {
  if (marker != kMorningMarker && marker != kAfternoonMarker) return time;
  CString word = messages.GetMessageW(marker);
  bool first = MarkerGoesFirst(LanguageCode());
  std::u16string_view before = first ? word.Str() : time.Str();
  std::u16string_view after = first ? time.Str() : word.Str();
  std::u16string text;
  text.reserve(before.size() + 1 + after.size());
  text.append(before).append(1, u' ').append(after);
  return CString(std::move(text));
}

// The field of a "year/month/day hour:minute:second" text at a place, cut as CString's Mid
// cuts, read as a number.
int NumberAt(std::u16string_view text, int first, int count) {
  int length = static_cast<int>(text.size());
  first = std::clamp(first, 0, length);
  count = std::clamp(count, 0, length - first);
  return LeadingInteger(text.substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

// Fills a date pattern: %W weekday name, %M month name, %m month number, %D day, %Y year, %% a
// percent sign. Only these conversions exist, so a pattern from a message file can put nothing
// but these fields in the text; any other "%" sequence is kept as written.
std::u16string ExpandDatePattern(std::u16string_view pattern, const CalendarTime& time,
                                 const CSystemValue& messages) {
  // Room for the pattern with its fields filled: names and numbers a few characters long.
  constexpr size_t kFieldRoom = 32;
  std::u16string out;
  out.reserve(pattern.size() + kFieldRoom);
  for (size_t at = 0; at < pattern.size(); ++at) {
    if (pattern[at] != u'%' || at + 1 == pattern.size()) {
      out += pattern[at];
      continue;
    }
    switch (pattern[++at]) {
      case u'W':
        out += MessageOf(messages, kWeekdayMessages, time.dayOfWeek).Str();
        break;
      case u'M':
        out += MessageOf(messages, kMonthMessages, time.month).Str();
        break;
      case u'm':
        out += Decimal(time.month);
        break;
      case u'D':
        out += Decimal(time.day);
        break;
      case u'Y':
        out += Decimal(time.year);
        break;
      case u'%':
        out += u'%';
        break;
      default:
        out.append(pattern.substr(at - 1, 2));
    }
  }
  return out;
}

}  // namespace

int TimeZoneBias() {
  platform::TimeZoneInformation zone = platform::CurrentTimeZone();
  int bias = zone.daylightInForce ? zone.bias + zone.daylightBias : zone.bias;
  return -bias;
}

CString MonthName(int month) {
  if (month < 1 || month > static_cast<int>(kMonthMessages.size())) return CString();
  return MessageOf(EmailMessages(), kMonthMessages, month);
}

CString WeekdayName(int weekday) {
  if (weekday < 1 || weekday > static_cast<int>(kWeekdayMessages.size())) return CString();
  return MessageOf(EmailMessages(), kWeekdayMessages, weekday);
}

CString WithDayHalfMarker(const CString& time, int marker) {
  if (marker != kMorningMarker && marker != kAfternoonMarker) return time;
  return MarkedTime(EmailMessages(), time, marker);
}

std::optional<double> LocalDateOf(const CString& universalTime) {
  std::u16string_view text = universalTime.Str();
  int length = universalTime.GetLength();
  CalendarTime written;
  written.year = NumberAt(text, 0, 4);
  written.month = NumberAt(text, 5, 2);
  written.day = NumberAt(text, 8, 2);
  written.hour = NumberAt(text, 11, 2);
  written.minute = NumberAt(text, 14, 2);
  written.second = NumberAt(text, length - 2, 2);
  auto date = platform::ToOleDate(written);
  if (!date) return std::nullopt;
  return platform::AddSpan(*date, 0, 0, TimeZoneBias(), 0);
}

CString DisplayTimeOf(const CString& universalTime) {
  CalendarTime local;  // every field 0 when the text is not a date
  if (auto date = LocalDateOf(universalTime)) local = platform::FromOleDate(*date).value_or(local);
  return EmailMessages().GetDateAndTimeMessage(local.year, local.month, local.day, local.hour,
                                               local.minute, local.second);
}

CString TimeText(double date) {
  CSystemValue messages = EmailMessages();
  CString format = messages.GetMessageW(kTimeFormatMessage);
  int clock = LoadTimeFormat();
  auto time = platform::FromOleDate(date);
  if (!time) return CString();
  if (clock == kTwentyFourHourClock) {
    return CString(
        platform::FormatIntegers(format.Str(), {time->hour, time->minute, time->second}));
  }
  // Noon is 12 PM and midnight 12 AM.
  bool afternoon = time->hour >= kNoon;
  int shownHour = time->hour % kNoon == 0 ? kNoon : time->hour % kNoon;
  CString text(platform::FormatIntegers(format.Str(), {shownHour, time->minute, time->second}));
  return MarkedTime(messages, text, afternoon ? kAfternoonMarker : kMorningMarker);
}

// The date is written with the pattern that the "Resource" catalog of the device's language
// gives as resource kDatePatternResource, so a message file may change the order. The built-in
// catalogs give English (and every language without its own catalog) "Mon, Jan 5, 2009",
// Japanese "2009年1月5日(月)" and Korean "2009년 1월 5일 (월)"; the month and weekday words
// come from the "Email" message file of the language.
CString DateText(double date) {
  auto time = platform::FromOleDate(date);
  if (!time) return CString();
  CString pattern = CVelEdit().GetResource(kDatePatternResource);
  if (pattern.IsEmpty()) pattern = kFallbackDatePattern;
  return CString(ExpandDatePattern(pattern.Str(), *time, EmailMessages()));
}

}  // namespace mailslice::datetime
