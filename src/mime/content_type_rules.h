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
  return StartsWith(afterField, "Date") || StartsWith(afterField, kTransferEncodingName) ||
         StartsWith(afterField, "Message-Id");
}

// The cut-out text [begin, end) as a content type: widened, trimmed, cut before its first
// CR LF and its first ";"; empty when an empty field swallowed the next line's "Sender:".
CString ContentTypeValue(const char* begin, const char* end);

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_CONTENT_TYPE_RULES_H
