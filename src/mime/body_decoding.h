// The body decoding pipeline: the raw body of one chosen part to wide text, undoing its
// transfer encoding and then converting its charset as the device's language asks.
#ifndef MAILSLICE_MIME_BODY_DECODING_H
#define MAILSLICE_MIME_BODY_DECODING_H

#include <mailslice/cstring.h>

#include <string>
#include <string_view>

namespace mailslice::mime {

// The wide text of a NUL-terminated raw body (empty for null). The charset and the transfer
// encoding are compared in lower case; an unknown transfer encoding is widened as it stands,
// with no charset conversion.
CString DecodeBodyText(const char* body, CString charset, CString transferEncoding,
                       const CString& contentType);
// The same text, for a caller that goes on working on it. Given `page`, it receives the text
// narrowed to the device code page as the HTML reader reads it, when that comes out of the
// decoding (UTF-8 bodies on the single-byte code pages); else it is left empty.
// With `pageOnly`, the wide text is left out (returned empty) whenever the page comes out.
std::u16string DecodeBodyWide(const char* body, CString charset, CString transferEncoding,
                              std::string* page = nullptr, bool pageOnly = false);
// The same for a body that lies inside a longer text: it reads as a NUL-terminated copy would.
std::u16string DecodeBodyWide(std::string_view body, CString charset, CString transferEncoding,
                              std::string* page = nullptr, bool pageOnly = false);

// 8-bit text in `charset` (lower case) to wide text, by the rules of the device's language.
CString ConvertBodyCharset(std::string_view text, const CString& charset);

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_BODY_DECODING_H
