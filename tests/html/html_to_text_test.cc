#include "html/html_to_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "support/test_support.h"

namespace mailslice::html {
namespace {

using mailslice::testing::Repeated;
using mailslice::testing::ScopedEnv;
using mailslice::testing::Utf8;

std::string Converted(std::u16string_view html) {
  return Utf8(ConvertHtmlToText(CString(std::u16string(html))).Str());
}

TEST(HtmlToTextTest, ReadsTheBodyWithTheLibrarysOwnReader) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP1252");
  const std::pair<std::u16string, std::u16string> cases[] = {
      {u"<html><body><p>A&amp;B</p><p>x &lt;y&gt; z</p></body></html>", u"A&B\r\nx  z"},
      {u"<html><head><title>T</title></head><body>\r\n <p>one</p>\r\n<p>two</p> </body>",
       u"one\r\ntwo"},
      {u"<body>&#8220;Hi&#8221; &euro;5 &#346;</body>", u"\"Hi\" \u00805 \u008C"},
      {u"<body>caf\u00E9</body>", u"caf\u00E9"},
      {u"", u""}};
  for (const auto& [html, text] : cases) EXPECT_EQ(Converted(html), Utf8(text)) << Utf8(html);
}

// The narrowing stops at the first character the code page cannot hold, and has room for two
// bytes a character: three-byte characters that do not fit are left out.
TEST(HtmlToTextTest, NarrowsThroughTheDeviceCodePage) {
  const std::tuple<const char*, std::u16string, std::u16string> cases[] = {
      {"CP1252", u"ab\u4E00cd", u"ab"},
      {"CP932", u"ab\u4E00cd", u"ab\u4E00cd"},
      {"UTF-8", std::u16string(10, u'\u4E00'), std::u16string(8, u'\u4E00')}};
  for (const auto& [codePage, body, text] : cases) {
    ScopedEnv device("MAILSLICE_CODEPAGE", codePage);
    EXPECT_EQ(Converted(u"<body>" + body), Utf8(text)) << codePage;
  }
}

class FixedEngine : public platform::HtmlEngine {
 public:
  explicit FixedEngine(std::optional<std::u16string> text) : text_(std::move(text)) {}
  std::optional<std::u16string> BodyText(std::u16string_view markup) override {
    markup_ = markup;
    return text_;
  }
  std::u16string markup_;

 private:
  std::optional<std::u16string> text_;
};

TEST(HtmlToTextTest, TakesTheEnginesTextAsItComes) {
  const CString html(u"<body>own &amp; reader</body>");
  FixedEngine engine(u" engine &amp; text\r\n");
  EXPECT_EQ(Utf8(ConvertHtmlToText(html, engine).Str()), " engine &amp; text\r\n");
  EXPECT_EQ(engine.markup_, html.Str());

  FixedEngine noBody(u"");
  EXPECT_EQ(Utf8(ConvertHtmlToText(html, noBody).Str()), "");

  FixedEngine noDocument(std::nullopt);
  EXPECT_EQ(Utf8(ConvertHtmlToText(html, noDocument).Str()), "own & reader");
}

TEST(HtmlToTextTest, SurvivesHostilePages) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP1252");
  EXPECT_EQ(Converted(std::u16string(10'000'000, u'<')), "");
  EXPECT_EQ(Converted(u"<body>" + std::u16string(10'000'000, u'<')), "");
  EXPECT_EQ(Converted(u"<body>x" + Repeated(u"<>", 2'000'000)), "x");
  EXPECT_EQ(Converted(u"<body>a<!--" + std::u16string(5'000'000, u'-')), "a");
}

}  // namespace
}  // namespace mailslice::html
