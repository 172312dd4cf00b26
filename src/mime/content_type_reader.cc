#include "mime/content_type_reader.h"

#include "mime/content_type_rules.h"

namespace mailslice::mime {

ContentTypeReader::ContentTypeReader(std::string_view text)
    : unguarded_(
          text, std::string(kContentTypeField),
          [](const char* at) { return !RunsIntoNextFieldName(at + kContentTypeField.size()); }),
      lowerCase_(text, std::string(kContentTypeFieldLower),
                 [](const char* at) {
                   return !StartsWith(at + kContentTypeFieldLower.size(), kTransferEncodingName);
                 }),
      any_(text, std::string(kContentTypeField)),
      crlf_(text, "\r\n"),
      lf_(text, "\n") {}

const CString& ContentTypeReader::At(const char* position) {
  const char* field = unguarded_.Next(position);
  if (field == nullptr) field = lowerCase_.Next(position);
  if (field == nullptr) {
    // A field that ran into the next field's name is still taken, unless that name is
    // Content-Transfer-Encoding: then the text has no usable content type.
    field = any_.Next(position);
    if (field != nullptr && StartsWith(field + kContentTypeField.size(), kTransferEncodingName)) {
      field = nullptr;
    }
  }
  if (field != cachedField_ || !cached_) {
    cachedField_ = field;
    cached_ = field == nullptr ? CString() : ValueOf(field);
  }
  return *cached_;
}

CString ContentTypeReader::ValueOf(const char* field) {
  const char* valueStart = field + kContentTypeField.size();
  if (*valueStart == '\0') return CString();
  const char* valueEnd = crlf_.Next(valueStart + 1);
  if (valueEnd == nullptr) valueEnd = lf_.Next(valueStart + 1);
  if (valueEnd == nullptr) return CString();
  return ContentTypeValue(valueStart, valueEnd);
}

}  // namespace mailslice::mime
