#include "header/field_lookup.h"

#include <gtest/gtest.h>

#include "header/header_block.h"

namespace mailslice::header {
namespace {

struct LookupCase {
  const char* name;  // what the case shows
  const char* message;
  const char16_t* field;
  const char16_t* value;
};

class FieldLookupTest : public ::testing::TestWithParam<LookupCase> {};

TEST_P(FieldLookupTest, FindsTheValue) {
  EXPECT_EQ(LookupField(GetParam().message, GetParam().field), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    CrLfMessages, FieldLookupTest,
    ::testing::Values(
        LookupCase{"NameInAnyCase", "From: a\r\nsubject: Hi\r\n\r\nbody", u"Subject", u"Hi"},
        LookupCase{"BlankBeforeColon", "From: a\r\nSubject : Hi\r\n\r\nx", u"Subject", u""},
        LookupCase{"NameMustStartTheLine", "X-From: x\r\nTo: t\r\n\r\nb", u"From", u""},
        LookupCase{"FirstLineWithoutLineBreakBefore", "From: a@x\r\nTo: t\r\n\r\nb", u"From",
                   u"a@x"},
        LookupCase{"FoldedValueKeepsTheBlank", "To: a@x,\r\n b@y\r\nCc: c\r\n\r\nb", u"To",
                   u"a@x, b@y"},
        LookupCase{"FirstOfTwo", "To: one\r\nTo: two\r\n\r\nb", u"To", u"one"},
        LookupCase{"TabsBecomeSpaces", "Subject:\ta\tb \r\n\r\nb", u"Subject", u"a b"},
        LookupCase{"LastFieldRunsToTheEmptyLine", "A: 1\r\nDate: Mon\r\n\r\nDate: x", u"Date",
                   u"Mon"},
        LookupCase{"FieldOnlyInTheBody", "A: 1\r\n\r\nSubject: x\r\n", u"Subject", u""},
        LookupCase{"NoEmptyLine", "From: a\r\nSubject: s\r\n", u"Subject", u""},
        LookupCase{"BareLfInsideTakesTheNextCharacter", "Subject: ab\ncd\r\n\r\nx", u"Subject",
                   u"abd"},
        LookupCase{"Latin1NamesFold", "\xC9t\xE9: x\r\n\r\nb", u"ÉTÉ", u"x"}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    LfMessages, FieldLookupTest,
    ::testing::Values(
        LookupCase{"NameInAnyCase", "From: a\nsubject: Hi\n\nbody", u"Subject", u"Hi"},
        // A line feed followed by one blank and text ends the field; two blanks continue it.
        LookupCase{"OneBlankEndsTheField", "From: f\nTo: a\n b\nX: y\n\nb", u"To", u"a"},
        LookupCase{"TwoBlanksContinueIt", "From: f\nTo: a\n  b\nX: y\n\nb", u"To", u"a  b"},
        LookupCase{"TabAfterLfContinues", "From: f\nTo: a\n\t\tb\n\nb", u"To", u"a  b"},
        LookupCase{"FirstOfTwo", "X: 0\nTo: one\nTo: two\n\nb", u"To", u"one"},
        // The leading CR LF makes a field on the first line match in CR LF mode; without a CR
        // the value then runs to the end of the block and one LF goes with the next character.
        LookupCase{"FirstLineRunsOn", "From: f\nTo: t\n\nbody", u"From", u"fo: t"},
        LookupCase{"NoEmptyLine", "X: 0\nSubject: s\n", u"Subject", u""}),
    [](const auto& info) { return std::string(info.param.name); });

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
