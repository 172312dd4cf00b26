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

  // Transfer decodings; the results are new buffers that the caller frees.
  char* Base64Decode(const char* text, int* length) const;
  char* QPdecode(const char* text) const;
};

}  // namespace mailslice::api

#endif  // MAILSLICE_API_MAIL_PARSER_H
