#include "codec/base64_coder.h"

#include <array>
#include <cstring>
#include <string>

#include "codec/base64_alphabet.h"

namespace mailslice::codec {
namespace {

// Buffers grow in whole pages and always keep at least one byte past what they hold.
constexpr size_t kPageSize = 4096;
constexpr unsigned char kNotInAlphabet = 254;
constexpr unsigned char kPaddingValue = 255;
constexpr unsigned char kHighBit = 0x80;
constexpr int kGroupBytes = 3;
constexpr int kGroupCharacters = 4;

// Alphabet characters with bit 7 set decode like the plain ones: 8-bit mail gateways have
// been known to set it.
constexpr std::array<unsigned char, 256> MakeCoderTable() {
  std::array<unsigned char, 256> table{};
  table.fill(kNotInAlphabet);
  for (int value = 0; value < 64; ++value) {
    auto character = static_cast<unsigned char>(kBase64Alphabet[value]);
    table[character] = static_cast<unsigned char>(value);
    table[character | kHighBit] = static_cast<unsigned char>(value);
  }
  table[static_cast<unsigned char>(kBase64Padding)] = kPaddingValue;
  table[static_cast<unsigned char>(kBase64Padding) | kHighBit] = kPaddingValue;
  return table;
}
constexpr std::array<unsigned char, 256> kCoderTable = MakeCoderTable();

// Looks up the characters of one group; padding from place `firstPaddable` on counts as 0.
Base64Group LookUp(const unsigned char* characters, int count, int firstPaddable) {
  Base64Group group;
  for (int k = 0; k < count; ++k) {
    unsigned char value = kCoderTable[characters[k]];
    group.data[k] = (k >= firstPaddable && value > kNotInAlphabet) ? 0 : value;
  }
  return group;
}

}  // namespace

Base64Coder::~Base64Coder() = default;

void Base64Coder::Encode(const char* text) {
  if (text == nullptr) return;
  Encode(reinterpret_cast<const unsigned char*>(text), std::strlen(text));
}

void Base64Coder::Encode(const unsigned char* bytes, size_t size) {
  SetDecodedInput(bytes, size);
  AllocEncoded(size * 2);
  const unsigned char* in = decoded_.data.get();
  char* out = EncodedMessage();
  for (size_t done = 0; done < size; done += kGroupBytes) {
    Base64Group group;
    group.count = static_cast<unsigned char>(std::min<size_t>(kGroupBytes, size - done));
    std::memcpy(group.data, in + done, group.count);
    EncodeGroup(group, out + encodedSize_);
    encodedSize_ += kGroupCharacters;
  }
  out[encodedSize_] = '\0';
}

void Base64Coder::Decode(const char* text) {
  if (text == nullptr) return;
  Decode(text, std::strlen(text));
}

// A padded last group still counts three bytes (zeros for the padding), and a cut one counts
// as many bytes as it has characters: callers of this coder have always trimmed by themselves.
void Base64Coder::Decode(const char* characters, size_t size) {
  SetEncodedInput(characters, size);
  AllocDecoded(size);
  const unsigned char* in = encoded_.data.get();
  unsigned char* out = decoded_.data.get();
  size_t whole = encodedSize_ / kGroupCharacters * kGroupCharacters;
  for (size_t done = 0; done < whole; done += kGroupCharacters) {
    DecodeGroup(LookUp(in + done, kGroupCharacters, 2), out + decodedSize_);
    decodedSize_ += kGroupBytes;
  }
  if (size_t rest = encodedSize_ - whole; rest != 0) {
    DecodeGroup(LookUp(in + whole, static_cast<int>(rest), 0), out + decodedSize_);
    decodedSize_ += rest;
  }
  out[decodedSize_] = '\0';
}

void Base64Coder::MakeRoom(Buffer& buffer, size_t size) {
  if (buffer.data != nullptr && buffer.capacity >= size) return;
  size_t capacity = (size / kPageSize + 1) * kPageSize;
  buffer.data = std::make_unique<unsigned char[]>(capacity);
  buffer.capacity = capacity;
}

void Base64Coder::AllocEncoded(size_t size) {
  MakeRoom(encoded_, size);
  encodedSize_ = 0;
}

void Base64Coder::AllocDecoded(size_t size) {
  MakeRoom(decoded_, size);
  decodedSize_ = 0;
}

// The input may be this coder's own encoded text: a buffer large enough is kept, and removing
// white space only ever moves bytes towards its start.
void Base64Coder::SetEncodedInput(const char* characters, size_t size) {
  std::string copy;
  if (encoded_.data == nullptr || encoded_.capacity < size) copy.assign(characters, size);
  const char* in = copy.empty() ? characters : copy.data();
  AllocEncoded(size);
  unsigned char* out = encoded_.data.get();
  for (size_t k = 0; k < size; ++k) {
    auto byte = static_cast<unsigned char>(in[k]);
    if (!IsWhitespace(byte)) out[encodedSize_++] = byte;
  }
  out[encodedSize_] = '\0';
}

void Base64Coder::SetDecodedInput(const unsigned char* bytes, size_t size) {
  std::basic_string<unsigned char> copy;
  if (decoded_.data == nullptr || decoded_.capacity < size) copy.assign(bytes, size);
  const unsigned char* in = copy.empty() ? bytes : copy.data();
  AllocDecoded(size);
  if (size != 0) std::memmove(decoded_.data.get(), in, size);
  decodedSize_ = size;
  decoded_.data[size] = '\0';
}

void Base64Coder::EncodeGroup(const Base64Group& group, char* out) const {
  unsigned char values[kGroupCharacters];
  SplitBytes(group.data, values);
  for (int k = 0; k < kGroupCharacters; ++k) out[k] = kBase64Alphabet[values[k]];
  if (group.count < kGroupBytes) out[3] = kBase64Padding;
  if (group.count < 2) out[2] = kBase64Padding;
}

int Base64Coder::DecodeGroup(const Base64Group& group, unsigned char* out) const {
  JoinValues(group.data, out);
  int below = 0;
  for (int k = 0; k < kGroupBytes; ++k) below += out[k] < kPaddingValue ? 1 : 0;
  return below;
}

void Base64Coder::SplitBytes(const unsigned char* three, unsigned char* four) const {
  four[0] = three[0] >> 2;
  four[1] = ((three[0] << 4) | (three[1] >> 4)) % 64;
  four[2] = ((three[1] << 2) | (three[2] >> 6)) % 64;
  four[3] = three[2] % 64;
}

void Base64Coder::JoinValues(const unsigned char* four, unsigned char* three) const {
  three[0] = static_cast<unsigned char>((four[0] << 2) | ((four[1] >> 4) & 3));
  three[1] = static_cast<unsigned char>((four[1] << 4) | ((four[2] >> 2) & 15));
  three[2] = static_cast<unsigned char>((four[2] << 6) | (four[3] & 63));
}

// Line breaks, tabs, space and the control bytes BEL to CR that gateways leave between lines.
bool Base64Coder::IsWhitespace(unsigned char byte) const {
  return (byte >= 0x07 && byte <= 0x0D) || byte == 0x20;
}

void Base64Coder::FreeEncoded() {
  encoded_ = Buffer{};
  encodedSize_ = 0;
}

void Base64Coder::FreeDecoded() {
  decoded_ = Buffer{};
  decodedSize_ = 0;
}

}  // namespace mailslice::codec
