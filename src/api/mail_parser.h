// The main mail parser: the library-wide object behind the header, body, subject, date,
// address, attachment and read-state exports. It keeps no state of its own about a message:
// the message is the message buffer.
#ifndef MAILSLICE_API_MAIL_PARSER_H
#define MAILSLICE_API_MAIL_PARSER_H

#include <mailslice/cstring.h>
#include <mailslice/part_record.h>

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

  // MIME parameters and the multipart walker.
  int GetBoundary(const char* text, CString& boundary, int* offset) const;
  CString GetContentType(const char* text, int wholeText) const;
  CString GetCharSet(const char* text) const;
  CString GetTransEncode(const char* text) const;
  CString TrimContType(PartRecord** records, int index) const;
  CString TrimTnsEncode(PartRecord** records, int index) const;
  CString TrimAttFileName(PartRecord** records, int index) const;
  int GetMultiPart(const char* text, const CString& boundary, PartRecord** records) const;
  int GetMultiPartNoInAttachFile(const char* text, const CString& boundary, int* count) const;

  // Transfer decodings; the results are new buffers that the caller frees.
  char* Base64Decode(const char* text, int* length) const;
  char* QPdecode(const char* text) const;

  // Display text from raw header values: senders and recipients, subjects, Cc addresses.
  CString GetMailFrom(const CString& value) const;
  CString GetMailTo(const CString& value) const;
  CString GetMailFromAddress(const CString& value) const;
  CString GetParsingSubject(const CString& value) const;
  void GetCCList(const CString& value, CStringArray* list) const;
};

}  // namespace mailslice::api

#endif  // MAILSLICE_API_MAIL_PARSER_H
