#include "html/html_document.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "html/tag_table.h"
#include "support/test_support.h"

namespace mailslice::html {
namespace {

using mailslice::testing::ScopedEnv;
using mailslice::testing::Utf8;

// One line per element: its name, then "[name=value]" or "[name]" per attribute.
std::vector<std::string> Describe(const HtmlDocument& document) {
  std::vector<std::string> lines;
  for (const HtmlElement* element = document.first(); element; element = element->next()) {
    std::string line(element->name());
    for (const HtmlAttribute* attribute = element->first_attribute(); attribute;
         attribute = attribute->next()) {
      line += "[" + std::string(attribute->name());
      if (attribute->value()) line += "=" + *attribute->value();
      line += "]";
    }
    lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> ParseAndDescribe(const std::string& html) {
  HtmlDocument document;
  EXPECT_EQ(document.Parse(html.c_str()), 1);
  std::vector<std::string> lines = Describe(document);
  EXPECT_EQ(document.count(), lines.size());
  return lines;
}

struct ClassifyCase {
  const char* text;
  Markup expected;
};

TEST(TagTableTest, ClassifiesByCaseFoldedPrefix) {
  const ClassifyCase cases[] = {
      {"p>", Markup::kKnownTag},
      {"blockquote", Markup::kKnownTag},
      {"BODYX", Markup::kKnownTag},
      {"unknown", Markup::kKnownTag},  // "U" is a prefix
      {"/br", Markup::kKnownTag},
      {"/link", Markup::kKnownTag},  // "/B", "/LI"
      {"!doctype html", Markup::kKnownTag},
      {"!--x", Markup::kComment},
      {"h7", Markup::kNone},
      {"/meta", Markup::kNone},
      {"/hr", Markup::kNone},
      {"/map", Markup::kNone},
      {"zz", Markup::kNone},
      {"<p", Markup::kNone},
      {"", Markup::kNone},
      {" p", Markup::kNone},
      {"!-", Markup::kNone},
      {"\xE1p", Markup::kNone},
      {"h\tr", Markup::kNone},
      {"ta>ble", Markup::kNone},
  };
  for (const ClassifyCase& c : cases) EXPECT_EQ(Classify(c.text), c.expected) << c.text;
  EXPECT_EQ(kTagTable[kTagTableEntries - 1], "!--");
  EXPECT_EQ(kTagTable[kTagTableEntries], "");
}

struct ParseCase {
  std::string html;
  std::vector<std::string> elements;
};

TEST(HtmlDocumentTest, BuildsTheFlatElementList) {
  const ParseCase cases[] = {
      {"<p>Hello</p>", {"p", "TEXT_DATA[TEXT=Hello]", "/p"}},
      // One-letter tags make "< b" a tag.
      {"a < b <br>", {"TEXT_DATA[TEXT=a ]", "b", "br"}},
      {"a < 3 x<<y <zz", {"TEXT_DATA[TEXT=a < 3 x<<y <zz]"}},
      {"  hello  <p>", {"TEXT_DATA[TEXT=hello  ]", "p"}},
      {"> >x &amp; y", {"TEXT_DATA[TEXT=x &amp; y]"}},
      {"<!-- x -->", {"COMMENT_DATA[TEXT= x ]"}},
      {"<!---->after", {"TEXT_DATA[TEXT=after]"}},
      {"a<!--c-- ->-->b", {"TEXT_DATA[TEXT=a]", "COMMENT_DATA[TEXT=c-- ->]", "TEXT_DATA[TEXT=b]"}},
      {"<a href='x>y'>", {"a[href=x]", "TEXT_DATA[TEXT=y'>]"}},
      {"<td\tclass=c>", {"td\tclass=c"}},
      {"<BR\r>", {"BR\r"}},
      {"<font face=\"Arial Black\" size=2 color = 'red' nowrap>",
       {"font[face=Arial Black][size=2][color=red][nowrap]"}},
      {"<p a=\"\" b= >", {"p[a][b]"}},
      {"<p a\nb=1>", {"p[a\nb=1]"}},
      {"<p x <zz>", {"p[x=zz]"}},
      {"<p x<zz>", {"p[x<zz]"}},
      {"<p class=x<b>y", {"p[class=x]", "b", "TEXT_DATA[TEXT=y]"}},
      {"<p title=\"a<b\">", {"p[title=a]", "b\""}},
      {"<p<b>x", {"p", "b", "TEXT_DATA[TEXT=x]"}},
      {"<<p>", {"", "p"}},
      {"<p =x>", {"p", "TEXT_DATA[TEXT==x>]"}},
      {"<p class", {"p"}},
      {"<p class=", {"p[class]"}},
      {"<p class='x", {"p[class=x]"}},
      {"<zz a=1>text", {"zz[a=1]", "TEXT_DATA[TEXT=text]"}},
      {"<!DOCTYPE html><html>", {"!DOCTYPE[html]", "html"}},
      {"x <", {"TEXT_DATA[TEXT=x <]"}},
  };
  for (const ParseCase& c : cases) EXPECT_EQ(ParseAndDescribe(c.html), c.elements) << c.html;
}

TEST(HtmlDocumentTest, StopsAtByte255AtTheStartOfAnItem) {
  EXPECT_EQ(ParseAndDescribe("<p>\xFF<b>x"), std::vector<std::string>{"p"});
  EXPECT_EQ(ParseAndDescribe("\xFFx"), std::vector<std::string>{});
  // Inside a run of text the byte is just text.
  EXPECT_EQ(ParseAndDescribe("a\xFF<b>"), (std::vector<std::string>{"TEXT_DATA[TEXT=a\xFF]", "b"}));
}

TEST(HtmlDocumentTest, GivesUpTagNamesOf64Characters) {
  const std::string name63(63, 'n');
  const std::string name64(64, 'n');
  EXPECT_EQ(ParseAndDescribe("<" + name63 + " a=1>"), std::vector<std::string>{name63 + "[a=1]"});
  EXPECT_EQ(ParseAndDescribe("<" + name64 + " rest>"),
            std::vector<std::string>{"TEXT_DATA[TEXT=rest>]"});
  EXPECT_EQ(ParseAndDescribe("<" + name64 + "x>"), std::vector<std::string>{"TEXT_DATA[TEXT=x>]"});
  EXPECT_EQ(ParseAndDescribe("<" + name64), std::vector<std::string>{});

  HtmlElement element;
  EXPECT_TRUE(element.SetName(name64));
  EXPECT_FALSE(element.SetName(name64 + "x"));
  EXPECT_FALSE(element.SetName(""));
  EXPECT_EQ(element.name(), name64);
}

TEST(HtmlDocumentTest, RejectsNullText) {
  HtmlDocument document;
  EXPECT_EQ(document.Parse(nullptr), 0);
  EXPECT_EQ(document.count(), 0u);
  EXPECT_EQ(document.Parse(""), 1);
  EXPECT_EQ(document.first(), nullptr);
}

TEST(HtmlDocumentTest, SurvivesHostilePages) {
  // An unterminated comment swallows the rest of the page.
  EXPECT_EQ(ParseAndDescribe("<body>a<!-- never closed <p>b"),
            (std::vector<std::string>{"body", "TEXT_DATA[TEXT=a]"}));
  // Ten megabytes of "<": each "<" with the 64 after it is a tag name given up; the ten left
  // at the end make one tag named by the last nine.
  EXPECT_EQ(ParseAndDescribe(std::string(10'000'000, '<')), std::vector<std::string>{"<<<<<<<<<"});
  // A "<" followed by a long stretch of tabs, then text.
  EXPECT_EQ(ParseAndDescribe("a<" + std::string(1'000'000, '\t') + "zz").size(), 1u);

  constexpr size_t kDepth = 1'000'000;
  std::string comments;
  for (size_t i = 0; i < kDepth; ++i) comments += "<!--c-->";
  EXPECT_EQ(ParseAndDescribe(comments).size(), kDepth);

  std::string nested;
  for (size_t i = 0; i < kDepth; ++i) nested += "<div>";
  nested += "x";
  for (size_t i = 0; i < kDepth; ++i) nested += "</div>";
  {
    HtmlDocument document;
    document.Parse(nested.c_str());
    EXPECT_EQ(document.count(), 2 * kDepth + 1);
  }  // destroying two million elements must not recurse

  std::string manyAttributes = "<p";
  for (size_t i = 0; i < kDepth; ++i) manyAttributes += " a";
  manyAttributes += ">";
  HtmlDocument document;
  document.Parse(manyAttributes.c_str());
  size_t attributes = 0;
  for (auto* a = document.first()->first_attribute(); a; a = a->next()) ++attributes;
  EXPECT_EQ(attributes, kDepth);
}

struct BodyCase {
  std::string html;
  std::u16string text;
};

TEST(HtmlDocumentTest, CollectsTheTextOfTheLowerCaseBody) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP1252");
  const BodyCase cases[] = {
      {"<body>Hi</body>", u"Hi\r\n"},
      {"<BODY>Hi</BODY>", u""},
      {"a<head><title>t</title></head><body>b</body>c", u"b\r\n"},
      {"<body>  x  <p> // note <p>y</body>", u"x\r\ny\r\n"},
      {"<body>/ z</body>", u"/ z\r\n"},
      {"<body><!-- c -->x</body>", u"c\r\nx\r\n"},
      {"<body TEXT=red text=blue TEXTCOLOR=\"g\">x", u"red\r\ng\r\nx\r\n"},
      {"<body TEXT>x", u"x\r\n"},
      {"<bodyx>in</bodyguard>out", u"in\r\n"},
      {"<body>caf\xE9 &amp;</body>", u"caf\u00E9 &amp;\r\n"},
  };
  for (const BodyCase& c : cases) {
    HtmlDocument document;
    document.Parse(c.html.c_str());
    EXPECT_EQ(Utf8(document.CollectBodyText().Str()), Utf8(c.text)) << c.html;
  }
}

}  // namespace
}  // namespace mailslice::html
