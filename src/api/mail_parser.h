// The main mail parser: the library-wide object behind the header, body, subject, date,
// address, attachment and read-state exports. It keeps no state of its own about a message:
// the message is the message buffer.
#ifndef MAILSLICE_API_MAIL_PARSER_H
#define MAILSLICE_API_MAIL_PARSER_H

#include <mailslice/cstring.h>
#include <mailslice/part_record.h>

#include "attach/attachment_list.h"
#include "attach/recent_attachments.h"

namespace mailslice::api {

class MailParser {
 public:
  // The readable body. The HTML arguments (a file name and three integers) reach the HTML
  // conversion: see mime/html_body.h.
  CString GetReadingBody(const char* text, int* alternative, const CString& htmlName, int html1,
                         int html2, int html3) const;
  CString GetBodyFromNoBoundary(const char* text, const CString& htmlName, int html1, int html2,
                                int html3) const;
  CString GetBodyFromIsBoundary(const char* text, const CString& boundary, int* alternative,
                                const CString& htmlName, int html1, int html2, int html3) const;
  char* GetSinglePartBody(const char* text) const;
  char* GetMultiPartFirstBody(const char* partText) const;
  CString GetRemainBody(const CString& text) const;
  CString GetFileNameToSaveWithHtml(const CString& name) const;

  // Attachments: the estimate, the listing into the attachment list, and the list itself.
  int GetAttachNumber(const char* text) const;
  int GetAttachFile(const char* text, CString& names, int* count);
  int GetMultiPartAttachInfo(PartRecord** records, int count);
  int GetAttachArrayCount() const;
  CString GetAttachArrayFile(int index) const;
  void AttachArrayRemoveall();
  void OnDeleteMailMessage(PartRecord** records, int count) const;

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

  // Saving attachments to files through the one temporary file, and choosing a free name.
  int IsFile(int unused, CString& path) const;
  int SaveAttachedFile(const char* text, const CString& altName, const CString& destPath,
                       const CString& boundary, const CString& fileName) const;
  int SaveAttachedEmlFile(const char* partText, const CString& destPath) const;
  int SaveBase64File(const char* start, const char* end, const CString& destPath) const;
  int SaveAttachFile(const char* start, const char* end, const CString& destPath) const;

  // Display text from raw header values: senders and recipients, subjects, Cc addresses.
  CString GetMailFrom(const CString& value) const;
  CString GetMailTo(const CString& value) const;
  CString GetMailFromAddress(const CString& value) const;
  CString GetParsingSubject(const CString& value) const;
  void GetCCList(const CString& value, CStringArray* list) const;

 private:
  attach::AttachmentList attachments_;  // the names of the latest listing
  // The parts of the message whose attachments were saved last: saving the next one of the
  // same message finds it without cutting the message again.
  mutable attach::RecentAttachments recentAttachments_;
};

}  // namespace mailslice::api

#endif  // MAILSLICE_API_MAIL_PARSER_H
