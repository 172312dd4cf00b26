// Quoted-printable decoding of message bodies, attachments and encoded words.
#ifndef MAILSLICE_CODEC_QUOTED_PRINTABLE_H
#define MAILSLICE_CODEC_QUOTED_PRINTABLE_H

#include <cstddef>
#include <string>

namespace mailslice::codec {

// The device language whose mail writes spaces in encoded words as underscores.
inline constexpr int kUnderscoreSpaceLanguage = 33;

// Decodes the NUL-terminated `text` into a new calloc'd, NUL-terminated buffer of (length of
// text + 1) bytes that the caller frees (null only when memory runs out). With `length`, the
// number of decoded bytes is stored there. Without it, underscores become spaces when the
// device language is kUnderscoreSpaceLanguage. An escape cut by the end of the text ends the
// decoding at once, with neither. *error receives the error flag.
char* DecodeQuotedPrintable(const char* text, int* length, int* error = nullptr);

// DecodeQuotedPrintable(text, nullptr) for a body, which is read up to its NUL only, written
// into `decoded` (its room is used, so a caller decoding one body after another asks the host
// for no new memory): `text` holds `size` bytes, read as if a NUL followed them (whatever does),
// and `decoded` gets size + 1 bytes, the text and its NUL first (what it held is left behind
// them, so a caller may hand over a kept buffer without clearing it).
void DecodeQuotedPrintableBody(const char* text, size_t size, std::string& decoded);

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_QUOTED_PRINTABLE_H
