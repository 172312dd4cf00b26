#include "support/encoded_words.h"

#include <cstdint>
#include <cstdio>

#include "platform/code_page.h"

namespace mailslice::testing {

std::string InCodePage(unsigned codePage, std::u16string_view text) {
  return platform::WideToMultiByte(codePage, text);
}

// Plain Base64. The library's own encoder is not used: it encodes a last pair of bytes whose
// second is 0x80 or above as the device always has, not as mail programs do.
std::string Base64(std::string_view bytes) {
  static constexpr char kAlphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t at = 0; at < bytes.size(); at += 3) {
    size_t count = std::min<size_t>(3, bytes.size() - at);
    uint32_t group = 0;
    for (size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[at + k]) : 0u);
    }
    for (size_t k = 0; k < 4; ++k) text += k <= count ? kAlphabet[group >> (18 - 6 * k) & 63] : '=';
  }
  return text;
}

std::string Base64Word(std::string_view charset, std::string_view bytes, char marker) {
  return "=?" + std::string(charset) + "?" + marker + "?" + Base64(bytes) + "?=";
}

std::string QuotedPrintableWord(std::string_view charset, std::string_view bytes) {
  std::string text;
  for (unsigned char byte : bytes) {
    char escape[4];
    std::snprintf(escape, sizeof escape, "=%02X", byte);
    bool plain = byte > ' ' && byte < 0x7F && byte != '=' && byte != '?' && byte != '_';
    text += byte == ' ' ? "_" : plain ? std::string(1, static_cast<char>(byte)) : escape;
  }
  return "=?" + std::string(charset) + "?Q?" + text + "?=";
}

CString AsHeader(std::string_view bytes) { return CString(std::string(bytes).c_str()); }

}  // namespace mailslice::testing
