#include "codec/japanese_converter.h"

#include <cstdint>
#include <cstring>
#include <optional>

#include "codec/byte_runs.h"
#include "codec/shift_jis.h"

namespace mailslice::codec {
namespace {

constexpr unsigned char kEscape = 0x1B;
constexpr size_t kEscapeLength = 3;
constexpr unsigned char kHighBit = 0x80;

enum class JisMode { kSingleByte, kTwoByte, kKatakana };

constexpr unsigned char kToJisX0208[kEscapeLength] = {kEscape, '$', 'B'};
constexpr unsigned char kToAscii[kEscapeLength] = {kEscape, '(', 'B'};
constexpr unsigned char kToKatakana[kEscapeLength] = {kEscape, '(', 'I'};

// The ISO-2022-JP escape at text[at], if one is there: JIS C 6226-1978 reads like JIS X 0208,
// and JIS X 0201 Roman like ASCII.
std::optional<JisMode> EscapeAt(const unsigned char* text, size_t at, size_t size) {
  if (size - at < kEscapeLength || text[at] != kEscape) return std::nullopt;
  unsigned char set = text[at + 1];
  unsigned char final = text[at + 2];
  if (set == '$' && (final == 'B' || final == '@')) return JisMode::kTwoByte;
  if (set == '(' && (final == 'B' || final == 'J')) return JisMode::kSingleByte;
  if (set == '(' && final == 'I') return JisMode::kKatakana;
  return std::nullopt;
}

unsigned char* Put(unsigned char* out, const unsigned char (&escape)[kEscapeLength]) {
  std::memcpy(out, escape, kEscapeLength);
  return out + kEscapeLength;
}

unsigned char* Put(unsigned char* out, BytePair pair) {
  out[0] = pair.first;
  out[1] = pair.second;
  return out + 2;
}

// Copies single-byte text up to the next ESC (a byte at `at` that is an ESC but no escape is
// copied too); returns where it stopped.
size_t CopyToEscape(const unsigned char* text, size_t at, size_t size, unsigned char*& out) {
  const void* escape = std::memchr(text + at + 1, kEscape, size - at - 1);
  size_t stop = escape != nullptr ? static_cast<const unsigned char*>(escape) - text : size;
  std::memcpy(out, text + at, stop - at);
  out += stop - at;
  return stop;
}

}  // namespace

int JapaneseConverter::EucToShiftJis(char* text) const {
  if (text == nullptr) return 0;
  auto* bytes = reinterpret_cast<unsigned char*>(text);
  size_t size = std::strlen(text);
  // Single-shift bytes (0x8E, 0x8F) get no treatment of their own: 0x8E and a katakana byte
  // go through the pair arithmetic like any other pair.
  for (size_t at = 0; at < size;) {
    at += SevenBitRun(bytes + at, size - at);
    if (at == size) break;
    if (bytes[at + 1] < kHighBit) {  // the NUL at the end stops this too
      ++at;
      continue;
    }
    Put(bytes + at, EucPairToShiftJis(bytes[at], bytes[at + 1]));
    at += 2;
  }
  return 0;
}

// In two-byte mode every byte is paired, line breaks included: ISO-2022-JP mail switches back
// to ASCII before each line end. A last byte left alone pairs with the terminating NUL, and the
// conversion ends there.
char* JapaneseConverter::JisToShiftJis(char* dest, const char* source) const {
  if (dest == nullptr) return dest;
  if (source == nullptr) source = "";
  const auto* text = reinterpret_cast<const unsigned char*>(source);
  size_t size = std::strlen(source);
  auto* out = reinterpret_cast<unsigned char*>(dest);
  JisMode mode = JisMode::kSingleByte;
  for (size_t at = 0; at < size;) {
    if (auto switched = EscapeAt(text, at, size)) {
      mode = *switched;
      at += kEscapeLength;
    } else if (mode == JisMode::kSingleByte) {
      at = CopyToEscape(text, at, size, out);
    } else if (mode == JisMode::kTwoByte) {
      out = Put(out, EucPairToShiftJis(text[at] | kHighBit, text[at + 1] | kHighBit));
      at += 2;
    } else {
      *out++ = text[at++] | kHighBit;
    }
  }
  *out = '\0';
  return dest;
}

// A lead byte counts only where a character starts, reading from the start of the text. A lone
// lead byte at the end pairs with the terminating NUL, and the conversion ends there.
void JapaneseConverter::ShiftJisToJis(char* dest, const char* source) const {
  if (dest == nullptr || source == nullptr) return;
  const auto* text = reinterpret_cast<const unsigned char*>(source);
  size_t size = std::strlen(source);
  auto* out = reinterpret_cast<unsigned char*>(dest);
  JisMode mode = JisMode::kSingleByte;
  LeadByteScan scan(text);
  for (size_t at = 0; at < size;) {
    if (mode == JisMode::kSingleByte) {
      size_t run = SevenBitRun(text + at, size - at);
      std::memcpy(out, text + at, run);
      out += run;
      at += run;
      scan.PassSingleBytes(at);
      if (at == size) break;
    }
    unsigned char byte = text[at];
    if (scan.LeadAt(at)) {
      if (mode != JisMode::kTwoByte) out = Put(out, kToJisX0208);
      mode = JisMode::kTwoByte;
      out = Put(out, ShiftJisPairToJis(byte, text[at + 1]));
      at += 2;
    } else if (!IsHalfWidthKatakana(byte)) {
      if (mode != JisMode::kSingleByte) out = Put(out, kToAscii);
      mode = JisMode::kSingleByte;
      *out++ = byte;
      ++at;
    } else {
      // Half-width katakana keep only their escape: the byte is stored where the next byte
      // written will overwrite it. Outgoing mail from the device has always looked so.
      if (mode != JisMode::kKatakana) out = Put(out, kToKatakana);
      mode = JisMode::kKatakana;
      *out = static_cast<unsigned char>(byte - kHighBit);
      ++at;
    }
  }
  if (mode != JisMode::kSingleByte) Put(out, kToAscii);
}

}  // namespace mailslice::codec
