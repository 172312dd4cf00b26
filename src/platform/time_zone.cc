#include "platform/time_zone.h"

#include <time.h>

namespace mailslice::platform {

TimeZoneInformation CurrentTimeZone() {
  tzset();
  time_t now = time(nullptr);
  tm local{};
  TimeZoneInformation zone;
  if (localtime_r(&now, &local) == nullptr) return zone;
  int offsetMinutes = static_cast<int>(local.tm_gmtoff / 60);  // east of UTC
  if (local.tm_isdst > 0) {
    // The standard offset is the C library's `timezone` (seconds west of UTC).
    zone.bias = static_cast<int>(timezone / 60);
    zone.daylightBias = -offsetMinutes - zone.bias;
    zone.daylightInForce = true;
  } else {
    zone.bias = -offsetMinutes;
    zone.daylightBias = -60;  // the usual hour, unused while standard time is in force
  }
  return zone;
}

std::optional<CalendarTime> LocalTimeOf(int64_t secondsSinceEpoch) {
  tzset();
  time_t instant = static_cast<time_t>(secondsSinceEpoch);
  tm local{};
  if (localtime_r(&instant, &local) == nullptr) return std::nullopt;
  CalendarTime time;
  time.year = local.tm_year + 1900;
  time.month = local.tm_mon + 1;
  time.day = local.tm_mday;
  time.hour = local.tm_hour;
  time.minute = local.tm_min;
  time.second = local.tm_sec;
  time.dayOfWeek = local.tm_wday + 1;
  return time;
}

}  // namespace mailslice::platform
