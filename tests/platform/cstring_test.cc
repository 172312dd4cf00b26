#include <gtest/gtest.h>
#include <mailslice/cstring.h>

#include <random>
#include <stdexcept>

#include "support/test_support.h"

namespace {

using mailslice::testing::ScopedEnv;
using mailslice::testing::Utf8;

TEST(CStringTest, TrimRemovesTheSixWhiteSpaceCharactersOnly) {
  CString text(u" \t\r\n\v\f value \u00A0\f\v\n\r\t ");
  EXPECT_EQ(Utf8(text.Trim().Str()), "value \u00A0");  // no-break space is not trimmed
  CString dashes(u"--a--"), blank(u" \r\n ");
  EXPECT_EQ(dashes.Trim(u'-'), u"a");
  EXPECT_TRUE(blank.Trim().IsEmpty());
}

TEST(CStringTest, CaseMappingFoldsAsciiAndLatin1Letters) {
  CString text(u"ÀÉÎÕÜÞ×ABCßÿ");
  EXPECT_EQ(text.MakeLower(), u"àéîõüþ×abcßÿ");  // × is no letter; ß and ÿ have no capital
  EXPECT_EQ(text.MakeUpper(), u"ÀÉÎÕÜÞ×ABCßÿ");
  EXPECT_EQ(CString(u"ÉTÉ").CompareNoCase(CString(u"été")), 0);
  EXPECT_LT(CString(u"abc").CompareNoCase(CString(u"ABD")), 0);
  EXPECT_NE(CString(u"Ω").CompareNoCase(CString(u"ω")), 0);  // Greek is not folded
}

// The comparison ignoring case orders as comparing the two texts lowered, also where one text
// starts the other and where letters of both cases meet letters that are not folded.
TEST(CStringTest, CompareNoCaseOrdersAsTheLoweredTexts) {
  const char16_t units[] = {u'a', u'B', u'b', u'Z', u'[', u'`', 0xC0, 0xE0, 0xD7, 0xF7, 0xDF, u'Ω'};
  std::mt19937 random(12);
  for (int round = 0; round < 5000; ++round) {
    std::u16string left, right;
    for (size_t count = random() % 4; count > 0; --count) left += units[random() % 12];
    for (size_t count = random() % 4; count > 0; --count) right += units[random() % 12];
    CString lowerLeft(left), lowerRight(right);
    lowerLeft.MakeLower();
    lowerRight.MakeLower();
    ASSERT_EQ(CString(left).CompareNoCase(CString(right)), lowerLeft.Compare(lowerRight));
  }
}

TEST(CStringTest, ExtractionAndSearchClampOutOfRangeArguments) {
  CString text(u"abcdef");
  const std::pair<CString, const char16_t*> pieces[] = {
      {text.Left(2), u"ab"},   {text.Left(-1), u""},        {text.Left(99), u"abcdef"},
      {text.Right(2), u"ef"},  {text.Right(99), u"abcdef"}, {text.Mid(2), u"cdef"},
      {text.Mid(2, 2), u"cd"}, {text.Mid(-3, 2), u"ab"},    {text.Mid(5, 99), u"f"},
      {text.Mid(9), u""}};
  for (const auto& [piece, expected] : pieces) EXPECT_EQ(piece, expected);
  EXPECT_EQ(text.GetAt(6), 0);
  CString marks(u"a=?b?=c=?d");
  EXPECT_EQ(marks.Find(u"=?"), 1);
  EXPECT_EQ(marks.Find(u"=?", 2), 7);
  EXPECT_EQ(marks.Find(u"=?", 8), -1);
  EXPECT_EQ(marks.Find(u"", 3), 3);
  EXPECT_EQ(marks.Find(u"x", 99), -1);
  EXPECT_EQ(marks.Find(u'?', -1), -1);
  EXPECT_EQ(marks.ReverseFind(u'?'), 8);
  EXPECT_EQ(marks.FindOneOf(u"dc"), 6);
}

TEST(CStringTest, EditingReplacesRemovesDeletesAndInserts) {
  CString text(u"aXbXXc");
  EXPECT_EQ(text.Replace(u"X", u"--"), 3);
  EXPECT_EQ(text, u"a--b----c");
  EXPECT_EQ(text.Replace(u"", u"y"), 0);
  EXPECT_EQ(text.Replace(u"--", u""), 3);
  EXPECT_EQ(text, u"abc");
  EXPECT_EQ(text.Remove(u'b'), 1);
  EXPECT_EQ(text.Insert(1, u"xyz"), 5);
  EXPECT_EQ(text.Delete(2, 99), 2);
  EXPECT_EQ(text, u"ax");
  EXPECT_EQ(text.Delete(5), 2);
}

TEST(CStringTest, EqualityWithWideAndEightBitText) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP1252");
  CString text(u"caf\u00E9");
  EXPECT_TRUE(text == u"café");
  EXPECT_TRUE(text == "caf\xE9");  // 8-bit text is read in the device code page
  EXPECT_TRUE(text != "cafe");
  EXPECT_EQ(CString("Re: hi") + u" " + CString(u"there") + u'!', u"Re: hi there!");
}

TEST(CStringTest, FormatHandlesWideStringsNumbersAndWidths) {
  CString text;
  text.Format(u"%04d/%02d/%02d %-3s|%5.1f|%x|%c|%hs|%%", 2009, 1, 5, u"ab", 2.25, 255, u'Ω', "8");
  EXPECT_EQ(text, u"2009/01/05 ab |  2.2|ff|Ω|8|%");
  text.AppendFormat(u"%*d", 4, 7);
  EXPECT_EQ(text.Right(4), u"   7");
}

TEST(CStringTest, Utf8RoundTripAndLoneSurrogates) {
  CString text = CString::FromUtf8("日本語 𝄞");
  EXPECT_EQ(text.GetLength(), 6);  // the clef is a surrogate pair
  EXPECT_EQ(text.ToUtf8(), "日本語 𝄞");
  EXPECT_EQ(CString(std::u16string(1, char16_t(0xD800))).ToUtf8(), "?");
}

TEST(CStringArrayTest, RefusesIndicesOutOfRange) {
  CStringArray list;
  EXPECT_EQ(list.Add(u"a"), 0);
  EXPECT_EQ(list.GetAt(0), u"a");
  EXPECT_THROW(list.GetAt(1), std::out_of_range);
  EXPECT_THROW(list.GetAt(-1), std::out_of_range);
}

}  // namespace
