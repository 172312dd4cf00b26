// The main parser's MIME parameters and multipart walker.
#include "api/mail_parser.h"
#include "mime/header_parameters.h"
#include "mime/multipart_walker.h"
#include "mime/record_fields.h"

namespace mailslice::api {

int MailParser::GetBoundary(const char* text, CString& boundary, int* offset) const {
  return mime::GetBoundary(text, boundary, offset);
}

CString MailParser::GetContentType(const char* text, int wholeText) const {
  return mime::GetContentType(text, wholeText);
}

CString MailParser::GetCharSet(const char* text) const { return mime::GetCharSet(text); }

CString MailParser::GetTransEncode(const char* text) const { return mime::GetTransEncode(text); }

CString MailParser::TrimContType(PartRecord** records, int index) const {
  return mime::TrimmedRecordField(records, index, &PartRecord::contentType);
}

CString MailParser::TrimTnsEncode(PartRecord** records, int index) const {
  return mime::TrimmedRecordField(records, index, &PartRecord::transferEncoding);
}

CString MailParser::TrimAttFileName(PartRecord** records, int index) const {
  return mime::TrimmedRecordField(records, index, &PartRecord::fileName);
}

int MailParser::GetMultiPart(const char* text, const CString& boundary,
                             PartRecord** records) const {
  return mime::GetMultiPart(text, boundary, records);
}

int MailParser::GetMultiPartNoInAttachFile(const char* text, const CString& boundary,
                                           int* count) const {
  return mime::GetMultiPartNoInAttachFile(text, boundary, count);
}

}  // namespace mailslice::api
