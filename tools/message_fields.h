// The pieces of the loaded message as the commands print them: header values, decoded views,
// dates in local display form, the readable body and the attachment names.
#ifndef MAILSLICE_TOOLS_MESSAGE_FIELDS_H
#define MAILSLICE_TOOLS_MESSAGE_FIELDS_H

#include <mailslice/mailslice.h>

#include <string>
#include <vector>

namespace mailslice::tools {

struct HeaderField {
  const char* label;    // as the headers command prints it
  const char* jsonKey;  // as the JSON objects name it
  CString (*read)();
};

// The fields the mail application shows, in the order the headers command prints them.
inline constexpr HeaderField kHeaderFields[] = {
    {"From", "from", GetFrom},
    {"To", "to", GetTo},
    {"Cc", "cc", GetCc},
    {"Bcc", "bcc", GetBcc},
    {"Subject", "subject", GetSubject},
    {"Date", "date", GetDate},
    {"Reply-To", "reply_to", GetReplyTo},
    {"Delivered-To", "delivered_to", GetDelivered1},
    {"X-Apparently-To", "x_apparently_to", GetDelivered2},
    {"Envelope-To", "envelope_to", GetDelivered3},
};

// The Date as the reader shows it: in the device's zone, language and clock setting
// ("Mon, Jan 5, 2009 10:20:30 AM"). A Date that cannot be read shows as the device words a
// date of zeros.
std::string LocalDate();

// The Date in the device's zone through its date-and-time message ("2009/01/05 10:20:30"):
// short, and in the same order for every message, for scan lines.
std::string LocalDateAndTime();

// The Cc addresses of a Cc value, one an entry.
std::vector<std::string> CcAddresses(const CString& value);

// The readable body, with the reader's CR LF line ends as LF.
std::string ReadableBody();

// The attachment list of the loaded message, as GetAttachFile fills it.
std::vector<std::string> AttachmentNames();

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_MESSAGE_FIELDS_H
