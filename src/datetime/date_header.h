// The Date header cut into eight text fields and moved to Coordinated Universal Time, and the
// fields joined again as "year/month/day hour:minute:second".
#ifndef MAILSLICE_DATETIME_DATE_HEADER_H
#define MAILSLICE_DATETIME_DATE_HEADER_H

#include <mailslice/cstring.h>

#include <span>

namespace mailslice::datetime {

// The caller's date field array, in this order.
enum DateField {
  kDayOfWeekField,  // the day name as written ("Mon,"), or empty
  kDayField,
  kMonthField,  // "Jan" .. "Dec" as written; "01" .. "12" after the conversion
  kYearField,
  kHourField,
  kMinuteField,
  kSecondField,
  kZoneField,  // a sign and four digits as written, "+0900"
  kDateFieldCount
};
using DateFields = std::span<CString, kDateFieldCount>;

// What the numeric entries hold when the header does not give a date that can be shown (an
// unknown month name, a two-digit year, a day the month does not have, a missing field): the
// date "0000/00/00 00:00:00", which no real message carries.
inline constexpr char16_t kNoYearText[] = u"0000";
inline constexpr char16_t kNoFieldText[] = u"00";

// Fills `fields` from a Date header value. Entries 1 to 6 end up as zero-padded numbers of the
// date in Coordinated Universal Time ("%04d" year, "%02d" the others); entries 0 and 7 keep the
// day name and the zone as written. An entry the value does not reach keeps what the caller
// put there; tokens beyond the eighth entry are ignored.
void ParseDateHeader(const CString& value, DateFields fields);

// Entries 3, 2, 1, 4, 5 and 6 as "year/month/day hour:minute:second".
CString JoinDateFields(std::span<const CString, kDateFieldCount> fields);

}  // namespace mailslice::datetime

#endif  // MAILSLICE_DATETIME_DATE_HEADER_H
