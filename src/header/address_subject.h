// Display text from raw header values: the sender or recipient decoded, the bare address in
// angle brackets, the subject with its encoded words decoded, and the Cc addresses one by one.
// Each works only on the value it is given.
#ifndef MAILSLICE_HEADER_ADDRESS_SUBJECT_H
#define MAILSLICE_HEADER_ADDRESS_SUBJECT_H

#include <mailslice/cstring.h>

namespace mailslice::header {

// The message shown for a sender or recipient that the message leaves empty.
inline constexpr int kUnknownAddressMessage = 133;

// The decoded From or To value; the localised "unknown" message for an empty one.
CString MailFrom(const CString& value);

// The text between the first "<" and the last ">"; the value itself when either is missing.
// Nothing is trimmed and quotes stay.
CString MailFromAddress(const CString& value);

// The subject with its encoded words decoded. Text before the first word and after the last
// stays; whatever stands between two words is dropped.
CString ParsingSubject(const CString& value);

// Appends the addresses of a Cc value to `list`: each item ends at a ">" or, without one, at a
// comma.
void CcList(const CString& value, CStringArray* list);

}  // namespace mailslice::header

#endif  // MAILSLICE_HEADER_ADDRESS_SUBJECT_H
