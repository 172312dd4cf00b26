// The main parser's read-state checks.
#include "api/mail_parser.h"
#include "header/read_state.h"

namespace mailslice::api {

char* MailParser::OpeningMail(const CString& path) const {
  return header::ReadMailFile(path.ToUtf8());
}

int MailParser::IsReadingMail(const CString& path) const {
  return header::IsMarkedAsReading(path.ToUtf8());
}

int MailParser::IsInitIndex(const CString& first, const CString& second) const {
  return header::HaveSameCreationTime(first.ToUtf8(), second.ToUtf8());
}

}  // namespace mailslice::api
