#include "codec/base64_vector.h"

#include <cstring>

#include "codec/avx2.h"

namespace mailslice::codec {

#ifdef MAILSLICE_AVX2_PATHS
namespace {

// The classification of Wojciech Muła and Daniel Lemire: a byte's low and high nibbles each
// pick a bit set from a table, and the byte is in the alphabet exactly when the two sets share
// no bit ("/" is told apart from the rest of its nibble row by its own compare). The same high
// nibble then picks the offset that turns the character into its six-bit value.
struct Classified {
  __m256i values;
  unsigned outside;  // one bit per byte outside the alphabet
};

__attribute__((target("avx2"))) inline Classified Classify(__m256i text) {
  const __m256i lowTable =
      _mm256_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13, 0x1A, 0x1B,
                       0x1B, 0x1B, 0x1A, 0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                       0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A);
  const __m256i highTable =
      _mm256_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10, 0x10, 0x10,
                       0x10, 0x10, 0x10, 0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10,
                       0x10, 0x10, 0x10, 0x10, 0x10, 0x10);
  const __m256i offsets =
      _mm256_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16, 19, 4, -65,
                       -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m256i slash = _mm256_set1_epi8(0x2F);
  const __m256i nibble = _mm256_set1_epi8(0x0F);
  __m256i high = _mm256_and_si256(_mm256_srli_epi32(text, 4), nibble);
  __m256i low = _mm256_and_si256(text, nibble);
  __m256i lowBits = _mm256_shuffle_epi8(lowTable, low);
  __m256i highBits = _mm256_shuffle_epi8(highTable, high);
  __m256i shared = _mm256_and_si256(lowBits, highBits);
  auto outside = static_cast<unsigned>(
      ~_mm256_movemask_epi8(_mm256_cmpeq_epi8(shared, _mm256_setzero_si256())));
  __m256i isSlash = _mm256_cmpeq_epi8(text, slash);
  __m256i offset = _mm256_shuffle_epi8(offsets, _mm256_add_epi8(isSlash, high));
  return {_mm256_add_epi8(text, offset), outside};
}

// Packs 32 six-bit values into 24 bytes, in the order the groups give them.
__attribute__((target("avx2"))) inline void StorePacked(__m256i values, unsigned char* out) {
  __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
  __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  groups = _mm256_shuffle_epi8(
      groups, _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1, 2, 1, 0, 6,
                               5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
  groups = _mm256_permutevar8x32_epi32(groups, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
  // Exactly 24 bytes: nothing is written past the decoded ones.
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(groups));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 16), _mm256_extracti128_si256(groups, 1));
}

__attribute__((target("avx2"))) CleanRun DecodeAvx2(const unsigned char* in, size_t size,
                                                    unsigned char* out, size_t room) {
  CleanRun run;
  while (size - run.characters >= kVectorBlockCharacters && room >= kVectorBlockBytes) {
    __m256i text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + run.characters));
    Classified block = Classify(text);
    if (block.outside == 0) {
      StorePacked(block.values, out);
      run.characters += kVectorBlockCharacters;
      run.bytes += kVectorBlockBytes;
      out += kVectorBlockBytes;
      room -= kVectorBlockBytes;
      continue;
    }
    // The whole groups in front of the first byte outside the alphabet (the end of a 76-column
    // line, say) come out of the same step; their bytes do not depend on the rest.
    auto clean = static_cast<size_t>(__builtin_ctz(block.outside));
    size_t groups = clean / 4;
    if (groups > 0) {
      alignas(32) unsigned char packed[kVectorBlockCharacters];
      StorePacked(block.values, packed);
      std::memcpy(out, packed, groups * 3);
      run.characters += groups * 4;
      run.bytes += groups * 3;
      out += groups * 3;
      room -= groups * 3;
    }
    // A CR LF line break between whole groups, followed by a clean block, is passed over, as the
    // group-by-group decoder passes over a line break followed by a whole group.
    size_t at = run.characters;
    bool lineBreak =
        clean % 4 == 0 && room >= kVectorBlockBytes && size - at >= 2 + kVectorBlockCharacters &&
        in[at] == '\r' && in[at + 1] == '\n' &&
        Classify(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + at + 2))).outside == 0;
    if (!lineBreak) {
      run.cleanAfter = clean % 4;
      return run;
    }
    run.characters += 2;
  }
  run.cleanAfter = size - run.characters;
  return run;
}

}  // namespace
#endif

CleanRun DecodeCleanBase64(const unsigned char* in, size_t size, unsigned char* out, size_t room) {
#ifdef MAILSLICE_AVX2_PATHS
  if (HaveAvx2()) return DecodeAvx2(in, size, out, room);
#endif
  (void)out;
  (void)room;
  return CleanRun{0, 0, size};
}

}  // namespace mailslice::codec
