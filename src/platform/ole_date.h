// The OLE Automation date: days since 30 December 1899 as a double, the integer part the day
// and the fraction the time of day (for days before that date the fraction counts towards
// the later hour: -1.25 is 29 December 1899, 06:00). Valid from the year 100 to 9999.
#ifndef MAILSLICE_PLATFORM_OLE_DATE_H
#define MAILSLICE_PLATFORM_OLE_DATE_H

#include <optional>

namespace mailslice::platform {

struct CalendarTime {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  int dayOfWeek = 0;  // 1 = Sunday .. 7 = Saturday; filled when read from a date
};

// Nothing when a field is out of its range (month 1..12, day within the month, hour 0..23,
// minute and second 0..59, year 100..9999).
std::optional<double> ToOleDate(const CalendarTime& time);

// The calendar fields of a date, rounded to the nearest second; nothing outside the range.
std::optional<CalendarTime> FromOleDate(double date);

// The date moved by a span of days, hours, minutes and seconds (each may be negative);
// nothing when the date or the result is outside the range.
std::optional<double> AddSpan(double date, long days, long hours, long minutes, long seconds);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_OLE_DATE_H
