#include "codec/quoted_printable_vector.h"

#include <array>
#include <bit>
#include <cstdint>

#include "codec/avx2.h"

namespace mailslice::codec {

#ifdef MAILSLICE_AVX2_PATHS
namespace {

constexpr size_t kBlockBytes = 32;
constexpr size_t kQuarterBytes = 8;
// An escape that starts in a block may end two bytes behind it.
constexpr size_t kLookAhead = 2;
constexpr uint8_t kNoByte = 0x80;  // a shuffle index that yields zero

// For each set of kept bytes among eight, the shuffle that gathers them at the front.
constexpr std::array<std::array<uint8_t, kQuarterBytes>, 256> MakeGatherTable() {
  std::array<std::array<uint8_t, kQuarterBytes>, 256> table{};
  for (unsigned kept = 0; kept < 256; ++kept) {
    size_t next = 0;
    for (uint8_t place = 0; place < kQuarterBytes; ++place) {
      if ((kept >> place) & 1) table[kept][next++] = place;
    }
    while (next < kQuarterBytes) table[kept][next++] = kNoByte;
  }
  return table;
}
constexpr auto kGather = MakeGatherTable();

__attribute__((target("avx2"))) inline __m256i Load(const unsigned char* at) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at));
}

__attribute__((target("avx2"))) inline __m256i Every(char byte) { return _mm256_set1_epi8(byte); }

// A byte is an upper-case hex digit (the only ones that count, as in the byte-at-a-time
// decoder) where the classes of its two halves share a bit: "0" to "9" have a high half of 3
// and a low one up to 9, "A" to "F" a high half of 4 and a low one from 1 to 6.
constexpr char kDigit = 1, kLetter = 2;

struct HexReading {
  __m256i valid;  // 0xFF for each byte that is a hex digit
  __m256i value;  // its value (meaningful for digits only)
};

__attribute__((target("avx2"))) inline HexReading ReadHex(__m256i bytes) {
  const __m256i lowClasses = _mm256_setr_epi8(
      kDigit, kDigit | kLetter, kDigit | kLetter, kDigit | kLetter, kDigit | kLetter,
      kDigit | kLetter, kDigit | kLetter, kDigit, kDigit, kDigit, 0, 0, 0, 0, 0, 0, kDigit,
      kDigit | kLetter, kDigit | kLetter, kDigit | kLetter, kDigit | kLetter, kDigit | kLetter,
      kDigit | kLetter, kDigit, kDigit, kDigit, 0, 0, 0, 0, 0, 0);
  const __m256i highClasses =
      _mm256_setr_epi8(0, 0, 0, kDigit, kLetter, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, kDigit,
                       kLetter, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
  // A letter's value is its low half and nine.
  const __m256i highValues = _mm256_setr_epi8(0, 0, 0, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                              0, 0, 9, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m256i halfMask = Every(0x0F);
  __m256i low = _mm256_and_si256(bytes, halfMask);
  __m256i high = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), halfMask);
  __m256i shared = _mm256_and_si256(_mm256_shuffle_epi8(lowClasses, low),
                                    _mm256_shuffle_epi8(highClasses, high));
  return {_mm256_cmpgt_epi8(shared, _mm256_setzero_si256()),
          _mm256_add_epi8(low, _mm256_shuffle_epi8(highValues, high))};
}

// Writes the kept bytes among eight of `bytes` (one bit each in `kept`) at `out`, in order, as
// eight bytes; returns how many are kept.
__attribute__((target("avx2,popcnt"))) inline size_t WriteKept(__m128i bytes, unsigned kept,
                                                               unsigned char* out) {
  __m128i gather = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(kGather[kept].data()));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), _mm_shuffle_epi8(bytes, gather));
  return static_cast<size_t>(std::popcount(kept));
}

// The same for the thirty-two bytes of `block`, a quarter at a time.
__attribute__((target("avx2,popcnt"))) inline size_t WriteKept(__m256i block, uint32_t kept,
                                                               unsigned char* out) {
  constexpr unsigned kQuarter = 0xFF;
  __m128i low = _mm256_castsi256_si128(block), high = _mm256_extracti128_si256(block, 1);
  size_t written = WriteKept(low, kept & kQuarter, out);
  written += WriteKept(_mm_srli_si128(low, kQuarterBytes), kept >> 8 & kQuarter, out + written);
  written += WriteKept(high, kept >> 16 & kQuarter, out + written);
  written += WriteKept(_mm_srli_si128(high, kQuarterBytes), kept >> 24, out + written);
  return written;
}

__attribute__((target("avx2,popcnt"))) DecodedBlocks DecodeAvx2(const unsigned char* in,
                                                                size_t size, unsigned char* out) {
  DecodedBlocks done;
  uint64_t anyHex = 0;
  while (size - done.read >= kBlockBytes + kLookAhead) {
    const unsigned char* at = in + done.read;
    __m256i block = Load(at);
    __m256i equals = _mm256_cmpeq_epi8(block, Every('='));
    if (_mm256_testz_si256(equals, equals)) {
      // Plain text is copied as it stands (the output never runs ahead of the input).
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + done.written), block);
      done.written += kBlockBytes;
      done.read += kBlockBytes;
      continue;
    }
    __m256i next = Load(at + 1), afterNext = Load(at + 2);
    HexReading high = ReadHex(next), low = ReadHex(afterNext);
    __m256i hex = _mm256_and_si256(equals, _mm256_and_si256(high.valid, low.valid));
    __m256i soft =
        _mm256_and_si256(equals, _mm256_and_si256(_mm256_cmpeq_epi8(next, Every('\r')),
                                                  _mm256_cmpeq_epi8(afterNext, Every('\n'))));
    uint64_t escapes = static_cast<uint32_t>(_mm256_movemask_epi8(equals));
    uint64_t hexEscapes = static_cast<uint32_t>(_mm256_movemask_epi8(hex));
    uint64_t softBreaks = static_cast<uint32_t>(_mm256_movemask_epi8(soft));
    if ((hexEscapes | softBreaks) != escapes) break;
    // A hex escape becomes its byte where its "=" stood, and its digits go; a soft line break
    // goes whole. An escape at the block's last two places takes bytes of the next block.
    __m256i values = _mm256_or_si256(
        _mm256_and_si256(_mm256_slli_epi16(high.value, 4), Every(static_cast<char>(0xF0))),
        low.value);
    __m256i decoded = _mm256_blendv_epi8(block, values, hex);
    uint64_t dropped =
        hexEscapes << 1 | hexEscapes << 2 | softBreaks | softBreaks << 1 | softBreaks << 2;
    done.written += WriteKept(decoded, static_cast<uint32_t>(~dropped), out + done.written);
    done.read += kBlockBytes + static_cast<size_t>(std::bit_width(dropped >> kBlockBytes));
    anyHex |= hexEscapes;
  }
  done.anyEscape = anyHex != 0;
  return done;
}

}  // namespace
#endif

DecodedBlocks DecodePlainEscapeBlocks(const unsigned char* in, size_t size, unsigned char* out) {
#ifdef MAILSLICE_AVX2_PATHS
  if (HaveAvx2()) return DecodeAvx2(in, size, out);
#endif
  (void)in;
  (void)size;
  (void)out;
  return DecodedBlocks();
}

}  // namespace mailslice::codec
