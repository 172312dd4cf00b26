#include "html/entity_decoder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "html/entity_tables.h"
#include "support/test_support.h"

namespace mailslice::html {
namespace {

using mailslice::testing::Utf8;

std::string Decoded(std::u16string_view text) {
  return Utf8(HtmlEntityDecoder().Decode(CString(std::u16string(text))).Str());
}

std::u16string Reference(std::u16string_view entity) {
  return u"&" + std::u16string(entity) + u";";
}

TEST(EntityDecoderTest, AppliesEveryRowOfEveryTable) {
  std::vector<EntityRow> rows;
  for (const EntityGroup& group : kNumericEntityGroups) {
    for (const EntityRow& row : group.rows) {
      EXPECT_TRUE(Reference(row.entity).starts_with(group.trigger)) << Utf8(row.entity);
      rows.push_back(row);
    }
  }
  rows.insert(rows.end(), kNamedEntities.begin(), kNamedEntities.end());
  EXPECT_EQ(rows.size(), 250u);
  for (const EntityRow& row : rows) {
    std::u16string expected = u"x" + std::u16string(row.replacement) + u"y";
    EXPECT_EQ(Decoded(u"x" + Reference(row.entity) + u"y"), Utf8(expected)) << Utf8(row.entity);
  }
}

TEST(EntityDecoderTest, MapsLatin1NumbersAndNamesToTheirCodePoints) {
  // The HTML 4 Latin-1 names in code point order, from U+00A0.
  const char16_t* names[] = {
      u"nbsp",   u"iexcl",  u"cent",   u"pound",  u"curren", u"yen",    u"brvbar", u"sect",
      u"uml",    u"copy",   u"ordf",   u"laquo",  u"not",    u"shy",    u"reg",    u"macr",
      u"deg",    u"plusmn", u"sup2",   u"sup3",   u"acute",  u"micro",  u"para",   u"middot",
      u"cedil",  u"sup1",   u"ordm",   u"raquo",  u"frac14", u"frac12", u"frac34", u"iquest",
      u"Agrave", u"Aacute", u"Acirc",  u"Atilde", u"Auml",   u"Aring",  u"AElig",  u"Ccedil",
      u"Egrave", u"Eacute", u"Ecirc",  u"Euml",   u"Igrave", u"Iacute", u"Icirc",  u"Iuml",
      u"ETH",    u"Ntilde", u"Ograve", u"Oacute", u"Ocirc",  u"Otilde", u"Ouml",   u"times",
      u"Oslash", u"Ugrave", u"Uacute", u"Ucirc",  u"Uuml",   u"Yacute", u"THORN",  u"szlig",
      u"agrave", u"aacute", u"acirc",  u"atilde", u"auml",   u"aring",  u"aelig",  u"ccedil",
      u"egrave", u"eacute", u"ecirc",  u"euml",   u"igrave", u"iacute", u"icirc",  u"iuml",
      u"eth",    u"ntilde", u"ograve", u"oacute", u"ocirc",  u"otilde", u"ouml",   u"divide",
      u"oslash", u"ugrave", u"uacute", u"ucirc",  u"uuml",   u"yacute", u"thorn",  u"yuml"};
  char16_t codePoint = 0xA0;
  for (const char16_t* name : names) {
    EXPECT_EQ(Decoded(u"x" + Reference(name)), Utf8(std::u16string{u'x', codePoint})) << Utf8(name);
    ++codePoint;
  }
  for (char16_t number = 160; number <= 255; ++number) {
    if (number == 215 || number == 247) continue;
    std::u16string entity = u"#" + CString(std::to_string(number).c_str()).Str();
    EXPECT_EQ(Decoded(u"x" + Reference(entity)), Utf8(std::u16string{u'x', number}));
  }
}

struct DecodeCase {
  std::u16string text;
  std::u16string expected;
};

TEST(EntityDecoderTest, KeepsTheDevicesOwnValuesAndOrder) {
  const DecodeCase cases[] = {
      {u"&euro; &#346; &#151; &dagger;", u"\u0080 \u008C - \u0086"},
      {u"&notin;&#8727;&#8470;&#12423;", u"\uA1FE\uFFE2\u2116\u3087"},
      {u"&#8220;Hi&#8221; &#8217;", u"\"Hi\" '"},
      {u"&#65; &hellip; &AMP; &#38", u"&#65; &hellip; &AMP; &#38"},
      // Numeric references are decoded before the names: "&#38;" twice, "&amp;" once.
      {u"x&#38;lt;", u"x<"},
      {u"&amp;lt; &amp;amp;", u"&lt; &amp;"},
      {u"&amp;quot;", u"\""},
      {u"&#38;#346; &#38;#34; &#38;#60;", u"\u008C &#34; <"},
      {u"&#38;amp;lt;", u"&lt;"},
      {u"a&b&lt;", u"a&b<"},
  };
  for (const DecodeCase& c : cases) EXPECT_EQ(Decoded(c.text), Utf8(c.expected)) << Utf8(c.text);
}

TEST(EntityDecoderTest, BreaksLinesRemovesTagSpansAndTrims) {
  const DecodeCase cases[] = {
      {u"a<br />b<br/>c<BR />d", u"a\r\nbcd"},
      {u"a &lt;b&gt; c", u"a  c"},
      {u"&#8249;x&#8250;y", u"y"},
      {u"1 < 2", u"1 < 2"},
      {u"a<b>c<d", u"ac<d"},
      {u"a>b<c>d>", u"a>bd>"},
      {u" \r\n x \t\r\n", u"x"},
      {u"&nbsp;x&#8226;", u"\u00A0x"},
      {u"", u""},
  };
  for (const DecodeCase& c : cases) EXPECT_EQ(Decoded(c.text), Utf8(c.expected)) << Utf8(c.text);
}

// The decoder as first written: one replace-all pass over the whole text per table row.
std::u16string ReplaceEvery(std::u16string text, std::u16string_view from, std::u16string_view to) {
  for (size_t at = 0; (at = text.find(from, at)) != std::u16string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

std::u16string DecodeRowByRow(std::u16string text) {
  text = ReplaceEvery(text, u"<br />", u"\r\n");
  for (const EntityGroup& group : kNumericEntityGroups) {
    if (text.find(group.trigger) == std::u16string::npos) continue;
    for (const EntityRow& row : group.rows) {
      text = ReplaceEvery(text, Reference(row.entity), row.replacement);
    }
  }
  for (const EntityRow& row : kNamedEntities) {
    text = ReplaceEvery(text, Reference(row.entity), row.replacement);
  }
  while (true) {
    size_t open = text.find(u'<');
    size_t close = open == std::u16string::npos ? open : text.find(u'>', open);
    if (close == std::u16string::npos) break;
    text.erase(open, close - open + 1);
  }
  CString result(text);
  result.TrimRight();
  result.TrimLeft();
  return result.Str();
}

TEST(EntityDecoderTest, MatchesRowByRowReplacementOnGeneratedText) {
  const std::u16string pieces[] = {
      u"&",   u"&#",   u";",      u"#",      u"38",      u"34",    u"346", u"60",     u"12",
      u"298", u"1",    u"2",      u"3",      u"6",       u"8",     u"221", u"amp",    u"lt",
      u"gt",  u"quot", u"Eacute", u"euro",   u"&#38;",   u"&amp;", u"<",   u">",      u"<br />",
      u" ",   u"x",    u"\r\n",   u"\u00E9", u"&#8249;", u"&lt;",  u"&#3", u"&#38;#", u"nbsp"};
  std::mt19937 random(20240611);
  std::uniform_int_distribution<size_t> pick(0, std::size(pieces) - 1);
  std::uniform_int_distribution<int> length(0, 24);
  for (int trial = 0; trial < 30'000; ++trial) {
    std::u16string text;
    for (int n = length(random); n > 0; --n) text += pieces[pick(random)];
    ASSERT_EQ(Decoded(text), Utf8(DecodeRowByRow(text))) << Utf8(text);
  }
}

TEST(EntityDecoderTest, SurvivesHostileText) {
  constexpr size_t kSize = 10'000'000;
  EXPECT_EQ(Decoded(std::u16string(kSize, u'<')).size(), kSize);
  EXPECT_EQ(Decoded(std::u16string(kSize, u'&')).size(), kSize);
  // Five million tag spans, each removed.
  std::u16string spans;
  for (size_t i = 0; i < kSize / 2; ++i) spans += u"<>";
  EXPECT_EQ(Decoded(u"a" + spans + u"b"), "ab");
  // Each "&#38;amp;" decodes twice, to one "&".
  std::u16string chain;
  for (size_t i = 0; i < kSize / 9; ++i) chain += u"&#38;amp;";
  EXPECT_EQ(Decoded(chain), std::string(kSize / 9, '&'));
}

}  // namespace
}  // namespace mailslice::html
