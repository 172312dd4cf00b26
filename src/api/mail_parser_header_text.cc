// The main parser's display text from raw header values.
#include "api/mail_parser.h"
#include "header/address_subject.h"

namespace mailslice::api {

CString MailParser::GetMailFrom(const CString& value) const { return header::MailFrom(value); }

// A recipient reads like a sender.
CString MailParser::GetMailTo(const CString& value) const { return header::MailFrom(value); }

CString MailParser::GetMailFromAddress(const CString& value) const {
  return header::MailFromAddress(value);
}

CString MailParser::GetParsingSubject(const CString& value) const {
  return header::ParsingSubject(value);
}

void MailParser::GetCCList(const CString& value, CStringArray* list) const {
  header::CcList(value, list);
}

}  // namespace mailslice::api
