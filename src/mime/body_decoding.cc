#include "mime/body_decoding.h"

#include <mailslice/device.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "codec/base64_decoder.h"
#include "codec/charset_tables.h"
#include "codec/japanese_converter.h"
#include "codec/quoted_printable.h"
#include "platform/code_page.h"
#include "platform/device_settings.h"
#include "platform/spare_buffers.h"

namespace mailslice::mime {
namespace {

constexpr int kJapaneseLanguage = 81;
constexpr int kCentralEuropeanLanguage = 48;
constexpr int kArabicLanguage = 966;
constexpr char16_t kUnmappedReplacement = u'?';
constexpr std::string_view kUtf8ByteOrderMark = "\xEF\xBB\xBF";

// The device reads 8-bit text through its ANSI code page, up to the first NUL.
std::u16string Widened(std::string_view text) {
  return platform::AnsiToWide(text.substr(0, text.find('\0')));
}

// A single-byte Cyrillic body mapped through its table, then narrowed to the device code page
// and read back, as a Japanese device shows it.
std::u16string ThroughTable(std::string_view text, char16_t (*table)(unsigned)) {
  std::u16string wide;
  wide.reserve(text.size());
  for (unsigned char byte : text) {
    char16_t unit = table(byte);
    wide += unit == codec::kUnmappedByte ? kUnmappedReplacement : unit;
  }
  return Widened(codec::NarrowForDevice(wide));
}

// Where the page of an HTML body goes (see DecodeBodyWide): `page`, and `textBuffer`, the
// decoder's own buffer holding the text, over which the page is then written.
struct PageRequest {
  std::string* page = nullptr;
  std::string* textBuffer = nullptr;
  bool pageOnly = false;  // the wide text is left out when the page comes out whole
};

// The page of a UTF-8 text alone, written at `target`; when it does not come out whole, the
// wide text after all: that of the page so far, and the rest read on from there.
std::u16string PageOnly(std::string_view text, bool untilFailure, std::string& target,
                        std::string& page) {
  size_t written = 0;
  size_t taken = platform::Utf8ThroughAnsiPage(text, untilFailure, target.data(), &written);
  if (taken == text.size()) {
    target.resize(written);
    page = std::move(target);
    return std::u16string();
  }
  std::u16string wide = platform::TakeSpareWide(text.size());
  platform::AnsiReader().AppendWidened(std::string_view(target.data(), written), wide);
  platform::Utf8ThroughAnsi(text.substr(taken), untilFailure, wide);
  return wide;
}

// What the converter's Utf8ToDevice hands over, read back through the device code page; done
// here on the strings themselves, without its NUL-terminated copies.
std::u16string FromUtf8ThroughDevice(std::string_view text, PageRequest request = {}) {
  text = text.substr(0, text.find('\0'));
  // Text saved by Windows editors starts with a byte order mark; it is left out.
  if (text.starts_with(kUtf8ByteOrderMark)) text.remove_prefix(kUtf8ByteOrderMark.size());
  // There the narrowing stops at the first character that the code page cannot hold.
  bool untilFailure = platform::LanguageCode() == codec::kWcstombsLanguage;
  if (request.page == nullptr) {
    std::u16string wide = platform::TakeSpareWide(text.size());
    platform::Utf8ThroughAnsi(text, untilFailure, wide);
    return wide;
  }
  std::string room;
  if (request.textBuffer == nullptr) {
    room = platform::TakeSpareRoom(text.size());
  }
  std::string& target = request.textBuffer != nullptr ? *request.textBuffer : room;
  if (request.pageOnly) {
    std::u16string wide = PageOnly(text, untilFailure, target, *request.page);
    platform::KeepSpare(std::move(room));
    return wide;
  }
  std::u16string wide = platform::TakeSpareWide(text.size());
  size_t narrowed = platform::Utf8ThroughAnsi(text, untilFailure, wide, target.data());
  if (narrowed != std::string::npos) {
    target.resize(narrowed);
    *request.page = std::move(target);
  }
  platform::KeepSpare(std::move(room));
  return wide;
}

std::u16string ForJapaneseDevice(std::string_view text, const CString& charset) {
  codec::JapaneseConverter converter;
  if (charset == u"euc-jp") {
    std::string copy(text);
    converter.EucToShiftJis(copy.data());
    return Widened(copy);
  }
  if (charset == u"iso-2022-jp") {
    std::string source(text);
    std::string shiftJis(text.size() * 2 + 1, '\0');
    converter.JisToShiftJis(shiftJis.data(), source.c_str());
    return Widened(shiftJis);
  }
  if (charset == u"utf-8") return FromUtf8ThroughDevice(text);
  // The UTF-7 conversion hands nothing back: the text is shown as it came.
  if (charset == u"koi8-r") return ThroughTable(text, codec::Koi8rToUtf16);
  if (charset == u"windows-1251") return ThroughTable(text, codec::Windows1251ToUtf16);
  return Widened(text);
}

bool EndsWith(const CString& text, const char16_t* suffix) {
  CString tail(suffix);
  return text.GetLength() >= tail.GetLength() && text.Right(tail.GetLength()) == tail;
}

// Bytes read in a charset the host knows, for the languages whose device code page differs
// from the charset their mail arrives in.
std::u16string ReadAs(std::string_view text, std::string_view charset) {
  text = text.substr(0, text.find('\0'));
  auto wide = platform::CharsetToWide(charset, text);
  return wide ? std::move(*wide) : Widened(text);
}

std::u16string ConvertCharset(std::string_view text, const CString& charset,
                              PageRequest page = {}) {
  int language = CVelEdit().GetCurrentLanguageCode();
  if (language == kJapaneseLanguage) return ForJapaneseDevice(text, charset);
  if (charset == u"iso-8859-2") {
    // Central European devices read ISO-8859-2 as such (their code page is windows-1250,
    // which places several letters elsewhere); others widen the bytes as they are.
    return language == kCentralEuropeanLanguage ? ReadAs(text, "iso-8859-2") : Widened(text);
  }
  if (EndsWith(charset, u"utf-8")) return FromUtf8ThroughDevice(text, page);
  if (charset == u"iso-8859-6") {
    // Arabic devices take the text widened through windows-1256 back to its bytes and read
    // those as ISO-8859-6, giving the letters in logical order as Unicode stores them.
    return language == kArabicLanguage ? ReadAs(text, "iso-8859-6") : Widened(text);
  }
  return Widened(text);
}

}  // namespace

CString ConvertBodyCharset(std::string_view text, const CString& charset) {
  return CString(ConvertCharset(text, charset));
}

std::u16string DecodeBodyWide(const char* body, CString charset, CString transferEncoding,
                              std::string* page, bool pageOnly) {
  if (body == nullptr) {
    if (page != nullptr) page->clear();
    return std::u16string();
  }
  return DecodeBodyWide(std::string_view(body), std::move(charset), std::move(transferEncoding),
                        page, pageOnly);
}

std::u16string DecodeBodyWide(std::string_view body, CString charset, CString transferEncoding,
                              std::string* page, bool pageOnly) {
  if (page != nullptr) page->clear();
  charset.MakeLower();
  transferEncoding.MakeLower();
  if (transferEncoding == u"quoted-printable") {
    // Decoded as an encoded word is: under language 33 underscores become spaces. The decoded
    // bytes are read up to their NUL.
    std::string decoded = platform::TakeSpareRoom(body.size() + 1);
    codec::DecodeQuotedPrintableBody(body.data(), body.size(), decoded);
    // The page, when asked for, is written over the decoded bytes as they are read.
    std::u16string wide = ConvertCharset(decoded.c_str(), charset, {page, &decoded, pageOnly});
    platform::KeepSpare(std::move(decoded));
    return wide;
  }
  if (transferEncoding == u"base64") {
    // Only the bytes the decoder counts: a spoiled last group leaves uncounted bytes behind.
    std::string decoded;
    codec::Base64BlockDecoder().Decode(body, true, decoded);
    return ConvertCharset(decoded, charset, {page, nullptr, pageOnly});
  }
  if (transferEncoding == u"8bit" || transferEncoding == u"7bit") {
    return ConvertCharset(body, charset, {page, nullptr, pageOnly});
  }
  return Widened(body);
}

CString DecodeBodyText(const char* body, CString charset, CString transferEncoding,
                       const CString& /*contentType*/) {
  return CString(DecodeBodyWide(body, std::move(charset), std::move(transferEncoding)));
}

}  // namespace mailslice::mime
