#include "attach/file_name_reader.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "codec/encoded_word.h"
#include "codec/substring_search.h"
#include "mime/text_memo.h"
#include "platform/code_page.h"
#include "platform/white_space.h"

namespace mailslice::attach {
namespace {

constexpr mime::PartWord kFileNameSpellings[] = {
    mime::PartWord::kFileName,       mime::PartWord::kFileNameCapital,
    mime::PartWord::kName,           mime::PartWord::kFileNameFirstEncoded,
    mime::PartWord::kFileNameSecond, mime::PartWord::kFileNameEncoded};
constexpr std::string_view kMetaElement = "<meta ";
constexpr std::string_view kExtendedParameter = "filename*";
constexpr int kMostContinuations = 4096;

struct ContentTypeExtension {
  const char16_t* contentType;
  const char16_t* extension;
};

constexpr ContentTypeExtension kExtensions[] = {
    {u"application/pdf", u".pdf"},    {u"application/zip", u".zip"}, {u"image/jpeg", u".jpg"},
    {u"image/png", u".png"},          {u"image/gif", u".gif"},       {u"text/plain", u".txt"},
    {u"text/html", u".html"},         {u"message/rfc822", u".eml"},  {u"text/calendar", u".ics"},
    {u"application/msword", u".doc"},
};

bool IsBlank(char ch) { return ch == ' ' || ch == '\t'; }

// A parameter value: a quoted string (backslash escapes honoured, line breaks of a folded
// value dropped) or a token up to ";" or the line end, trimmed. Taken in runs between the
// characters that end or change them.
std::string ReadValue(const char* at) {
  while (IsBlank(*at)) ++at;
  std::string value;
  if (*at != '"') {
    value.assign(at, std::strcspn(at, ";\r\n"));
    while (!value.empty() && IsBlank(value.back())) value.pop_back();
    return value;
  }
  for (++at;;) {
    size_t run = std::strcspn(at, "\"\\\r\n");
    value.append(at, run);
    at += run;
    if (*at == '\\') {
      // A backslash at the very end of the text stands for itself.
      value += at[1] != '\0' ? at[1] : '\\';
      at += at[1] != '\0' ? 2 : 1;
    } else if (*at == '\r' || *at == '\n') {
      const char* next = at + (at[0] == '\r' && at[1] == '\n' ? 2 : 1);
      if (!IsBlank(*next)) break;  // an unclosed quote ends with its line
      at = next;
    } else {
      break;  // the closing quote, or the end of the text
    }
  }
  return value;
}

int HexDigit(char ch) {
  if (ch >= '0' && ch <= '9') return ch - '0';
  if (ch >= 'a' && ch <= 'f') return ch - 'a' + 10;
  if (ch >= 'A' && ch <= 'F') return ch - 'A' + 10;
  return -1;
}

// %XX sequences to bytes; a "%" that starts no such sequence stays.
std::string PercentDecoded(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    int high = i + 2 < text.size() && text[i] == '%' ? HexDigit(text[i + 1]) : -1;
    int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
    if (low < 0) {
      bytes += text[i];
      continue;
    }
    bytes += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return bytes;
}

bool IsAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char ch) { return static_cast<unsigned char>(ch) < 0x80; });
}

// Bytes of a name in the charset the sender named; without one (or with one this host does
// not know), UTF-8 when the bytes are valid UTF-8, else the device code page. ASCII reads the
// same in UTF-8 unit for unit.
CString NameFromBytes(std::string_view bytes, std::string_view charset = {}) {
  if (!charset.empty()) {
    if (auto text = platform::CharsetToWide(charset, bytes)) return CString(std::move(*text));
  }
  if (IsAscii(bytes)) return CString(std::u16string(bytes.begin(), bytes.end()));
  std::u16string utf8 = platform::MultiByteToWide(platform::kUtf8CodePage, bytes);
  if (utf8.find(u'\uFFFD') == std::u16string::npos) return CString(std::move(utf8));
  return CString(platform::AnsiToWide(bytes));
}

// The end of the encoded word that starts at `start` ("=?charset?X?text?="), just behind its
// "?="; npos when the text ends first.
size_t EncodedWordEnd(std::string_view value, size_t start) {
  size_t charsetEnd = value.find('?', start + 2);
  if (charsetEnd == std::string_view::npos || charsetEnd + 2 >= value.size() ||
      value[charsetEnd + 2] != '?') {
    return std::string_view::npos;
  }
  size_t close = value.find("?=", charsetEnd + 3);
  return close == std::string_view::npos ? close : close + 2;
}

bool IsAllBlank(std::string_view text) {
  return text.find_first_not_of(" \t") == std::string_view::npos;
}

// A name made of RFC 2047 encoded words (in any charset, several of them, maybe folded) and
// plain text: each word is decoded alone, the blanks between two words are dropped as the
// mail programs that split long names into words expect, and plain text is kept.
CString NameFromEncodedWords(std::string_view value) {
  CString name;
  size_t position = 0;
  bool afterWord = false;
  while (position < value.size()) {
    size_t start = value.find("=?", position);
    size_t end = start == std::string_view::npos ? start : EncodedWordEnd(value, start);
    if (end == std::string_view::npos) {
      name += NameFromBytes(value.substr(position));
      break;
    }
    std::string_view between = value.substr(position, start - position);
    if (!(afterWord && IsAllBlank(between))) name += NameFromBytes(between);
    std::string_view word = value.substr(start, end - start);
    name += codec::DecodeEncodedWord(CString(platform::AnsiToWide(word)));
    afterWord = true;
    position = end;
  }
  return name;
}

// An RFC 2231 value: charset'language'percent-encoded text.
struct ExtendedValue {
  std::string charset;
  std::string bytes;
};

ExtendedValue SplitExtended(std::string_view value) {
  size_t first = value.find('\'');
  size_t second = first == std::string_view::npos ? first : value.find('\'', first + 1);
  if (second == std::string_view::npos) return {{}, PercentDecoded(value)};
  return {std::string(value.substr(0, first)), PercentDecoded(value.substr(second + 1))};
}

// charset'language' in front of the text: a charset name, then a language tag (maybe empty).
bool LooksExtended(std::string_view value) {
  size_t first = value.find('\'');
  size_t second = first == std::string_view::npos ? first : value.find('\'', first + 1);
  if (first == 0 || second == std::string_view::npos) return false;
  auto all = [](std::string_view part, std::string_view allowed) {
    return part.find_first_not_of(allowed) == std::string_view::npos;
  };
  constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  return all(value.substr(0, first), std::string(kLetters) + "0123456789-_.:") &&
         all(value.substr(first + 1, second - first - 1), std::string(kLetters) + "-");
}

struct Continuation {
  bool encoded = false;
  std::string value;
};

// Every "filename*<n>=" and "filename*<n>*=" piece of the text, by number; "filename*=" is
// piece -1.
std::map<int, Continuation> ExtendedPieces(const char* text) {
  std::map<int, Continuation> pieces;
  std::string_view whole(text, mime::TextMemo::Length(text));
  for (size_t found = codec::FindSubstring(whole, kExtendedParameter);
       found != std::string_view::npos;
       found = codec::FindSubstring(whole, kExtendedParameter, found + 1)) {
    const char* cursor = text + found + kExtendedParameter.size();
    int number = -1;
    if (*cursor >= '0' && *cursor <= '9') {
      number = 0;
      while (*cursor >= '0' && *cursor <= '9' && number <= kMostContinuations) {
        number = number * 10 + (*cursor++ - '0');
      }
    }
    bool encoded = number < 0 || *cursor == '*';
    if (number >= 0 && *cursor == '*') ++cursor;
    if (*cursor != '=' || number > kMostContinuations) continue;
    pieces.try_emplace(number, Continuation{encoded, ReadValue(cursor + 1)});
  }
  return pieces;
}

// The pieces joined in order from the first one; the charset of an encoded first piece applies
// to the whole name.
CString JoinContinuations(const std::map<int, Continuation>& pieces) {
  auto piece = pieces.lower_bound(0);
  if (piece == pieces.end()) return CString();
  std::string charset, bytes;
  for (int expected = piece->first; piece != pieces.end() && piece->first == expected;
       ++piece, ++expected) {
    if (!piece->second.encoded) {
      bytes += piece->second.value;
    } else if (expected == pieces.lower_bound(0)->first) {
      ExtendedValue first = SplitExtended(piece->second.value);
      charset = first.charset;
      bytes += first.bytes;
    } else {
      bytes += PercentDecoded(piece->second.value);
    }
  }
  return NameFromBytes(bytes, charset);
}

const char* FindSpelling(const char* text, std::string_view& spelling) {
  for (mime::PartWord candidate : kFileNameSpellings) {
    const char* at = mime::TextMemo::Find(text, candidate);
    if (at == nullptr) continue;
    bool metaElement =
        candidate == mime::PartWord::kName &&
        at - text > static_cast<std::ptrdiff_t>(kMetaElement.size()) &&
        std::string_view(at - kMetaElement.size(), kMetaElement.size()) == kMetaElement;
    if (metaElement) continue;  // an HTML <meta name=...>, not a file name
    spelling = mime::SpellingOf(candidate);
    return at;
  }
  return nullptr;
}

CString ExtensionFor(const CString& contentType) {
  for (const ContentTypeExtension& entry : kExtensions) {
    if (contentType.CompareNoCase(entry.contentType) == 0) return entry.extension;
  }
  return CString();
}

// "report.pdf.pdf" names one PDF: the extension is said once.
std::u16string_view WithoutDoubledExtension(std::u16string_view name) {
  size_t last = name.rfind(u'.');
  if (last == std::u16string_view::npos || last == 0) return name;
  size_t before = name.rfind(u'.', last - 1);
  if (before == std::u16string_view::npos) return name;
  std::u16string_view outer = name.substr(last + 1);
  if (outer.empty() || name.substr(before + 1, last - before - 1) != outer) return name;
  return name.substr(0, last);
}

}  // namespace

CString ReadFileNameParameter(const char* partText) {
  if (partText == nullptr) return CString();
  std::string_view found;
  const char* at = FindSpelling(partText, found);
  if (at == nullptr) return CString();
  if (found == "filename*=") {
    ExtendedValue value = SplitExtended(ReadValue(at + found.size()));
    return NameFromBytes(value.bytes, value.charset);
  }
  if (found == "filename*0*=" || found == "filename*1=") {
    return JoinContinuations(ExtendedPieces(partText));
  }
  std::string value = ReadValue(at + found.size());
  // Some mail programs write the RFC 2231 form ("utf-8''%E6%97%A5.pdf") after a plain spelling.
  if (LooksExtended(value)) {
    ExtendedValue extended = SplitExtended(value);
    return NameFromBytes(extended.bytes, extended.charset);
  }
  if (value.find("=?") != std::string::npos) return NameFromEncodedWords(value);
  return NameFromBytes(value);
}

CString ListedFileName(const CString& name, const CString& contentType) {
  std::u16string safe(WithoutDoubledExtension(name.Str()));
  // A name never reaches into another folder, and holds no control characters.
  std::replace_if(
      safe.begin(), safe.end(), [](char16_t ch) { return ch == u'/' || ch == u'\\'; }, u'_');
  std::erase_if(safe, [](char16_t ch) { return ch < 0x20 || ch == 0x7F; });
  platform::TrimSpaces(safe);
  if (safe.empty() || safe == u"." || safe == u"..") {
    return CString(u"noname") + ExtensionFor(contentType);
  }
  return CString(std::move(safe));
}

}  // namespace mailslice::attach
