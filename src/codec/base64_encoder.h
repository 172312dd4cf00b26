// Base64 encoding of outgoing mail: lines of 76 characters ending in CR LF.
#ifndef MAILSLICE_CODEC_BASE64_ENCODER_H
#define MAILSLICE_CODEC_BASE64_ENCODER_H

#include <mailslice/cstring.h>

namespace mailslice::codec {

inline constexpr int kEncodedLineLength = 76;

// Encodes `length` bytes into a new calloc'd, NUL-terminated buffer that the caller frees (null
// when memory runs out). Inputs shorter than three bytes encode as four "=".
char* EncodeToChar(const unsigned char* bytes, int length);

// The library's outgoing-mail encoder. Encode and EncodeToCString give the EncodeToChar text,
// as bytes and as wide text.
class OutgoingEncoder {
 public:
  char* Encode(const unsigned char* bytes, int length) const;
  char* EncodeToChar(const unsigned char* bytes, int length) const;
  CString EncodeToCString(const unsigned char* bytes, int length) const;
};

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_BASE64_ENCODER_H
