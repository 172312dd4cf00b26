#include "header/field_lookup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "header/header_block.h"
#include "platform/letter_case.h"
#include "support/test_support.h"

namespace mailslice::header {
namespace {

TEST(FieldLookupTest, FindsTheValueInCrLfMessages) {
  const std::tuple<const char*, const char16_t*, const char16_t*> cases[] = {
      {"From: a\r\nsubject: Hi\r\n\r\nbody", u"Subject", u"Hi"},   // the name in any case
      {"From: a\r\nSubject : Hi\r\n\r\nx", u"Subject", u""},       // no blank before the colon
      {"X-From: x\r\nTo: t\r\n\r\nb", u"From", u""},               // the name starts the line
      {"From: a@x\r\nTo: t\r\n\r\nb", u"From", u"a@x"},            // the first line too
      {"To: a@x,\r\n b@y\r\nCc: c\r\n\r\nb", u"To", u"a@x, b@y"},  // a fold keeps its blank
      {"To: one\r\nTo: two\r\n\r\nb", u"To", u"one"},
      {"Subject:\ta\tb \r\n\r\nb", u"Subject", u"a b"},  // tabs become spaces, then trimmed
      {"A: 1\r\nDate: Mon\r\n\r\nDate: x", u"Date", u"Mon"},
      {"From: a\r\nSubject: s\r\n", u"Subject", u""},    // no empty line
      {"Subject: ab\ncd\r\n\r\nx", u"Subject", u"abd"},  // a bare LF inside takes the next one
      {"\xC9t\xE9: x\r\n\r\nb", u"ÉTÉ", u"x"}};          // Latin-1 names fold
  for (auto [message, field, value] : cases)
    EXPECT_EQ(LookupField(message, field), value) << message;
}

TEST(FieldLookupTest, FindsTheValueInLfMessages) {
  const std::tuple<const char*, const char16_t*, const char16_t*> cases[] = {
      {"From: a\nsubject: Hi\n\nbody", u"Subject", u"Hi"},
      // A line feed followed by one blank and text ends the field; two blanks or a tab go on.
      {"From: f\nTo: a\n b\nX: y\n\nb", u"To", u"a"},
      {"From: f\nTo: a\n  b\nX: y\n\nb", u"To", u"a  b"},
      {"From: f\nTo: a\n\t\tb\n\nb", u"To", u"a  b"},
      {"X: 0\nTo: one\nTo: two\n\nb", u"To", u"one"},
      // The leading CR LF makes a field on the first line match in CR LF mode; without a CR the
      // value then runs to the end of the block and one LF goes with the next character.
      {"From: f\nTo: t\n\nbody", u"From", u"fo: t"},
      {"X: 0\nSubject: s\n", u"Subject", u""}};
  for (auto [message, field, value] : cases)
    EXPECT_EQ(LookupField(message, field), value) << message;
}

// Lookups in turn share the widened block of the message before: a message changed in place,
// another code page or a header too large to keep must still give this call's value.
TEST(FieldLookupTest, EachLookupReadsTheMessageAndCodePageOfItsCall) {
  char message[] = "Subject: \xE9t\xE9\r\nTo: one\r\n\r\nbody";
  EXPECT_EQ(LookupField(message, u"Subject"), u"été");
  message[19] = 'x';
  EXPECT_EQ(LookupField(message, u"To"), u"oxe");
  {
    mailslice::testing::ScopedEnv cyrillic("MAILSLICE_CODEPAGE", "CP1251");
    EXPECT_EQ(LookupField(message, u"Subject"), u"йtй");
  }
  EXPECT_EQ(LookupField(message, u"Subject"), u"été");
  std::string large = "X: " + std::string(100'000, 'x') + "\r\nTo: far\r\n\r\nbody";
  EXPECT_EQ(LookupField(large.c_str(), u"To"), u"far");
  EXPECT_EQ(LookupField(message, u"To"), u"oxe");
}

// The lookup as it was first written, kept as the reference for the faster one: the whole
// block, folded to lower case, is searched for a line break, the name and a colon, and the
// value is cut, unfolded, its tabs made spaces and trimmed, one step after the other.
namespace reference {

enum class LineEnds { kCrLf, kLf };

std::u16string Folded(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& ch : folded) ch = mailslice::platform::ToLowerLetter(ch);
  return folded;
}

bool IsBlank(char16_t ch) { return ch == u' ' || ch == u'\t'; }

size_t ValueEnd(std::u16string_view text, size_t start, LineEnds lineEnds) {
  auto at = [&](size_t i) { return i < text.size() ? text[i] : u'\0'; };
  for (size_t i = start; i < text.size(); ++i) {
    if (at(i) == u'\0') return i;
    if (lineEnds == LineEnds::kCrLf && at(i) == u'\r' && at(i + 1) == u'\n' &&
        !IsBlank(at(i + 2))) {
      return i;
    }
    if (lineEnds == LineEnds::kLf && at(i) == u'\n' && !IsBlank(at(i + 2))) return i;
  }
  return text.size();
}

std::u16string WithoutCrLfPairs(std::u16string_view text) {
  std::u16string result;
  for (char16_t ch : text) {
    if (ch == u'\n' && !result.empty() && result.back() == u'\r') {
      result.pop_back();
    } else {
      result += ch;
    }
  }
  return result;
}

std::u16string Unfold(std::u16string value, LineEnds lineEnds) {
  size_t crlf = value.find(u"\r\n");
  if (lineEnds == LineEnds::kLf) {
    if (crlf != std::u16string::npos) value.erase(crlf, 1);
    std::erase(value, u'\n');
    return value;
  }
  if (crlf == std::u16string::npos) {
    size_t lf = value.find(u'\n');
    if (lf == std::u16string::npos) return value;
    value.erase(lf, 2);
  }
  return WithoutCrLfPairs(value);
}

CString Lookup(std::u16string_view headerBlock, std::u16string_view name, int occurrence) {
  if (headerBlock.empty()) return CString();
  std::u16string text = u"\r\n" + std::u16string(headerBlock);
  std::u16string folded = Folded(text);
  std::u16string pattern = u"\r\n" + Folded(name) + u":";
  LineEnds lineEnds = LineEnds::kCrLf;
  size_t match = folded.find(pattern);
  if (match == std::u16string::npos) {
    pattern = u"\n" + Folded(name) + u":";
    lineEnds = LineEnds::kLf;
    match = folded.find(pattern);
  }
  for (int skipped = 0; skipped < occurrence && match != std::u16string::npos; ++skipped) {
    match = folded.find(pattern, match + pattern.size());
  }
  if (match == std::u16string::npos) return CString();
  size_t start = match + pattern.size();
  size_t end = ValueEnd(text, start, lineEnds);
  std::u16string value = Unfold(text.substr(start, end - start), lineEnds);
  std::replace(value.begin(), value.end(), u'\t', u' ');
  CString result(std::move(value));
  result.Trim();
  return result;
}

}  // namespace reference

// Header blocks put together from pieces that trouble a lookup: both line ends and bare CRs,
// folds of one and two blanks, NULs, repeated fields, names in other cases or with a blank
// before the colon, Latin-1 letters, and a field on the first line.
std::u16string RandomHeader(std::mt19937& random, bool withNul) {
  static const std::vector<std::u16string> kNames = {u"From",
                                                     u"from",
                                                     u"FROM",
                                                     u"To",
                                                     u"TO",
                                                     u"Cc",
                                                     u"CC",
                                                     u"Subject",
                                                     u"X-From",
                                                     u"To ",
                                                     u"Date",
                                                     u"\u00C9t\u00E9",
                                                     u"\u00E9T\u00C9",
                                                     u"",
                                                     u"Fr:om",
                                                     u"Re"};
  static const std::vector<std::u16string> kValues = {
      u" a@x",           u"",           u"  two  words ", u"\tb\tc",    u" x: y",
      u" =?utf-8?q?w?=", u" To: inner", u" a\tb\t",       u" bare\nlf", u" cr\r\rcr"};
  static const std::vector<std::u16string> kEnds = {u"\r\n", u"\n",   u"\r",     u"\r\n ",
                                                    u"\n ",  u"\n  ", u"\r\n\t", u"\n\t"};
  std::u16string header;
  size_t lines = random() % 7;
  for (size_t line = 0; line < lines; ++line) {
    header += kNames[random() % kNames.size()];
    if (random() % 6 != 0) header += u':';
    header += kValues[random() % kValues.size()];
    if (withNul && random() % 9 == 0) header += u'\0';
    if (line + 1 < lines || random() % 2 == 0) header += kEnds[random() % kEnds.size()];
  }
  return header;
}

const std::u16string_view kLookedFor[] = {
    u"From", u"TO",    u"cc",     u"Subject", u"Date", u"\u00C9T\u00C9", u"",
    u"To ",  u"Fr:om", u"X-From", u"Re",      u"R",    u"From\r\nTo",    u"e"};

// The lookup against the reference, every name and occurrence.
TEST(FieldLookupTest, FindsWhatTheReferenceFinds) {
  std::mt19937 random(7);
  for (int round = 0; round < 3000; ++round) {
    std::u16string header = RandomHeader(random, true);
    for (std::u16string_view name : kLookedFor) {
      for (int occurrence = -1; occurrence < 3; ++occurrence) {
        ASSERT_EQ(LookupFieldInBlock(header, name, occurrence),
                  reference::Lookup(header, name, occurrence))
            << mailslice::testing::Utf8(header) << " / " << mailslice::testing::Utf8(name) << " #"
            << occurrence;
      }
    }
  }
}

// The kept block of a message must give what its header gives now, when lookups go from one
// message to another and a message is changed in place between them.
TEST(FieldLookupTest, KeptBlocksFollowTheMessageOfEachLookup) {
  std::mt19937 random(11);
  std::vector<std::string> messages;
  for (int i = 0; i < 4; ++i) messages.push_back("");
  const char kSeparators[][6] = {"\r\n\r\n", "\n\n", "\r\n\n", "\n\r\n\r\n"};
  for (int round = 0; round < 3000; ++round) {
    std::string& message = messages[random() % messages.size()];
    if (message.empty() || random() % 4 == 0) {
      std::u16string header = RandomHeader(random, false);
      message.assign(header.begin(), header.end());  // Latin-1 letters as bytes
      message += kSeparators[random() % 4];
      message += random() % 2 == 0 ? "body\r\n\r\nmore" : "body";
    } else if (random() % 3 == 0) {
      // A byte changed in place: a letter, a line end or the end of the text.
      const char kBytes[] = {'x', '\r', '\n', ':', ' ', '\0'};
      message[random() % message.size()] = kBytes[random() % sizeof kBytes];
    }
    std::u16string_view name = kLookedFor[random() % std::size(kLookedFor)];
    int occurrence = static_cast<int>(random() % 3);
    CString expected = reference::Lookup(HeaderBlock(message.c_str()), name, occurrence);
    ASSERT_EQ(LookupField(message.c_str(), name, occurrence), expected)
        << message << " / " << mailslice::testing::Utf8(name);
  }
}

TEST(HeaderBlockTest, EndsAtTheFirstEmptyLineOfEitherKind) {
  EXPECT_EQ(HeaderBlock("A: 1\r\nB: 2\r\n\r\nC: 3\n\n"), u"A: 1\r\nB: 2");
  EXPECT_EQ(HeaderBlock("A: 1\nB: 2\n\nC"), u"A: 1\nB: 2");
  EXPECT_EQ(HeaderBlock("A: 1"), u"");
  EXPECT_EQ(HeaderBlock(nullptr), u"");
  const char* message = "A: 1\n\nB\r\n\r\nbody";
  EXPECT_EQ(BodyStart(message), message + 11);  // CR LF CR LF wins wherever it is
  EXPECT_EQ(BodyStart("A: 1\n\nbody"), std::string_view("body"));
  EXPECT_EQ(BodyStart("A: 1\r\n"), nullptr);
}

}  // namespace
}  // namespace mailslice::header
