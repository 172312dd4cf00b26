// Decoding runs of clean Base64 (alphabet characters only, no line breaks, no padding) many
// characters at a time with the processor's vector instructions. Attachments are mostly such
// runs: 64 of every 78 bytes of a 76-column line. Everything else (line breaks, "=", stray
// bytes, groups cut by the end) stays with the character-at-a-time decoder and its exact rules.
#ifndef MAILSLICE_CODEC_BASE64_VECTOR_H
#define MAILSLICE_CODEC_BASE64_VECTOR_H

#include <cstddef>

namespace mailslice::codec {

// Characters taken by one step of the vector decoder; it writes 3/4 as many bytes.
inline constexpr size_t kVectorBlockCharacters = 32;
inline constexpr size_t kVectorBlockBytes = 24;

struct CleanRun {
  // Characters read: whole groups of alphabet characters, and CR LF line breaks between them.
  size_t characters = 0;
  size_t bytes = 0;  // bytes written, 3 for every group
  // Alphabet characters that follow them before the first byte outside the alphabet (a line
  // break, say), as far as the decoder looked; the caller decodes those group by group, and
  // need not ask the vector decoder again before it has passed them.
  size_t cleanAfter = 0;
};

// Decodes whole groups of alphabet characters from in[0, size) into out (which has room for
// `room` bytes), a block at a time, passing over CR LF line breaks that stand between whole
// groups and a clean block, up to the first other byte outside the alphabet, the last whole
// block, or the last block that fits. The bytes written are exactly those that decoding the
// same characters group by group writes, and nothing is written past them. Without vector
// instructions, or with less than a block left, it decodes nothing and reports the whole rest
// as left to the caller.
CleanRun DecodeCleanBase64(const unsigned char* in, size_t size, unsigned char* out, size_t room);

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_BASE64_VECTOR_H
