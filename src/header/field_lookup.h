// Header field lookup: the value of a named field, found case-insensitively at a line start,
// unfolded, with tabs made spaces and white space trimmed. Encoded words are left as written.
#ifndef MAILSLICE_HEADER_FIELD_LOOKUP_H
#define MAILSLICE_HEADER_FIELD_LOOKUP_H

#include <mailslice/cstring.h>

#include <string>
#include <string_view>

namespace mailslice::header {

// The value of occurrence `occurrence` (0 for the first) of field `name` (without colon) in a
// header block; empty when the field is missing.
CString LookupFieldInBlock(std::u16string_view headerBlock, std::u16string_view name,
                           int occurrence = 0);

// The same, in the header block of a whole message text (null for none).
CString LookupField(const char* message, std::u16string_view name, int occurrence = 0);

}  // namespace mailslice::header

#endif  // MAILSLICE_HEADER_FIELD_LOOKUP_H
