// The device's time zone, taken from the C library's local time (so TZ applies).
#ifndef MAILSLICE_PLATFORM_TIME_ZONE_H
#define MAILSLICE_PLATFORM_TIME_ZONE_H

#include <cstdint>
#include <optional>

#include "platform/ole_date.h"

namespace mailslice::platform {

// As the device reports it: Coordinated Universal Time = local time + bias (+ daylightBias
// while daylight time is in force), all in minutes.
struct TimeZoneInformation {
  int bias = 0;
  int daylightBias = 0;
  bool daylightInForce = false;
};

TimeZoneInformation CurrentTimeZone();

// The local calendar time of an instant given in seconds since 1970-01-01 00:00 UTC; nothing
// when the C library cannot convert it.
std::optional<CalendarTime> LocalTimeOf(int64_t secondsSinceEpoch);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_TIME_ZONE_H
