#include "platform/time_zone.h"

#include <time.h>

#include <cstdlib>
#include <string>

namespace mailslice::platform {
namespace {

// Has the C library take up the time zone again when it may have changed. Without TZ, tzset
// looks at the system's time-zone file on every call; here it is called when TZ has changed
// (set, unset or given another value) and otherwise at most once a second, so a change of the
// system's zone shows within a second.
void RefreshTimeZone() {
  constexpr int64_t kRefreshNanoseconds = 1'000'000'000;
  thread_local bool refreshed = false;
  thread_local bool hadZone = false;
  thread_local std::string zone;
  thread_local int64_t refreshedAt = 0;
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  int64_t nanoseconds = static_cast<int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
  const char* current = std::getenv("TZ");
  bool same = refreshed && hadZone == (current != nullptr) &&
              (current == nullptr || zone == current) &&
              nanoseconds - refreshedAt < kRefreshNanoseconds;
  if (same) return;
  tzset();
  refreshed = true;
  hadZone = current != nullptr;
  zone = current != nullptr ? current : "";
  refreshedAt = nanoseconds;
}

}  // namespace

TimeZoneInformation CurrentTimeZone() {
  RefreshTimeZone();
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
  RefreshTimeZone();
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
