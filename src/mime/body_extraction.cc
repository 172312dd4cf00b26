#include "mime/body_extraction.h"

#include <mailslice/device.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "html/html_to_text.h"
#include "mime/attachment_markers.h"
#include "mime/body_decoding.h"
#include "mime/header_parameters.h"
#include "mime/multipart_walker.h"
#include "mime/piece_text.h"
#include "mime/text_memo.h"
#include "platform/code_page.h"
#include "platform/letter_case.h"
#include "platform/spare_buffers.h"
#include "platform/white_space.h"

namespace mailslice::mime {
namespace {

constexpr int kEmbeddedMessageMessage = 1153;
// Containers nested deeper than this are not entered: real mail nests a handful of levels,
// and each level holds a copy of its parts.
constexpr int kDeepestContainer = 24;
constexpr std::u16string_view kDoctype = u"<!DOCTYPE html>";
// POP3 fetchers leave their "+OK Y" reply at the end of the file.
constexpr std::string_view kServerReply = "+OK Y";

struct FreeDeleter {
  void operator()(char* block) const { std::free(block); }
};
using HeapText = std::unique_ptr<char, FreeDeleter>;

char* HeapCopy(std::string_view text, size_t extraZeros = 1) {
  auto* copy = static_cast<char*>(std::calloc(text.size() + extraZeros, 1));
  if (copy != nullptr) std::memcpy(copy, text.data(), text.size());
  return copy;
}

// The body of one part as GetMultiPartFirstBody copies it, where it lies in the part; empty when
// the part has no body of at least two characters.
std::string_view MultiPartFirstBody(const char* partText) {
  if (partText == nullptr) return {};
  // The search is for LF CR LF: the empty line of a part header whose lines end in CR LF.
  const char* body = std::strstr(partText, "\n\r\n");
  if (body != nullptr) {
    body += 3;
  } else if ((body = std::strstr(partText, "\n\n")) != nullptr) {
    body += 2;
  } else {
    return {};
  }
  if (*body == '\0') return {};
  const char* end = std::strrchr(body, '\n');
  if (end == nullptr) return {};
  // Trailing empty lines and the last line end go; text behind the last LF is dropped.
  while (end > body && end[-1] == '\r') {
    if (end - 1 > partText && end[-2] == '\n') {
      end -= 2;
      continue;
    }
    --end;
    break;
  }
  // The length counts to the last kept character, so a body of one character has none.
  std::ptrdiff_t length = end - 1 - body;
  if (length < 1) return {};
  return std::string_view(body, static_cast<size_t>(length) + 1);
}

// The text behind the first empty line (CR LF CR LF, else LF LF), or null.
const char* AfterEmptyLine(const char* text) {
  if (const char* at = std::strstr(text, "\r\n\r\n")) return at + 4;
  if (const char* at = std::strstr(text, "\n\n")) return at + 2;
  return nullptr;
}

CString Lower(CString text) {
  text.MakeLower();
  return text;
}

bool NamesApplication(const CString& contentType) {
  return contentType.Find(u"application/") >= 0 || contentType.Find(u"Application/") >= 0;
}

CString EmbeddedMessageLine() {
  CSystemValue messages;
  messages.LoadMessageFile(u"Email");
  return messages.GetMessageW(kEmbeddedMessageMessage) + u"\r\n";
}

// One walk over a message's parts, carrying the alternative flag and the HTML arguments.
class BodyWalk {
 public:
  BodyWalk(int* alternative, const HtmlArguments& html) : alternative_(*alternative), html_(html) {}

  void FromMultipart(CString& result, WalkedText text, const CString& boundary);
  CString FromSinglePart(const char* text) const;

 private:
  // What is read of a piece's content type, kept so that each is read once.
  struct PartTypes {
    CString whole;                    // GetContentType(part, 1), in lower case
    std::optional<CString> declared;  // GetContentType(part, 0), once read
  };
  static const CString& Declared(const char* part, PartTypes& types);

  void ProcessPart(CString& result, WalkedText part, const CString& boundary, PartTypes& types);
  size_t ReplacingPart(PieceTexts& parts, const std::vector<Piece>& pieces,
                       std::vector<PartTypes>& types) const;
  // Whether the HTML reader needs an HTML body's page alone: its wide text is then not made.
  bool PageOnly(bool html) const { return html && html_.save == 0 && !html::ReadsWideText(); }
  void Nested(CString& result, WalkedText part, const CString& boundary);
  void EmbeddedMessage(CString& result, WalkedText part);
  void Join(CString& result, WalkedText text, const std::vector<Piece>& pieces,
            const CString& boundary);

  int& alternative_;
  const HtmlArguments& html_;
  int depth_ = 0;
};

// The body as GetSinglePartBody gives it, read in place unless a server reply has to be cut
// off, which only a private copy allows.
const char* SinglePartBody(const char* text, HeapText& copy) {
  const char* body = text != nullptr ? AfterEmptyLine(text) : nullptr;
  if (body == nullptr || !std::string_view(body).ends_with(kServerReply)) return body;
  copy.reset(GetSinglePartBody(text));
  return copy.get();
}

CString BodyWalk::FromSinglePart(const char* text) const {
  HeapText copy;
  const char* start = SinglePartBody(text, copy);
  CString contentType = GetContentType(text, 0);
  if (start != nullptr && start[0] == '\r' && start[1] == '\n') start += 2;
  // A page sent without any Content-Type still opens with its doctype.
  bool html = platform::EqualsNoCase(contentType.Str(), u"text/html");
  std::string page;
  std::u16string decoded =
      DecodeBodyWide(start, GetCharSet(text), GetTransEncode(text),
                     html || contentType.IsEmpty() ? &page : nullptr, PageOnly(html));
  if (html || (contentType.IsEmpty() && decoded.starts_with(kDoctype))) {
    return HtmlBodyToText(std::move(decoded), std::move(page), html_);
  }
  platform::KeepSpare(std::move(page));
  if (NamesApplication(contentType)) return CString();
  return CString(std::move(decoded));
}

void BodyWalk::FromMultipart(CString& result, WalkedText text, const CString& boundary) {
  // A message cut off before its closing delimiter gets one, on a private copy.
  std::string closing = platform::WideToAnsi((boundary + u"--").Str());
  std::string repaired;
  if (!TextMemo::ContainsWord(text.text, closing)) {
    repaired = std::string(text.text) + "\r\n--" + closing;
    text = WalkedText(repaired.c_str(), true);
  }
  std::vector<Piece> pieces;
  if (WalkMultipart(text.text, boundary, [&](const Piece& piece) {
        // The delimiter belongs to the walk and goes with it; the pieces are kept without it.
        pieces.push_back(Piece{piece.begin, piece.end, nullptr});
        return true;
      }) != kWalkDone) {
    result.Empty();  // not multipart after all
    return;
  }
  int count = static_cast<int>(pieces.size());
  if (alternative_ != 0 && count <= 2) alternative_ = 0;
  if (count == 0) {
    result.Empty();
    return;
  }
  Join(result, text, pieces, boundary);
}

const CString& BodyWalk::Declared(const char* part, PartTypes& types) {
  if (!types.declared) types.declared = GetContentType(part, 0);
  return *types.declared;
}

// Of a plain and an HTML alternative (outside Apple Mail's way), the last HTML part that is
// read replaces all text before it: the index of that part, else 0. Parts of plain text in
// front of it need not be read, as reading them changes nothing else; but with the HTML source
// saved each HTML body read is saved, so then every part is read.
size_t BodyWalk::ReplacingPart(PieceTexts& parts, const std::vector<Piece>& pieces,
                               std::vector<PartTypes>& types) const {
  if (html_.save != 0) return 0;
  for (size_t i = pieces.size() - 1; i >= 1; --i) {
    // The second part is passed over after a first alternative, which a first part of plain
    // text leaves as it is now.
    if (i == 1 && (alternative_ != 0 || types[0].whole.Str() != u"text/plain")) return 0;
    if (Lower(Declared(parts.Of(pieces[i]).text(), types[i])) == u"text/html") return i;
  }
  return 0;
}

// The first part's text becomes the result; each further one is added after an empty line,
// except that of a plain and an HTML alternative the HTML one is shown (Apple Mail sends
// the two as parts to be shown one after the other, so there both are kept).
void BodyWalk::Join(CString& result, WalkedText text, const std::vector<Piece>& pieces,
                    const CString& boundary) {
  PieceTexts parts(text);
  std::vector<PartTypes> types(pieces.size());
  bool hasPlain = false, hasHtml = false;
  for (size_t i = 0; i < pieces.size(); ++i) {
    types[i].whole = Lower(GetContentType(parts.Of(pieces[i]).text(), 1));
    hasPlain = hasPlain || types[i].whole.Str() == u"text/plain";
    hasHtml = hasHtml || types[i].whole.Str() == u"text/html";
  }
  bool appleMail = Lower(boundary).Find(u"apple-mail") >= 0;
  size_t replacing = hasPlain && hasHtml && !appleMail ? ReplacingPart(parts, pieces, types) : 0;
  auto unread = [&](size_t i) { return i < replacing && types[i].whole.Str() == u"text/plain"; };
  if (!unread(0)) ProcessPart(result, parts.Of(pieces[0]).walked(), boundary, types[0]);
  for (size_t i = 1; i < pieces.size(); ++i) {
    if (alternative_ != 0 && i == 1) {
      alternative_ = 0;  // the first alternative was taken
      continue;
    }
    if (unread(i)) continue;
    PieceTexts::Lent part = parts.Of(pieces[i]);
    CString shown;
    ProcessPart(shown, part.walked(), boundary, types[i]);
    if (!shown.IsEmpty()) result += u"\r\n\r\n";
    if (!(hasPlain && hasHtml)) {
      result += shown;
    } else if (Lower(Declared(part.text(), types[i])) == u"text/html") {
      if (result.IsEmpty() || !appleMail) {
        result = std::move(shown);
      } else {
        result += shown;
      }
    }
  }
}

void BodyWalk::Nested(CString& result, WalkedText part, const CString& boundary) {
  if (depth_ >= kDeepestContainer) return;
  ++depth_;
  FromMultipart(result, part, boundary);
  --depth_;
}

void BodyWalk::EmbeddedMessage(CString& result, WalkedText part) {
  CString boundary;
  if (GetBoundary(part.text, boundary, nullptr) == 1) {
    Nested(result, part, boundary);
    if (!result.IsEmpty()) result = EmbeddedMessageLine() + result;
    return;
  }
  const char* message = AfterEmptyLine(part.text);
  if (message == nullptr) return;
  CString contentType = GetContentType(message, 1);
  if (contentType.Right(1) == u";") contentType = contentType.Left(contentType.GetLength() - 1);
  if (platform::EqualsNoCase(contentType.Str(), u"multipart/alternative")) alternative_ = 1;
  result = EmbeddedMessageLine() + FromSinglePart(message);
  if (result.Right(2) == u"--") result = result.Left(result.GetLength() - 2);
}

void BodyWalk::ProcessPart(CString& result, WalkedText walked, const CString& boundary,
                           PartTypes& types) {
  const char* part = walked.text;
  if (part == nullptr) return;
  std::u16string_view contentType = types.whole.Str();
  if (contentType == u"multipart/digest" || contentType == u"multipart/related") {
    CString nested;
    if (GetBoundary(part, nested, nullptr) == 0) nested = boundary;
    Nested(result, walked, nested);
    return;
  }
  if (contentType == u"message/rfc822") return EmbeddedMessage(result, walked);
  if (contentType == u"multipart/alternative" || contentType == u"multipart/mixed") {
    alternative_ = 1;
    CString nested;
    GetBoundary(part, nested, nullptr);
    Nested(result, walked, nested);
    return;
  }
  if (contentType == u"audio/wav") return;  // sound is not read out
  if (alternative_ != 0 && contentType != u"text/plain") {
    alternative_ = 0;
    return;
  }
  if (contentType == u"image/jpeg" || contentType == u"image/gif") return;
  if (IsAttachmentPart(part) == 1) return;
  // The body is read where it lies in the part.
  std::string_view body = MultiPartFirstBody(part);
  if (body.empty()) return;
  const CString& partType = Declared(part, types);
  CString charset = GetCharSet(part);
  CString transferEncoding = GetTransEncode(part);
  bool html = platform::EqualsNoCase(partType.Str(), u"text/html");
  std::string page;
  std::u16string decoded =
      DecodeBodyWide(body, charset, transferEncoding, html ? &page : nullptr, PageOnly(html));
  if (decoded.empty() && page.empty()) {
    result.Empty();
    return;
  }
  // The page holds a byte for each unit: it is trimmed at the same places. A page that came
  // alone is trimmed by its bytes, which are the units themselves where they are white space.
  platform::TrimmedRange kept =
      decoded.empty() ? platform::Untrimmed(std::string_view(page)) : platform::Untrimmed(decoded);
  if (!decoded.empty()) platform::KeepOnly(decoded, kept);
  if (!page.empty()) platform::KeepOnly(page, kept);
  if (html) {
    result = HtmlBodyToText(std::move(decoded), std::move(page), html_);
  } else if (NamesApplication(partType)) {
    result.Empty();  // an application part never shows as text
  } else {
    result = CString(std::move(decoded));
  }
}

}  // namespace

CString GetReadingBody(WalkedText message, int* alternative, const HtmlArguments& html) {
  const char* text = message.text;
  TextMemo memo(text);  // the message is searched from its start again and again
  int localFlag = 0;
  int* flag = alternative != nullptr ? alternative : &localFlag;
  CString boundary;
  bool multipart = text != nullptr && GetBoundary(text, boundary, nullptr) == 1;
  *flag = Lower(GetContentType(text, 1)) == u"multipart/alternative" ? 1 : 0;
  BodyWalk walk(flag, html);
  if (!multipart) return walk.FromSinglePart(text);
  CString result;
  walk.FromMultipart(result, message, boundary);
  return result;
}

CString GetBodyFromNoBoundary(const char* text, const HtmlArguments& html) {
  int flag = 0;
  return BodyWalk(&flag, html).FromSinglePart(text);
}

CString GetBodyFromIsBoundary(WalkedText message, const CString& boundary, int* alternative,
                              const HtmlArguments& html) {
  if (message.text == nullptr) return CString();
  int localFlag = 0;
  CString result;
  BodyWalk(alternative != nullptr ? alternative : &localFlag, html)
      .FromMultipart(result, message, boundary);
  return result;
}

char* GetSinglePartBody(const char* text) {
  if (text == nullptr) return nullptr;
  const char* body = AfterEmptyLine(text);
  if (body == nullptr) return nullptr;
  std::string_view rest(body);
  char* copy = HeapCopy(rest);
  if (copy == nullptr) return nullptr;
  // The reply is cut at an index counted on the whole text, which lies behind the copy's end
  // whenever the header is five characters or longer: the body then keeps the marker.
  if (rest.size() >= kServerReply.size() &&
      rest.substr(rest.size() - kServerReply.size()) == kServerReply) {
    size_t cut = std::strlen(text) - kServerReply.size();
    if (cut <= rest.size()) copy[cut] = '\0';
  }
  return copy;
}

char* GetMultiPartFirstBody(const char* partText) {
  std::string_view body = MultiPartFirstBody(partText);
  return body.empty() ? nullptr : HeapCopy(body);
}

CString GetRemainBody(const CString& text) {
  constexpr int kBodyMarkerLength = 9;  // "--BODY--:"
  int start = text.Find(u"--BODY--:");
  if (start < 0) return CString();
  start += kBodyMarkerLength;
  int end = text.Find(u"--ATTACHMENT--:", start);
  if (end < 0) end = text.GetLength();
  end -= 2;  // the line end before the marker, or the text's last two characters
  CString section = end > start ? text.Mid(start, end - start) : CString();
  if (section.GetLength() > 4 && section.Left(3) == u" \r\n") section = section.Mid(3);
  return section;
}

int IsAttachmentPart(const char* partText) {
  if (partText == nullptr) return 0;
  const char* separator = std::strstr(partText, "\r\n\r\n");
  if (separator == nullptr) separator = std::strstr(partText, "\n\n");
  if (separator == nullptr) return 0;
  return IsAttachmentHeader(partText, separator);
}

}  // namespace mailslice::mime
