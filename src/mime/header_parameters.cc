#include "mime/header_parameters.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "codec/substring_search.h"
#include "mime/content_type_rules.h"
#include "mime/text_memo.h"
#include "platform/code_page.h"

namespace mailslice::mime {
namespace {

constexpr const char* kMimeVersionMarkers[] = {"Mime-Version: 1.0", "MIME-Version: 1.0"};
// In order of preference: the first spelling the text holds anywhere is the one read.
constexpr std::string_view kBoundarySpellings[] = {
    "boundary=", "BOUNDARY=", "boundary =", "Boundary="};
// What every spelling but the capitals holds from its second letter on.
constexpr std::string_view kBoundaryStem = "oundary";
constexpr size_t kCapitalSpelling = 1;
constexpr std::string_view kTransferEncoding = "Content-Transfer-Encoding:";
constexpr std::string_view kTransferEncodingLower = "Content-transfer-encoding:";
constexpr std::string_view kCharset = "charset=";
constexpr char16_t kDefaultTransferEncoding[] = u"8bit";
constexpr size_t kShortestTransferEncoding = 3;

// The cut-out value widened through the device code page and trimmed.
CString Widened(const char* begin, const char* end) {
  CString value(platform::AnsiToWide(std::string_view(begin, static_cast<size_t>(end - begin))));
  value.Trim();
  return value;
}

// The first MIME version line at or after `origin`, else `origin` itself: several searches
// start there to pass over whatever unrelated text comes first.
const char* MimeVersionLine(const char* origin) {
  for (const char* marker : kMimeVersionMarkers) {
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

// The first occurrence of `needle` at or after `from` for which `accept` holds, or null.
template <typename Accept>
const char* FindAccepted(std::string_view text, const char* from, std::string_view needle,
                         Accept accept) {
  for (size_t at = codec::FindSubstring(text, needle, static_cast<size_t>(from - text.data()));
       at != std::string_view::npos; at = codec::FindSubstring(text, needle, at + 1)) {
    if (accept(text.data() + at)) return text.data() + at;
  }
  return nullptr;
}

const char* FindContentTypeField(const char* text, int wholeText) {
  std::string_view whole(text, TextMemo::Length(text));
  const char* point = wholeText == 0 ? MimeVersionLine(text) : text;
  while (true) {
    if (const char* found = FindAccepted(whole, point, kContentTypeField, [](const char* at) {
          return !RunsIntoNextFieldName(at + kContentTypeField.size());
        })) {
      return found;
    }
    if (const char* found = FindAccepted(whole, text, kContentTypeFieldLower, [](const char* at) {
          return !StartsWith(at + kContentTypeFieldLower.size(), kTransferEncodingName);
        })) {
      return found;
    }
    // A field before the MIME version line is the last resort.
    const char* first = TextMemo::Find(text, kContentTypeField.data());
    if (first == nullptr) return nullptr;
    if (!StartsWith(first + kContentTypeField.size(), kTransferEncodingName)) return first;
    // Going round again from the same place would find the same field for ever: the text has
    // no usable content type.
    if (point == first + 1) return nullptr;
    point = first + 1;
  }
}

// Where the value of the boundary parameter starts: behind the first occurrence of the first
// spelling in kBoundarySpellings that occurs in the text at all. One scan for the shared stem
// finds the first occurrence of the three lower-case spellings, and a second the capitals only
// when the preferred spelling is missing, where searching for each spelling in turn would scan a
// text without a boundary (a long single-part body) four times.
const char* BoundaryValueStart(std::string_view text) {
  std::array<size_t, std::size(kBoundarySpellings)> first;
  first.fill(std::string_view::npos);
  for (size_t stem = codec::FindSubstring(text, kBoundaryStem, 1);
       stem != std::string_view::npos && first[0] == std::string_view::npos;
       stem = codec::FindSubstring(text, kBoundaryStem, stem + 1)) {
    std::string_view candidate = text.substr(stem - 1);
    for (size_t spelling = 0; spelling < first.size(); ++spelling) {
      if (spelling != kCapitalSpelling && first[spelling] == std::string_view::npos &&
          candidate.starts_with(kBoundarySpellings[spelling])) {
        first[spelling] = stem - 1;
      }
    }
  }
  if (first[0] == std::string_view::npos) {
    first[kCapitalSpelling] = codec::FindSubstring(text, kBoundarySpellings[kCapitalSpelling]);
  }
  for (size_t spelling = 0; spelling < first.size(); ++spelling) {
    if (first[spelling] != std::string_view::npos) {
      return text.data() + first[spelling] + kBoundarySpellings[spelling].size();
    }
  }
  return nullptr;
}

}  // namespace

int GetBoundary(const char* text, CString& boundary, int* offset) {
  if (text == nullptr) return 0;
  const char* valueStart = TextMemo::Find(text, "boundary parameter", [text] {
    return BoundaryValueStart(std::string_view(text, TextMemo::Length(text)));
  });
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

CString GetContentType(const char* text, int wholeText) {
  if (text == nullptr) return CString();
  const char* field = FindContentTypeField(text, wholeText);
  if (field == nullptr) return CString();
  const char* valueStart = field + kContentTypeField.size();
  const char* valueEnd = nullptr;
  if (wholeText == 0 && *valueStart != '\0') valueEnd = std::strchr(valueStart + 1, ';');
  if (valueEnd == nullptr) valueEnd = LineEndBehind(valueStart);
  if (valueEnd == nullptr) return CString();
  return ContentTypeValue(valueStart, valueEnd);
}

CString ContentTypeValue(const char* begin, const char* end) {
  CString value = Widened(begin, end);
  // The ";" search is not bound to the line, so the value may have run over line ends.
  if (int lineBreak = value.Find(u"\r\n"); lineBreak >= 0) value = value.Left(lineBreak);
  if (int semicolon = value.Find(u';'); semicolon >= 0) value = value.Left(semicolon);
  // An empty field swallowed the next line's field name.
  if (value == u"Sender:") return CString();
  return value;
}

CString GetCharSet(const char* text) {
  if (text == nullptr) return CString();
  const char* found = TextMemo::Find(MimeVersionLine(text), kCharset.data());
  if (found == nullptr) found = TextMemo::Find(text, kCharset.data());
  if (found == nullptr) return CString();
  const char* valueStart = found + kCharset.size();
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
  CString value(platform::AnsiToWide(
      std::string_view(valueStart, static_cast<size_t>(valueEnd - valueStart))));
  value.Remove(u'"');
  value.Remove(u'\'');
  value.Remove(u';');
  return value.Trim();
}

namespace {

// One reading of the transfer encoding from `origin` on; `lineEnd` receives the end of the
// line the value was read from (null when no value was read).
CString ReadTransferEncoding(const char* text, const char* origin, const char** lineEnd) {
  *lineEnd = nullptr;
  const char* point = MimeVersionLine(origin);
  const char* field = nullptr;
  while (field == nullptr) {
    field = TextMemo::Find(point, kTransferEncoding.data());
    if (field != nullptr) break;
    field = TextMemo::Find(origin, kTransferEncodingLower.data());
    if (field != nullptr) break;
    field = TextMemo::Find(origin, kTransferEncoding.data());
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
  const char* valueStart = field + kTransferEncoding.size();
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
  for (const char16_t* known : {u"quoted-printable", u"base64", u"8bit", u"7bit"}) {
    if (value.CompareNoCase(known) == 0) return 1;
  }
  return 0;
}

}  // namespace mailslice::mime
