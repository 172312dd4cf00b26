#include "header/address_subject.h"

#include <mailslice/device.h>

#include <string>
#include <string_view>

#include "codec/encoded_word.h"
#include "codec/header_text.h"

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

// The encoded words of a subject, found the way the device has always found them: when the
// first "?=" behind a word's start leaves room after it, the end is looked for again from 12
// characters past the start, which passes the "?=" that a quoted-printable word holds when its
// text begins with an escape ("?Q?=C3"). When the two ends differ, the word is taken to start
// at the next "=?" behind the first end (or at the subject's start when there is none). Sets
// `suffix` to the text behind the last end.
CStringArray CollectWords(const CString& subject, CString& suffix) {
  CStringArray words;
  for (int from = 0;;) {
    int start = subject.Find(kWordStart, from);
    if (start < 0) {
      if (!words.IsEmpty()) suffix = subject.Mid(from + 2);
      break;
    }
    int end = subject.Find(kWordEnd, start);
    if (end + kRoomAfterEnd <= subject.GetLength()) {
      int firstEnd = end;
      end = subject.Find(kWordEnd, start + kSecondEndSearchOffset);
      if (end != firstEnd) start = subject.Find(kWordStart, firstEnd);
    }
    if (end < 0) break;
    // A start behind the end gives an empty word; a start before the subject counts from 0.
    CString word = subject.Mid(start, end - start + 2);
    if (!word.IsEmpty()) words.Add(word);
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
  int firstWord = value.Find(kWordStart);
  if (firstWord < 0) return value;
  CString suffix;
  CStringArray words = CollectWords(value, suffix);
  // With no word cut out the whole subject is decoded as one, behind its own prefix again.
  if (words.IsEmpty()) words.Add(value);
  CString joined;
  for (int index = 0; index < words.GetSize(); ++index) {
    joined += codec::DecodeEncodedWord(words.GetAt(index));
  }
  return value.Left(firstWord) + joined + suffix;
}

void CcList(const CString& value, CStringArray* list) {
  if (list == nullptr) return;
  CString cleaned(value);
  cleaned.Replace(u"\r\n", u"");
  cleaned.Remove(u'\t');
  std::u16string_view text = cleaned.Str();
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
