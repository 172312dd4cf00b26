// Decoding quoted-printable thirty-two bytes at a time with the processor's vector instructions. A
// body mostly holds plain text, escapes of two upper-case hex digits (every byte of an accented
// letter, every "=" of an HTML attribute) and soft line breaks: a block holding only those is
// decoded in one step, without a branch for each escape. A block holding any other escape ("=3d",
// "=A" CR LF, "==", an escape cut by the end) stays with the byte-at-a-time decoder and its
// exact rules.
#ifndef MAILSLICE_CODEC_QUOTED_PRINTABLE_VECTOR_H
#define MAILSLICE_CODEC_QUOTED_PRINTABLE_VECTOR_H

#include <cstddef>

namespace mailslice::codec {

struct DecodedBlocks {
  size_t read = 0;         // bytes taken from the input
  size_t written = 0;      // decoded bytes written
  bool anyEscape = false;  // an escape other than a soft line break was decoded
};

// Decodes in[0, size) into out block by block, up to the first block that holds another escape
// than those above, or that lies less than two bytes before the end (its last escape would reach
// past it). The decoded bytes are those the byte-at-a-time decoder writes for the same input;
// each step may write up to thirty-two bytes past them, which stay within out + read. Without
// vector instructions it decodes nothing.
DecodedBlocks DecodePlainEscapeBlocks(const unsigned char* in, size_t size, unsigned char* out);

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_QUOTED_PRINTABLE_VECTOR_H
