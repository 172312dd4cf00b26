#include "codec/base64_encoder.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "codec/base64_alphabet.h"

namespace mailslice::codec {
namespace {

constexpr int kGroupBytes = 3;
constexpr int kGroupCharacters = 4;
// Room the output is given beyond its lines: the last group and the terminating NUL fit in it,
// and so do the up to five "=" that a negative length gives.
constexpr int64_t kOutputSlack = 10;

int64_t OutputCapacity(int64_t length) {
  int64_t encoded = length * kGroupCharacters / kGroupBytes;
  int64_t capacity = encoded + (encoded / kEncodedLineLength) * 2 + kOutputSlack;
  return capacity < kOutputSlack ? kOutputSlack : capacity;
}

char* WriteGroup(char* out, uint32_t group) {
  out[0] = kBase64Alphabet[(group >> 18) & 63];
  out[1] = kBase64Alphabet[(group >> 12) & 63];
  out[2] = kBase64Alphabet[(group >> 6) & 63];
  out[3] = kBase64Alphabet[group & 63];
  return out + kGroupCharacters;
}

// The whole groups, with CR LF after every 76 characters (after the last group too when it
// ends a line).
char* WriteLines(const unsigned char* bytes, int64_t groups, char* out) {
  int column = 0;
  for (int64_t g = 0; g < groups; ++g, bytes += kGroupBytes) {
    out = WriteGroup(out, uint32_t{bytes[0]} << 16 | uint32_t{bytes[1]} << 8 | bytes[2]);
    column += kGroupCharacters;
    if (column >= kEncodedLineLength) {
      *out++ = '\r';
      *out++ = '\n';
      column = 0;
    }
  }
  return out;
}

// The last one or two bytes, padded with "=". Each byte enters the group twice, as it is and
// sign-extended, so a second byte of 0x80 or more turns the first into 0xFF: outgoing mail has
// always been encoded so by this device.
char* WriteLastGroup(const unsigned char* bytes, int remaining, char* out) {
  uint32_t group = 0;
  for (int k = 0; k < remaining; ++k) {
    int shift = 16 - 8 * k;
    group |= uint32_t{bytes[k]} << shift;
    group |= static_cast<uint32_t>(static_cast<int32_t>(static_cast<int8_t>(bytes[k]))) << shift;
  }
  char characters[kGroupCharacters];
  WriteGroup(characters, group);
  for (int k = 0; k <= remaining; ++k) *out++ = characters[k];
  for (int k = 0; k < kGroupBytes - remaining; ++k) *out++ = kBase64Padding;
  return out;
}

}  // namespace

char* EncodeToChar(const unsigned char* bytes, int length) {
  if (bytes == nullptr && length > 0) length = 0;
  auto* buffer = static_cast<char*>(std::calloc(static_cast<size_t>(OutputCapacity(length)), 1));
  if (buffer == nullptr) return nullptr;
  if (length < kGroupBytes) {
    // The walk over a short input ends one place past its end and leaves a remainder of -1 (or
    // the negative length's own): no character, only padding, one "=" per step down to it.
    int remainder = length >= 0 ? -1 : length % kGroupBytes;
    std::fill(buffer, buffer + (remainder == 0 ? 0 : kGroupBytes - remainder), kBase64Padding);
    return buffer;
  }
  int64_t groups = length / kGroupBytes;
  char* out = WriteLines(bytes, groups, buffer);
  int remaining = length % kGroupBytes;
  if (remaining != 0) WriteLastGroup(bytes + groups * kGroupBytes, remaining, out);
  return buffer;
}

char* OutgoingEncoder::Encode(const unsigned char* bytes, int length) const {
  return codec::EncodeToChar(bytes, length);
}

char* OutgoingEncoder::EncodeToChar(const unsigned char* bytes, int length) const {
  return codec::EncodeToChar(bytes, length);
}

CString OutgoingEncoder::EncodeToCString(const unsigned char* bytes, int length) const {
  std::unique_ptr<char, decltype(&std::free)> text(codec::EncodeToChar(bytes, length), &std::free);
  if (text == nullptr) return CString();
  std::string_view ascii(text.get());
  return CString(std::u16string(ascii.begin(), ascii.end()));
}

}  // namespace mailslice::codec
