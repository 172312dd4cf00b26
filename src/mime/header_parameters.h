// The MIME parameters that steer the parser, pulled out of a stretch of 8-bit message text
// (a whole message or one part) by plain, case-sensitive searches for fixed spellings. None of
// them follows header structure: a spelling counts wherever it first occurs, which is how the
// messages this reader was built for are read.
#ifndef MAILSLICE_MIME_HEADER_PARAMETERS_H
#define MAILSLICE_MIME_HEADER_PARAMETERS_H

#include <mailslice/cstring.h>

namespace mailslice::mime {

// The boundary parameter: 1 and `boundary` (and `*offset`, the index of the value's first
// character in `text`, when asked) set when found; 0 and both untouched otherwise.
int GetBoundary(const char* text, CString& boundary, int* offset);

// The content type: from the MIME version line up to the first ";" (`wholeText` 0), or from
// the start of the text up to the line end (`wholeText` non-zero); empty when none is found.
CString GetContentType(const char* text, int wholeText);

// The stretch of the text GetContentType(text, wholeText) reads its value from (to be read with
// ContentTypeValue); both null when it reads none.
struct TextSpan {
  const char* begin = nullptr;
  const char* end = nullptr;
};
TextSpan ContentTypeSpan(const char* text, int wholeText);

// The charset parameter as written (quotes removed); empty when none is found.
CString GetCharSet(const char* text);

// The transfer encoding as written; "8bit" when none can be found.
CString GetTransEncode(const char* text);

// 1 for "quoted-printable", "base64", "8bit" or "7bit" in any letter case, else 0.
int IsKnownTransferEncoding(const CString& value);

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_HEADER_PARAMETERS_H
