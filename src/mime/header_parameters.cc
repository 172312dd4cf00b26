#include "mime/header_parameters.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "mime/content_type_rules.h"
#include "mime/text_memo.h"
#include "platform/code_page.h"
#include "platform/letter_case.h"
#include "platform/white_space.h"

namespace mailslice::mime {
namespace {

constexpr PartWord kMimeVersionMarkers[] = {PartWord::kMimeVersion, PartWord::kMimeVersionCapitals};
// In order of preference: the first spelling the text holds anywhere is the one read.
constexpr PartWord kBoundarySpellings[] = {PartWord::kBoundary, PartWord::kBoundaryCapitals,
                                           PartWord::kBoundarySpaced, PartWord::kBoundaryCapital};
constexpr size_t kTransferEncodingLength = 26;  // "Content-Transfer-Encoding:", either case
constexpr size_t kCharsetLength = 8;            // "charset="
constexpr char16_t kDefaultTransferEncoding[] = u"8bit";
constexpr size_t kShortestTransferEncoding = 3;
constexpr std::u16string_view kKnownTransferEncodings[] = {u"quoted-printable", u"base64", u"8bit",
                                                           u"7bit"};

// The cut-out value widened through the device code page and trimmed.
std::u16string WidenedText(const char* begin, const char* end) {
  std::u16string value =
      platform::AnsiToWide(std::string_view(begin, static_cast<size_t>(end - begin)));
  platform::TrimSpaces(value);
  return value;
}

CString Widened(const char* begin, const char* end) { return CString(WidenedText(begin, end)); }

// The first MIME version line at or after `origin`, else `origin` itself: several searches
// start there to pass over whatever unrelated text comes first.
const char* MimeVersionLine(const char* origin) {
  for (PartWord marker : kMimeVersionMarkers) {
    if (const char* found = TextMemo::Find(origin, marker)) return found;
  }
  return origin;
}

// The first CR LF at or after `from`, else the first LF; null when neither.
const char* LineEnd(const char* from) {
  if (const char* crlf = std::strstr(from, "\r\n")) return crlf;
  return std::strchr(from, '\n');
}

// A value's end is searched from one character behind its start; a value that starts at the
// end of the text has none.
const char* LineEndBehind(const char* valueStart) {
  return *valueStart == '\0' ? nullptr : LineEnd(valueStart + 1);
}

// The first place at or after `from` for which `accept` holds, or null.
template <typename Accept>
const char* FindAccepted(const WordPlaces& places, const char* from, Accept accept) {
  for (const char* at = places.Next(from); at != nullptr; at = places.Next(at + 1)) {
    if (accept(at)) return at;
  }
  return nullptr;
}

const char* FindContentTypeField(const char* text, int wholeText) {
  WordPlaces fields = TextMemo::Places(text, PartWord::kContentType);
  WordPlaces lowerFields = TextMemo::Places(text, PartWord::kContentTypeLower);
  const char* point = wholeText == 0 ? MimeVersionLine(text) : text;
  while (true) {
    if (const char* found = FindAccepted(fields, point, [](const char* at) {
          return !RunsIntoNextFieldName(at + kContentTypeField.size());
        })) {
      return found;
    }
    if (const char* found = FindAccepted(lowerFields, text, [](const char* at) {
          return !StartsWith(at + kContentTypeFieldLower.size(), kTransferEncodingName);
        })) {
      return found;
    }
    // A field before the MIME version line is the last resort.
    const char* first = fields.First();
    if (first == nullptr) return nullptr;
    if (!StartsWith(first + kContentTypeField.size(), kTransferEncodingName)) return first;
    // Going round again from the same place would find the same field for ever: the text has
    // no usable content type.
    if (point == first + 1) return nullptr;
    point = first + 1;
  }
}

// Where the value of the boundary parameter starts: behind the first occurrence of the first
// spelling in kBoundarySpellings that occurs in the text at all.
const char* BoundaryValueStart(const char* text) {
  for (PartWord spelling : kBoundarySpellings) {
    if (const char* at = TextMemo::Find(text, spelling)) return at + SpellingOf(spelling).size();
  }
  return nullptr;
}

}  // namespace

int GetBoundary(const char* text, CString& boundary, int* offset) {
  if (text == nullptr) return 0;
  // Four spellings are asked for: one pass finds them all.
  HeldText held(text);
  const char* valueStart = BoundaryValueStart(text);
  if (valueStart == nullptr) return 0;
  const char* lineEnd = LineEnd(valueStart);
  if (lineEnd == nullptr) return 0;
  const char* valueEnd = lineEnd;  // unquoted: everything to the line end belongs to it
  const char* quote = std::strchr(valueStart, '"');
  bool quoted = quote != nullptr && quote < lineEnd;
  if (quoted) {
    valueStart = quote + 1;
    valueEnd = std::strchr(valueStart, '"');
    if (valueEnd == nullptr) return 0;
  }
  if (valueEnd <= valueStart) return 0;
  // A quoted boundary on a quoted-reply line ("> ... boundary=...") followed by more quoted
  // lines belongs to the quoted message, not to this one.
  if (quoted && StartsWith(valueEnd + 1, "\r\n>")) {
    for (const char* at = valueStart; *at != '\n'; --at) {
      if (*at == '>') return 0;
      if (at == text) break;
    }
  }
  if (offset != nullptr) *offset = static_cast<int>(valueStart - text);
  boundary = Widened(valueStart, valueEnd);
  return 1;
}

TextSpan ContentTypeSpan(const char* text, int wholeText) {
  if (text == nullptr) return {};
  const char* field = FindContentTypeField(text, wholeText);
  if (field == nullptr) return {};
  const char* valueStart = field + kContentTypeField.size();
  const char* valueEnd = nullptr;
  if (wholeText == 0 && *valueStart != '\0') valueEnd = std::strchr(valueStart + 1, ';');
  if (valueEnd == nullptr) valueEnd = LineEndBehind(valueStart);
  if (valueEnd == nullptr) return {};
  return {valueStart, valueEnd};
}

CString GetContentType(const char* text, int wholeText) {
  TextSpan span = ContentTypeSpan(text, wholeText);
  if (span.begin == nullptr) return CString();
  return ContentTypeValue(span.begin, span.end);
}

namespace {

// What is kept of a content type value's bytes where each byte widens alone: the bytes of
// white space, of the line break and of the ";" are then those units themselves, so the value
// is cut in bytes.
std::string_view ContentTypeBytes(const char* begin, const char* end) {
  std::string_view bytes(begin, static_cast<size_t>(end - begin));
  platform::TrimmedRange kept = platform::Untrimmed(bytes);
  bytes = bytes.substr(kept.begin, kept.end - kept.begin);
  bytes = bytes.substr(0, bytes.find("\r\n"));
  return bytes.substr(0, bytes.find(';'));
}

// An empty field swallowed the next line's field name.
constexpr std::u16string_view kSwallowedSender = u"Sender:";

}  // namespace

CString ContentTypeValue(const char* begin, const char* end) {
  const platform::AnsiReader& reader = platform::DeviceAnsiReader();
  if (reader.WidensEachByteAlone()) {
    // Only what is kept of a value that ran over line ends is widened.
    std::u16string value = reader.Widen(ContentTypeBytes(begin, end));
    if (value == kSwallowedSender) return CString();
    return CString(std::move(value));
  }
  std::u16string value = WidenedText(begin, end);
  // The ";" search is not bound to the line, so the value may have run over line ends.
  value.resize(std::min(value.size(), value.find(u"\r\n")));
  value.resize(std::min(value.size(), value.find(u';')));
  if (value == kSwallowedSender) return CString();
  return CString(std::move(value));
}

bool ContentTypeValueIs(const char* begin, const char* end, std::string_view type) {
  if (begin == nullptr) return false;
  if (!platform::DeviceAnsiReader().WidensEachByteAlone()) {
    std::u16string wide(type.begin(), type.end());
    return platform::EqualsNoCase(ContentTypeValue(begin, end).Str(), wide);
  }
  // ASCII widens to itself and no other byte widens to ASCII, and letters fold only within
  // ASCII and within Latin-1: the value equals the ASCII type exactly when its bytes do. The
  // swallowed "Sender:" reads as empty, which no type is.
  std::string_view bytes = ContentTypeBytes(begin, end);
  if (bytes.size() != type.size()) return false;
  for (size_t at = 0; at < bytes.size(); ++at) {
    if (platform::ToLowerLetter(static_cast<unsigned char>(bytes[at])) !=
        platform::ToLowerLetter(static_cast<unsigned char>(type[at]))) {
      return false;
    }
  }
  return bytes != "Sender:";
}

CString GetCharSet(const char* text) {
  if (text == nullptr) return CString();
  const char* found = TextMemo::Find(MimeVersionLine(text), PartWord::kCharset);
  if (found == nullptr) found = TextMemo::Find(text, PartWord::kCharset);
  if (found == nullptr) return CString();
  const char* valueStart = found + kCharsetLength;
  // The end rules compare addresses, a missing ";" counting as address zero: a value is cut
  // at CR LF only when no ";" follows anywhere, else at the ";", then at LF, then at a space.
  const char* valueEnd = std::strstr(valueStart, "\r\n");
  const char* semicolon = std::strchr(valueStart, ';');
  if (semicolon == nullptr) {
    valueEnd = nullptr;
  } else if (valueEnd != nullptr && semicolon < valueEnd) {
    valueEnd = semicolon;
  }
  if (valueEnd == nullptr) valueEnd = std::strchr(valueStart, '\n');
  const char* space = std::strchr(valueStart, ' ');
  if (space != nullptr && (valueEnd == nullptr || space < valueEnd)) valueEnd = space;
  if (valueEnd == nullptr) return CString();
  std::u16string value = platform::AnsiToWide(
      std::string_view(valueStart, static_cast<size_t>(valueEnd - valueStart)));
  // Quotes and a ";" are dropped wherever they stand, before the trimming.
  std::erase_if(value, [](char16_t ch) { return ch == u'"' || ch == u'\'' || ch == u';'; });
  platform::TrimSpaces(value);
  return CString(std::move(value));
}

namespace {

// One reading of the transfer encoding from `origin` on; `lineEnd` receives the end of the
// line the value was read from (null when no value was read).
CString ReadTransferEncoding(const char* text, const char* origin, const char** lineEnd) {
  *lineEnd = nullptr;
  const char* point = MimeVersionLine(origin);
  const char* field = nullptr;
  while (field == nullptr) {
    field = TextMemo::Find(point, PartWord::kTransferEncoding);
    if (field != nullptr) break;
    field = TextMemo::Find(origin, PartWord::kTransferEncodingLower);
    if (field != nullptr) break;
    field = TextMemo::Find(origin, PartWord::kTransferEncoding);
    if (field == nullptr) return CString(kDefaultTransferEncoding);
    bool afterEmptyContentType =
        field - text >= static_cast<std::ptrdiff_t>(kContentTypeField.size()) &&
        StartsWith(field - kContentTypeField.size(), kContentTypeField);
    if (!afterEmptyContentType) break;
    // Going round again from the same place would find the same field for ever.
    if (point == field + 1) return CString(kDefaultTransferEncoding);
    point = field + 1;
    field = nullptr;
  }
  const char* valueStart = field + kTransferEncodingLength;
  const char* valueEnd = LineEndBehind(valueStart);
  if (valueEnd == nullptr) return CString(kDefaultTransferEncoding);
  *lineEnd = valueEnd;
  CString value = Widened(valueStart, valueEnd);
  if (value.GetLength() < static_cast<int>(kShortestTransferEncoding)) {
    return CString(kDefaultTransferEncoding);
  }
  return value;
}

}  // namespace

CString GetTransEncode(const char* text) {
  if (text == nullptr) return CString();
  const char* lineEnd = nullptr;
  CString value = ReadTransferEncoding(text, text, &lineEnd);
  if (IsKnownTransferEncoding(value) || lineEnd == nullptr) return value;
  // An unknown word: a later field may still name a real encoding; its answer stands.
  return ReadTransferEncoding(text, lineEnd, &lineEnd);
}

int IsKnownTransferEncoding(const CString& value) {
  std::u16string_view text = value.Str();
  for (std::u16string_view known : kKnownTransferEncodings) {
    if (text.size() == known.size() && platform::EqualsNoCase(text, known)) return 1;
  }
  return 0;
}

}  // namespace mailslice::mime
