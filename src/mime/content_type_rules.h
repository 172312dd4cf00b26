// The spellings and small rules that the content-type readers share.
#ifndef MAILSLICE_MIME_CONTENT_TYPE_RULES_H
#define MAILSLICE_MIME_CONTENT_TYPE_RULES_H

#include <mailslice/cstring.h>

#include <cstring>
#include <string_view>

namespace mailslice::mime {

inline constexpr std::string_view kContentTypeField = "Content-Type:";
inline constexpr std::string_view kContentTypeFieldLower = "Content-type:";
inline constexpr std::string_view kTransferEncodingName = "Content-Transfer-Encoding";

inline bool StartsWith(const char* at, std::string_view prefix) {
  return std::strncmp(at, prefix.data(), prefix.size()) == 0;
}

// An empty "Content-Type:" runs straight into the next field's name; such a hit is passed over.
inline bool RunsIntoNextFieldName(const char* afterField) {
  // A field with a value goes on with white space: only the three first letters need a look.
  switch (*afterField) {
    case 'D':
      return StartsWith(afterField, "Date");
    case 'C':
      return StartsWith(afterField, kTransferEncodingName);
    case 'M':
      return StartsWith(afterField, "Message-Id");
    default:
      return false;
  }
}

// The cut-out text [begin, end) as a content type: widened, trimmed, cut before its first
// CR LF and its first ";"; empty when an empty field swallowed the next line's "Sender:".
CString ContentTypeValue(const char* begin, const char* end);

// Whether ContentTypeValue(begin, end) equals `type` (ASCII, not empty), letters in either
// case. Where each byte of the device code page widens alone, the bytes are compared as they
// stand: nothing is widened.
bool ContentTypeValueIs(const char* begin, const char* end, std::string_view type);

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_CONTENT_TYPE_RULES_H
