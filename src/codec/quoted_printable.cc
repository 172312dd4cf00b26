#include "codec/quoted_printable.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "codec/quoted_printable_vector.h"
#include "platform/device_settings.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace mailslice::codec {
namespace {

constexpr int8_t kNotHexDigit = static_cast<int8_t>(0x82);
// An escape is "=" and two hex digits.
constexpr size_t kEscapeLength = 3;
constexpr size_t kBlockBytes = 16;

// Only upper-case hex digits: mail encoders write them so, and "=3d" stays text.
constexpr std::array<int8_t, 256> MakeHexTable() {
  std::array<int8_t, 256> table{};
  table.fill(kNotHexDigit);
  for (int digit = 0; digit < 10; ++digit) table['0' + digit] = static_cast<int8_t>(digit);
  for (int digit = 0; digit < 6; ++digit) table['A' + digit] = static_cast<int8_t>(10 + digit);
  return table;
}
constexpr std::array<int8_t, 256> kHexTable = MakeHexTable();

bool IsHexDigit(unsigned char byte) { return kHexTable[byte] != kNotHexDigit; }

struct Decoding {
  const unsigned char* in;
  const unsigned char* end;  // the terminating NUL
  unsigned char* out;
  unsigned char* written;  // the end of what the block copies wrote
  int error = 0;
};

// Decodes the escape whose "=" is at `in`, which has at least two bytes after it. A soft line
// break ("=" CR LF) gives nothing. The look for CR LF is made at both digit places and skips
// two bytes from the first of them either way, so "=A" CR LF swallows the A and the CR. A
// broken escape drops only the "=": the bytes after it are read again as text.
void DecodeEscape(Decoding& d) {
  const unsigned char* digits = d.in + 1;
  // Two hex digits, by far the most common escape, in one step: no digit is a CR, and the
  // error flag is raised for every escape that is not a soft line break.
  int high = kHexTable[digits[0]];
  int low = kHexTable[digits[1]];
  if ((high | low) >= 0) {
    *d.out++ = static_cast<unsigned char>(high << 4 | low);
    d.in += kEscapeLength;
    d.error = 1;
    return;
  }
  bool valid = true;
  for (int k = 0; k < 2; ++k) {
    if (!IsHexDigit(digits[k])) valid = false;
    // The byte behind the second digit may be the end of the text, which reads as its NUL
    // (also for a text that goes on beyond the stretch decoded).
    bool lineFeedFollows = digits + k + 1 < d.end && digits[k + 1] == '\n';
    if (digits[k] == '\r' && lineFeedFollows) {
      d.in = digits + 2;
      return;
    }
    d.error = 1;
  }
  d.in = digits;
  if (!valid) return;
  *d.out++ = static_cast<unsigned char>(kHexTable[digits[0]] * 16 | kHexTable[digits[1]]);
  d.in += 2;
}

// Copies the run of plain bytes up to the next "=" in one go; true when an "=" follows. With
// SSE2 the run goes sixteen bytes at a time, the block holding the "=" copied whole: the
// output never runs ahead of the input, so there is room, and the bytes behind the output's
// end are cleared when the decoding ends.
bool CopyPlainRun(Decoding& d) {
#ifdef __SSE2__
  const __m128i equalsSign = _mm_set1_epi8('=');
  while (d.end - d.in >= static_cast<std::ptrdiff_t>(kBlockBytes)) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(d.in));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d.out), block);
    d.written = std::max(d.written, d.out + kBlockBytes);
    auto hits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, equalsSign)));
    size_t plain = hits != 0 ? static_cast<size_t>(std::countr_zero(hits)) : kBlockBytes;
    d.in += plain;
    d.out += plain;
    if (hits != 0) return true;
  }
#endif
  const auto* equals =
      static_cast<const unsigned char*>(std::memchr(d.in, '=', static_cast<size_t>(d.end - d.in)));
  const unsigned char* stop = equals != nullptr ? equals : d.end;
  std::memcpy(d.out, d.in, static_cast<size_t>(stop - d.in));
  d.out += stop - d.in;
  d.in = stop;
  return equals != nullptr;
}

// Decodes the blocks the vector decoder takes whole.
void DecodeVectorBlocks(Decoding& d) {
  DecodedBlocks blocks = DecodePlainEscapeBlocks(d.in, static_cast<size_t>(d.end - d.in), d.out);
  d.written = std::max(d.written, d.out + blocks.read);
  d.in += blocks.read;
  d.out += blocks.written;
  if (blocks.anyEscape) d.error = 1;
}

// `buffer` holds size + 1 bytes; the decoded text is written there with its NUL, and the bytes
// behind that are left as they were.
char* DecodeInto(unsigned char* buffer, const char* text, size_t size, int* length, int* error) {
  const auto* in = reinterpret_cast<const unsigned char*>(text);
  Decoding d{in, in + size, buffer, buffer};
  bool cut = false;
  // Escapes come in runs (every byte of an encoded UTF-8 character is one): a run is decoded
  // before the next plain run is looked for.
  while (!cut) {
    DecodeVectorBlocks(d);
    if (!CopyPlainRun(d)) break;
    do {
      if (static_cast<size_t>(d.end - d.in) < kEscapeLength) {
        cut = true;  // an escape cut by the end of the text ends the decoding where it stands
        d.error = 1;
        break;
      }
      DecodeEscape(d);
    } while (d.in < d.end && *d.in == '=');
  }
  // The block copies may have written behind the output's end: that is cleared again. The
  // output ends in a NUL whatever the buffer held (the input's length leaves room for it).
  if (d.written > d.out) std::memset(d.out, 0, static_cast<size_t>(d.written - d.out));
  *d.out = 0;
  if (error != nullptr) *error = d.error;
  if (cut) return reinterpret_cast<char*>(buffer);
  if (length != nullptr) {
    *length = static_cast<int>(d.out - buffer);
  } else if (platform::LanguageCode() == kUnderscoreSpaceLanguage) {
    std::replace(buffer, d.out, static_cast<unsigned char>('_'), static_cast<unsigned char>(' '));
  }
  return reinterpret_cast<char*>(buffer);
}

}  // namespace

char* DecodeQuotedPrintable(const char* text, int* length, int* error) {
  if (text == nullptr) text = "";
  size_t size = std::strlen(text);
  // Cleared: the caller gets all size + 1 bytes, zeros behind the decoded text.
  auto* buffer = static_cast<unsigned char*>(std::calloc(size + 1, 1));
  if (buffer == nullptr) return nullptr;
  return DecodeInto(buffer, text, size, length, error);
}

void DecodeQuotedPrintableBody(const char* text, size_t size, std::string& decoded) {
  // Only the decoded text and its NUL are read: the room is not cleared first.
  decoded.resize(size + 1);
  DecodeInto(reinterpret_cast<unsigned char*>(decoded.data()), text, size, nullptr, nullptr);
}

}  // namespace mailslice::codec
