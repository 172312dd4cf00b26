#include "html/entity_decoder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "html/entity_tables.h"
#include "platform/code_page.h"
#include "support/test_support.h"

namespace mailslice::html {
namespace {

using mailslice::testing::Repeated;
using mailslice::testing::ScopedEnv;
using mailslice::testing::Utf8;

std::string Decoded(std::u16string_view text) {
  return Utf8(HtmlEntityDecoder().Decode(CString(std::u16string(text))).Str());
}

std::u16string Reference(std::u16string_view entity) {
  return u"&" + std::u16string(entity) + u";";
}

TEST(EntityDecoderTest, AppliesEveryRowOfEveryTableAlone) {
  std::vector<EntityRow> rows(kNamedEntities.begin(), kNamedEntities.end());
  for (const EntityGroup& group : kNumericEntityGroups)
    rows.insert(rows.end(), group.rows.begin(), group.rows.end());
  for (const EntityRow& row : rows) {
    std::u16string expected = u"x" + std::u16string(row.replacement) + u"y";
    EXPECT_EQ(Decoded(u"x" + Reference(row.entity) + u"y"), Utf8(expected)) << Utf8(row.entity);
  }
}

// The Latin-1 numbers reach their code points, and so do the names (a sample of them).
TEST(EntityDecoderTest, MapsLatin1NumbersAndNamesToTheirCodePoints) {
  for (int codePoint = 160; codePoint <= 255; ++codePoint) {
    if (codePoint == 215 || codePoint == 247) continue;  // no numeric row for × and ÷
    std::u16string number = CString(std::to_string(codePoint).c_str()).Str();
    EXPECT_EQ(Decoded(u"x&#" + number + u";"), Utf8(std::u16string{u'x', char16_t(codePoint)}));
  }
  EXPECT_EQ(Decoded(u"&nbsp;&copy;&Eacute;&times;&szlig;&divide;&yuml;x"), Utf8(u"\u00A0©É×ß÷ÿx"));
}

TEST(EntityDecoderTest, KeepsTheDevicesOwnValuesOrderLineBreaksAndTrim) {
  const std::pair<std::u16string, std::u16string> cases[] = {
      {u"&euro; &#346; &#151; &dagger;", u"\u0080 \u008C - \u0086"},
      {u"&notin;&#8727;&#8470;&#12423;", u"\uA1FE\uFFE2\u2116\u3087"},
      {u"&#8220;Hi&#8221; &#8217;", u"\"Hi\" '"},
      {u"&#65; &hellip; &AMP; &#38", u"&#65; &hellip; &AMP; &#38"},
      // Numeric references are decoded before the names: "&#38;" twice, "&amp;" once.
      {u"x&#38;lt;", u"x<"},
      {u"&amp;lt; &amp;amp;", u"&lt; &amp;"},
      {u"&#38;#346; &#38;#34; &#38;#60;", u"\u008C &#34; <"},
      {u"&#38;#376; &amp;apos;", u"\u009F '"},  // the rows right after the ampersand's
      {u"a&b&lt;", u"a&b<"},
      // Line breaks, tag spans removed, the text trimmed.
      {u"a<br />b<br/>c<BR />d", u"a\r\nbcd"},
      {u"a &lt;b&gt; c", u"a  c"},
      {u"&#8249;x&#8250;y", u"y"},
      {u"a<b>c<d", u"ac<d"},
      {u" \r\n x \t\r\n", u"x"},
      {u"&nbsp;x&#8226;", u"\u00A0x"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(Decoded(text), Utf8(expected)) << Utf8(text);
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
  for (size_t open, close;
       (open = text.find(u'<')) != text.npos && (close = text.find(u'>', open)) != text.npos;) {
    text.erase(open, close - open + 1);
  }
  return CString(text).Trim().Str();
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

// Bytes decoded as they are widened read as the widened text decoded in place, on the pages
// that widen each byte alone and on one that does not, with references cut at every place.
TEST(EntityDecoderTest, DecodingWhileWideningMatchesDecodingTheWideText) {
  const std::string pieces[] = {"&",      "&#",     ";",      "#",      "38",       "346",
                                "amp",    "lt",     "gt",     "nbsp",   "&#38;",    "&amp;",
                                "&lt;",   "&gt;",   "<",      ">",      "<br />",   "<br /",
                                " ",      "\r\n",   "x",      "\xE9",   "\x81\x8D", "\xA0&",
                                "&\xE9;", "&eacut", "&#8249", "&#338;", "\xFE\xFF", "\x93\x94"};
  std::mt19937 random(7311);
  std::uniform_int_distribution<size_t> pick(0, std::size(pieces) - 1);
  std::uniform_int_distribution<int> length(0, 30);
  for (const char* codePage : {"CP1252", "CP1251", "CP1256", "UTF-8"}) {
    ScopedEnv device("MAILSLICE_CODEPAGE", codePage);
    const platform::AnsiReader reader;
    for (int trial = 0; trial < 5'000; ++trial) {
      std::string bytes;
      for (int n = length(random); n > 0; --n) bytes += pieces[pick(random)];
      std::u16string expected = reader.Widen(bytes);
      HtmlEntityDecoder().DecodeInPlace(expected);
      std::u16string decoded = u"left over";
      HtmlEntityDecoder().DecodeWidened(bytes, reader, decoded);
      ASSERT_EQ(Utf8(decoded), Utf8(expected)) << codePage << ": " << bytes;
    }
  }
}

TEST(EntityDecoderTest, SurvivesHostileText) {
  constexpr size_t kSize = 10'000'000;
  EXPECT_EQ(Decoded(std::u16string(kSize, u'<')).size(), kSize);
  EXPECT_EQ(Decoded(std::u16string(kSize, u'&')).size(), kSize);
  EXPECT_EQ(Decoded(u"a" + Repeated(u"<>", kSize / 2) + u"b"), "ab");  // each span removed
  // Each "&#38;amp;" decodes twice, to one "&".
  EXPECT_EQ(Decoded(Repeated(u"&#38;amp;", kSize / 9)), std::string(kSize / 9, '&'));
}

}  // namespace
}  // namespace mailslice::html
