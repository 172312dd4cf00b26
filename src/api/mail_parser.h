// The main mail parser: the library-wide object behind the header, body, subject, date,
// address, attachment and read-state exports. It keeps no state of its own about a message:
// the message is the message buffer.
#ifndef MAILSLICE_API_MAIL_PARSER_H
#define MAILSLICE_API_MAIL_PARSER_H

#include <mailslice/cstring.h>

namespace mailslice::api {

class MailParser {
 public:
  // Read state of message files.
  char* OpeningMail(const CString& path) const;
  int IsReadingMail(const CString& path) const;
  int IsInitIndex(const CString& first, const CString& second) const;

  // The Date header and dates shown to the user.
  void GetParsingDate(const CString& value, CString* fields) const;
  CString GetNewDate(const CString* fields) const;
  CString ConvertToDisplayTime(const CString& time) const;
  CString GetDateMsg(int reserved1, int reserved2, double date) const;
  CString GetTimeMsg(int reserved1, int reserved2, double date) const;
  CString Get12hoursMsg(const CString& time, int marker) const;
  int LoadTimeFormat() const;
  CString GetDayOfWeekString(int weekday) const;
  CString ConvertMonthNumToString(int month) const;
};

}  // namespace mailslice::api

#endif  // MAILSLICE_API_MAIL_PARSER_H
