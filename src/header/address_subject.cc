#include "header/address_subject.h"

#include <mailslice/device.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "codec/encoded_word.h"
#include "codec/header_text.h"
#include "platform/wide_search.h"

namespace mailslice::header {
namespace {

constexpr char16_t kWordStart[] = u"=?";
constexpr char16_t kWordEnd[] = u"?=";
// Where the second look for a word's end begins, counted from the word's start.
constexpr int kSecondEndSearchOffset = 12;
// The second look is made only when the first end leaves this much of the subject.
constexpr int kRoomAfterEnd = 3;

bool IsTrimmedSpace(char16_t ch) {
  return ch == u' ' || ch == u'\t' || ch == u'\r' || ch == u'\n' || ch == u'\v' || ch == u'\f';
}

// A part [begin, end) of a text, trimmed and cut as CString does it, without copying.
struct Span {
  size_t begin;
  size_t end;
  bool empty() const { return begin == end; }
};

void Trim(std::u16string_view text, Span& span) {
  while (span.begin < span.end && IsTrimmedSpace(text[span.begin])) ++span.begin;
  while (span.end > span.begin && IsTrimmedSpace(text[span.end - 1])) --span.end;
}

CString Cut(std::u16string_view text, Span span) {
  return CString(std::u16string(text.substr(span.begin, span.end - span.begin)));
}

void DropLeadingComma(std::u16string_view text, Span& span) {
  if (!span.empty() && text[span.begin] == u',') ++span.begin;
}

// The first `ch` at or after positions that only move forward, found in one pass overall.
class ForwardFinder {
 public:
  ForwardFinder(std::u16string_view text, char16_t ch) : text_(text), ch_(ch) {}
  size_t From(size_t begin) {
    if (!searched_ || found_ < begin) found_ = text_.find(ch_, begin);
    searched_ = true;
    return found_;
  }

 private:
  std::u16string_view text_;
  char16_t ch_;
  size_t found_ = 0;
  bool searched_ = false;
};

// CString's Find on a view: the first `sub` at or after `start`, -1 for none or for a start
// outside the text.
int FindFrom(std::u16string_view text, std::u16string_view sub, int start) {
  if (start < 0 || start > static_cast<int>(text.size())) return -1;
  size_t at = platform::FindUnits(text, sub, static_cast<size_t>(start));
  return at == std::u16string_view::npos ? -1 : static_cast<int>(at);
}

// CString's Mid on a view: the place and the count are clamped to the text, in that order.
std::u16string_view MidOf(std::u16string_view text, int first, int count) {
  int length = static_cast<int>(text.size());
  first = std::clamp(first, 0, length);
  count = std::clamp(count, 0, length - first);
  return text.substr(static_cast<size_t>(first), static_cast<size_t>(count));
}

// The encoded words of a subject, found the way the device has always found them: when the
// first "?=" behind a word's start leaves room after it, the end is looked for again from 12
// characters past the start, which passes the "?=" that a quoted-printable word holds when its
// text begins with an escape ("?Q?=C3"). When the two ends differ, the word is taken to start
// at the next "=?" behind the first end (or at the subject's start when there is none). Sets
// `suffix` to the text behind the last end.
std::vector<std::u16string_view> CollectWords(std::u16string_view subject,
                                              std::u16string_view& suffix) {
  std::vector<std::u16string_view> words;
  int length = static_cast<int>(subject.size());
  for (int from = 0;;) {
    int start = FindFrom(subject, kWordStart, from);
    if (start < 0) {
      if (!words.empty()) suffix = MidOf(subject, from + 2, length);
      break;
    }
    int end = FindFrom(subject, kWordEnd, start);
    if (end + kRoomAfterEnd <= length) {
      int firstEnd = end;
      end = FindFrom(subject, kWordEnd, start + kSecondEndSearchOffset);
      if (end != firstEnd) start = FindFrom(subject, kWordStart, firstEnd);
    }
    if (end < 0) break;
    // A start behind the end gives an empty word; a start before the subject counts from 0.
    std::u16string_view word = MidOf(subject, start, end - start + 2);
    if (!word.empty()) words.push_back(word);
    from = end;
  }
  return words;
}

}  // namespace

CString MailFrom(const CString& value) {
  if (!value.IsEmpty()) return codec::DecodeHeaderText(value);
  CSystemValue messages;
  messages.LoadMessageFile(u"Email");
  return messages.GetMessageW(kUnknownAddressMessage);
}

CString MailFromAddress(const CString& value) {
  int open = value.Find(u'<');
  int close = value.ReverseFind(u'>');
  if (open < 0 || close < 0) return value;
  return value.Mid(open + 1, close - open - 1);
}

// Mail programs fold a long subject into several words; the blanks between them belong to
// the folding, not to the subject, so whatever stands between two words is dropped.
CString ParsingSubject(const CString& value) {
  std::u16string_view subject = value.Str();
  int firstWord = FindFrom(subject, kWordStart, 0);
  if (firstWord < 0) return value;
  std::u16string_view suffix;
  std::vector<std::u16string_view> words = CollectWords(subject, suffix);
  // With no word cut out the whole subject is decoded as one, behind its own prefix again.
  if (words.empty()) words.push_back(subject);
  std::u16string joined(subject.substr(0, static_cast<size_t>(firstWord)));
  for (std::u16string_view word : words) {
    joined += codec::DecodeEncodedWord(CString(std::u16string(word))).Str();
  }
  joined += suffix;
  return CString(std::move(joined));
}

void CcList(const CString& value, CStringArray* list) {
  if (list == nullptr) return;
  // The CR LF pairs of the folded value go, then its tabs (which leave a CR and an LF they
  // stood between as they are), in one pass.
  std::u16string_view raw = value.Str();
  std::u16string cleaned;
  cleaned.reserve(raw.size());
  for (size_t at = 0; at < raw.size(); ++at) {
    if (raw[at] == u'\r' && at + 1 < raw.size() && raw[at + 1] == u'\n') {
      ++at;
    } else if (raw[at] != u'\t') {
      cleaned += raw[at];
    }
  }
  std::u16string_view text = cleaned;
  Span rest{0, text.size()};
  Trim(text, rest);
  ForwardFinder closes(text, u'>');
  ForwardFinder commas(text, u',');
  while (true) {
    Span item{rest.begin, rest.begin};
    size_t close = closes.From(rest.begin);
    if (close < rest.end) {
      // An address in angle brackets ends at its ">", even when its display name holds a comma.
      item.end = close + 1;
      rest.begin = close + 1;
    } else {
      size_t comma = commas.From(rest.begin);
      if (comma >= rest.end) break;
      item.end = comma;
      rest.begin = comma + 1;
    }
    Trim(text, item);
    Trim(text, rest);
    DropLeadingComma(text, rest);
    DropLeadingComma(text, item);
    list->Add(Cut(text, item));
    if (rest.empty()) return;
  }
  // The last address, which no ">" or comma closes; an empty remainder adds nothing.
  Trim(text, rest);
  if (!rest.empty()) list->Add(Cut(text, rest));
}

}  // namespace mailslice::header
