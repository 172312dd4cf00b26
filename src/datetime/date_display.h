// Dates and times shown to the device's user: in the device's time zone, language and 12- or
// 24-hour setting, with the words taken from the "Email" message file.
#ifndef MAILSLICE_DATETIME_DATE_DISPLAY_H
#define MAILSLICE_DATETIME_DATE_DISPLAY_H

#include <mailslice/cstring.h>

#include <optional>

namespace mailslice::datetime {

// Message numbers of the "Email" message file.
inline constexpr int kMorningMarker = 1192;      // hours 0 to 11, "AM"
inline constexpr int kAfternoonMarker = 1193;    // hours 12 to 23, "PM"
inline constexpr int kTimeFormatMessage = 1024;  // hour, minute, second: "%02d:%02d:%02d"
// Resource number of the date pattern (see DateText).
inline constexpr unsigned kDatePatternResource = 2;

// The device's offset from Coordinated Universal Time in minutes, positive east, daylight
// saving included while it is in force.
int TimeZoneBias();

// Month 1..12 and weekday 1..7 (1 = Sunday) in the device's language; empty for any other
// number.
CString MonthName(int month);
CString WeekdayName(int weekday);

// The morning or afternoon marker put before the time (Japanese, Korean) or after it (every
// other language), one blank between; any other marker leaves the time as it is.
CString WithDayHalfMarker(const CString& time, int marker);

// The local OLE date of a "year/month/day hour:minute:second" text in Coordinated Universal
// Time, fields read by position; nothing when that is not a date.
std::optional<double> LocalDateOf(const CString& universalTime);

// The local date and time of such a text as the device words it. A text that is not a date
// (among them the "0000/00/00 00:00:00" of a Date header that could not be read) is worded
// with every field 0.
CString DisplayTimeOf(const CString& universalTime);

// The time of an OLE date in the user's 12- or 24-hour setting; empty for a value that is not
// a date.
CString TimeText(double date);

// The date of an OLE date as the user's language writes it; empty for a value that is not a
// date. See DateText in date_display.cc for the patterns.
CString DateText(double date);

}  // namespace mailslice::datetime

#endif  // MAILSLICE_DATETIME_DATE_DISPLAY_H
