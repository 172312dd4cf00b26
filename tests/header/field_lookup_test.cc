#include "header/field_lookup.h"

#include <gtest/gtest.h>

#include <string>

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
