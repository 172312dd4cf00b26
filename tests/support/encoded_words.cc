#include "support/encoded_words.h"

#include <cstdio>

#include "platform/code_page.h"

namespace mailslice::testing {

std::string InCodePage(unsigned codePage, std::u16string_view text) {
  return platform::WideToMultiByte(codePage, text);
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
