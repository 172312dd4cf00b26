#include "codec/encoded_word.h"

#include <optional>
#include <string>
#include <string_view>

#include "codec/charset_class.h"
#include "codec/header_text.h"
#include "platform/code_page.h"

namespace mailslice::codec {
namespace {

constexpr std::string_view kUtf8ByteOrderMark = "\xEF\xBB\xBF";

std::optional<std::u16string> UnicodeWordToWide(int charsetClass, std::string_view bytes) {
  if (charsetClass == kCharsetUtf8) {
    // Some Windows mailers put a byte order mark in front of UTF-8 text; it shows nothing.
    if (bytes.starts_with(kUtf8ByteOrderMark)) bytes.remove_prefix(kUtf8ByteOrderMark.size());
    return platform::MultiByteToWide(platform::kUtf8CodePage, bytes);
  }
  if (charsetClass == kCharsetUtf7)
    return platform::MultiByteToWide(platform::kUtf7CodePage, bytes);
  return std::nullopt;
}

}  // namespace

CString DecodeEncodedWord(const CString& word) {
  HeaderWalkRules rules;
  rules.unterminatedWordRunsToEnd = true;
  rules.wideWord = UnicodeWordToWide;
  return DecodeHeaderText(word, rules);
}

}  // namespace mailslice::codec
