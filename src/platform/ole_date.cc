#include "platform/ole_date.h"

#include <chrono>
#include <cmath>
#include <cstdint>

namespace mailslice::platform {
namespace {

using std::chrono::day;
using std::chrono::days;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr int64_t kSecondsPerDay = 86'400;
constexpr sys_days kOleEpoch = sys_days(year(1899) / month(12) / day(30));
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;

bool InRange(long value, long low, long high) { return value >= low && value <= high; }

// Seconds since the epoch on a straight time line (unlike the date's own encoding).
std::optional<int64_t> LinearSeconds(double date) {
  constexpr double kFirst = -657'434.0;  // 1 January 100
  constexpr double kEnd = 2'958'466.0;   // 1 January 10000
  if (!std::isfinite(date) || date < kFirst || date >= kEnd) return std::nullopt;
  double whole = std::trunc(date);
  int64_t dayNumber = static_cast<int64_t>(whole);
  int64_t timeOfDay = std::llround(std::fabs(date - whole) * kSecondsPerDay);
  return dayNumber * kSecondsPerDay + timeOfDay;
}

std::optional<double> FromLinearSeconds(int64_t linear) {
  int64_t dayNumber = linear / kSecondsPerDay;
  int64_t timeOfDay = linear % kSecondsPerDay;
  if (timeOfDay < 0) {
    timeOfDay += kSecondsPerDay;
    --dayNumber;
  }
  double fraction = static_cast<double>(timeOfDay) / kSecondsPerDay;
  double date = dayNumber >= 0 ? dayNumber + fraction : dayNumber - fraction;
  if (!LinearSeconds(date)) return std::nullopt;
  return date;
}

}  // namespace

std::optional<double> ToOleDate(const CalendarTime& time) {
  if (!InRange(time.year, kFirstYear, kLastYear) || !InRange(time.month, 1, 12) ||
      !InRange(time.hour, 0, 23) || !InRange(time.minute, 0, 59) || !InRange(time.second, 0, 59) ||
      time.day < 1 || time.day > 31) {
    return std::nullopt;
  }
  year_month_day date{year(time.year), month(static_cast<unsigned>(time.month)),
                      day(static_cast<unsigned>(time.day))};
  if (!date.ok()) return std::nullopt;
  int64_t dayNumber = (sys_days(date) - kOleEpoch).count();
  int64_t timeOfDay = time.hour * 3600 + time.minute * 60 + time.second;
  return FromLinearSeconds(dayNumber * kSecondsPerDay + timeOfDay);
}

std::optional<CalendarTime> FromOleDate(double date) {
  auto linear = LinearSeconds(date);
  if (!linear) return std::nullopt;
  int64_t dayNumber = *linear / kSecondsPerDay;
  int64_t timeOfDay = *linear % kSecondsPerDay;
  if (timeOfDay < 0) {
    timeOfDay += kSecondsPerDay;
    --dayNumber;
  }
  sys_days calendarDay = kOleEpoch + days(dayNumber);
  year_month_day ymd(calendarDay);
  CalendarTime time;
  time.year = static_cast<int>(ymd.year());
  time.month = static_cast<int>(static_cast<unsigned>(ymd.month()));
  time.day = static_cast<int>(static_cast<unsigned>(ymd.day()));
  time.hour = static_cast<int>(timeOfDay / 3600);
  time.minute = static_cast<int>(timeOfDay / 60 % 60);
  time.second = static_cast<int>(timeOfDay % 60);
  time.dayOfWeek = static_cast<int>(std::chrono::weekday(calendarDay).c_encoding()) + 1;
  return time;
}

std::optional<double> AddSpan(double date, long days, long hours, long minutes, long seconds) {
  auto linear = LinearSeconds(date);
  if (!linear) return std::nullopt;
  // Spans beyond the valid range of dates can only give an invalid date; keep them from
  // overflowing on the way.
  constexpr long kLimit = 1L << 40;
  if (std::labs(days) > kLimit || std::labs(hours) > kLimit || std::labs(minutes) > kLimit ||
      std::labs(seconds) > kLimit) {
    return std::nullopt;
  }
  int64_t span = static_cast<int64_t>(days) * kSecondsPerDay + static_cast<int64_t>(hours) * 3600 +
                 static_cast<int64_t>(minutes) * 60 + seconds;
  return FromLinearSeconds(*linear + span);
}

}  // namespace mailslice::platform
