// The main parser's date exports: the Date header cut into fields and dates shown to the user.
#include <span>

#include "api/mail_parser.h"
#include "datetime/date_display.h"
#include "datetime/date_header.h"
#include "datetime/time_format_setting.h"

namespace mailslice::api {

using datetime::kDateFieldCount;

// The application owns the eight entries; without them there is nothing to fill.
void MailParser::GetParsingDate(const CString& value, CString* fields) const {
  if (fields == nullptr) return;
  datetime::ParseDateHeader(value, datetime::DateFields(fields, kDateFieldCount));
}

CString MailParser::GetNewDate(const CString* fields) const {
  if (fields == nullptr) return CString();
  return datetime::JoinDateFields(
      std::span<const CString, kDateFieldCount>(fields, kDateFieldCount));
}

CString MailParser::ConvertToDisplayTime(const CString& time) const {
  return datetime::DisplayTimeOf(time);
}

// The two leading arguments are reserved by the mail application's calling convention.
CString MailParser::GetDateMsg(int, int, double date) const { return datetime::DateText(date); }

CString MailParser::GetTimeMsg(int, int, double date) const { return datetime::TimeText(date); }

CString MailParser::Get12hoursMsg(const CString& time, int marker) const {
  return datetime::WithDayHalfMarker(time, marker);
}

int MailParser::LoadTimeFormat() const { return datetime::LoadTimeFormat(); }

CString MailParser::GetDayOfWeekString(int weekday) const { return datetime::WeekdayName(weekday); }

CString MailParser::ConvertMonthNumToString(int month) const { return datetime::MonthName(month); }

}  // namespace mailslice::api
