#include "header/field_lookup.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "header/header_block.h"
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
      u" a@x", u"", u"  two  words ", u"\tb\tc", u" x: y", u" =?utf-8?q?w?=", u" To: inner"};
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

// The lookup by line starts against the search of the whole block, every name and occurrence.
TEST(FieldLookupTest, LineStartsFindWhatTheWholeBlockSearchFinds) {
  std::mt19937 random(7);
  for (int round = 0; round < 3000; ++round) {
    std::u16string header = RandomHeader(random, true);
    for (std::u16string_view name : kLookedFor) {
      for (int occurrence = -1; occurrence < 3; ++occurrence) {
        ASSERT_EQ(LookupFieldInBlock(header, name, occurrence),
                  SearchFieldInBlock(header, name, occurrence))
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
    CString expected = SearchFieldInBlock(HeaderBlock(message.c_str()), name, occurrence);
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
