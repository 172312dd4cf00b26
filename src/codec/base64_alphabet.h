// The Base64 alphabet of MIME (RFC 2045), shared by the decoders and the encoders.
#ifndef MAILSLICE_CODEC_BASE64_ALPHABET_H
#define MAILSLICE_CODEC_BASE64_ALPHABET_H

namespace mailslice::codec {

inline constexpr char kBase64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline constexpr char kBase64Padding = '=';

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_BASE64_ALPHABET_H
