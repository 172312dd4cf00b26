#include "html/html_document.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "html/entity_decoder.h"
#include "html/tag_table.h"
#include "support/test_support.h"

namespace mailslice::html {
namespace {

using mailslice::testing::Repeated;
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

// Entries are prefixes: "unknown" starts with "U", "/link" with "/LI".
TEST(TagTableTest, ClassifiesByCaseFoldedPrefix) {
  for (const char* known : {"p>", "blockquote", "BODYX", "unknown", "/br", "/link", "!doctype x"}) {
    EXPECT_EQ(Classify(known), Markup::kKnownTag) << known;
  }
  for (const char* none : {"h7", "/meta", "/hr", "zz", "<p", "", " p", "!-", "\xE1p", "h\tr"}) {
    EXPECT_EQ(Classify(none), Markup::kNone) << none;
  }
  EXPECT_EQ(Classify("!--x"), Markup::kComment);
}

// The classifier as first written: every table entry compared in turn with the start of the
// word, a-z folded to capitals.
Markup ClassifyEntryByEntry(const std::string& word) {
  if (word.starts_with("!--")) return Markup::kComment;
  for (std::string_view tag : kTagTable) {
    if (tag.empty()) break;
    bool matches = word.size() >= tag.size();
    for (size_t at = 0; matches && at < tag.size(); ++at) {
      char ch = word[at];
      matches = (ch >= 'a' && ch <= 'z' ? ch - 'a' + 'A' : ch) == tag[at];
    }
    if (matches) return Markup::kKnownTag;
  }
  return Markup::kNone;
}

// Every word of up to three bytes from the bytes that matter, then longer random ones.
TEST(TagTableTest, MatchesComparingEveryEntry) {
  const std::string bytes = "aAbBdDhHlLmMoOpPrRsStTuUvVzZ0169/!- <>\t\xE1\xFF";
  std::vector<std::string> words = {""};
  for (size_t length = 0, from = 0; length < 3; ++length) {
    size_t to = words.size();
    for (size_t at = from; at < to; ++at) {
      for (char ch : bytes) words.push_back(words[at] + ch);
    }
    from = to;
  }
  std::mt19937 random(1776);
  for (int round = 0; round < 20'000; ++round) {
    std::string word(kTagTable[random() % kTagTableEntries]);
    for (char& ch : word) {
      if (random() % 2) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
      if (random() % 8 == 0) ch = bytes[random() % bytes.size()];
    }
    words.push_back(word.substr(0, random() % (word.size() + 1)) + bytes[random() % bytes.size()]);
  }
  for (const std::string& word : words)
    ASSERT_EQ(Classify(word.c_str()), ClassifyEntryByEntry(word)) << word;
}

TEST(HtmlDocumentTest, BuildsTheFlatElementList) {
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"<p>Hello</p>", {"p", "TEXT_DATA[TEXT=Hello]", "/p"}},
      // One-letter tags make "< b" a tag.
      {"a < b <br>", {"TEXT_DATA[TEXT=a ]", "b", "br"}},
      {"a < 3 x<<y <zz", {"TEXT_DATA[TEXT=a < 3 x<<y <zz]"}},
      {"  hello  <p>", {"TEXT_DATA[TEXT=hello  ]", "p"}},
      {"> >x &amp; y", {"TEXT_DATA[TEXT=x &amp; y]"}},
      {"<!---->after", {"TEXT_DATA[TEXT=after]"}},
      {"a<!--c-- ->-->b", {"TEXT_DATA[TEXT=a]", "COMMENT_DATA[TEXT=c-- ->]", "TEXT_DATA[TEXT=b]"}},
      {"<a href='x>y'>", {"a[href=x]", "TEXT_DATA[TEXT=y'>]"}},
      {"<td\tclass=c>", {"td\tclass=c"}},  // only a space ends the name
      {"<font face=\"Arial Black\" size=2 color = 'red' nowrap>",
       {"font[face=Arial Black][size=2][color=red][nowrap]"}},
      {"<p a=\"\" b= >", {"p[a][b]"}},
      {"<p a\nb=1>", {"p[a\nb=1]"}},
      {"<p x <zz>", {"p[x=zz]"}},
      {"<p x<zz>", {"p[x<zz]"}},
      {"<p class=x<b>y", {"p[class=x]", "b", "TEXT_DATA[TEXT=y]"}},
      {"<p title=\"a<b\">", {"p[title=a]", "b\""}},
      {"<<p>", {"", "p"}},
      {"<p =x>", {"p", "TEXT_DATA[TEXT==x>]"}},
      {"<p class=", {"p[class]"}},
      {"<p class='x", {"p[class=x]"}},
      {"<zz a=1>text", {"zz[a=1]", "TEXT_DATA[TEXT=text]"}},
      {"<!DOCTYPE html><html>", {"!DOCTYPE[html]", "html"}},
      {"x <", {"TEXT_DATA[TEXT=x <]"}},
  };
  for (const auto& [html, elements] : cases) EXPECT_EQ(ParseAndDescribe(html), elements) << html;
}

TEST(HtmlDocumentTest, StopsAtByte255AndGivesUpTagNamesOf64Characters) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(ParseAndDescribe("<p>\xFF<b>x"), Lines{"p"});  // at the start of an item only
  EXPECT_EQ(ParseAndDescribe("a\xFF<b>"), (Lines{"TEXT_DATA[TEXT=a\xFF]", "b"}));
  const std::string name63(63, 'n'), name64(64, 'n');
  EXPECT_EQ(ParseAndDescribe("<" + name63 + " a=1>"), Lines{name63 + "[a=1]"});
  EXPECT_EQ(ParseAndDescribe("<" + name64 + " rest>"), Lines{"TEXT_DATA[TEXT=rest>]"});
  EXPECT_EQ(ParseAndDescribe("<" + name64), Lines{});
  // A stray "<" counts toward the length; one that opens markup ends the name.
  EXPECT_EQ(ParseAndDescribe("<" + name63 + "<zz>"), Lines{"TEXT_DATA[TEXT=zz>]"});
  EXPECT_EQ(ParseAndDescribe("<" + name63.substr(1) + "<p>"), (Lines{name63.substr(1), "p"}));
  HtmlElement element;  // the name's fixed room refuses a longer one outright
  EXPECT_TRUE(element.SetName(name64));
  EXPECT_FALSE(element.SetName(name64 + "x"));
  EXPECT_EQ(element.name(), name64);
  HtmlDocument document;
  EXPECT_EQ(document.Parse(nullptr), 0);
  EXPECT_EQ(document.first(), nullptr);
}

TEST(HtmlDocumentTest, SurvivesHostilePages) {
  using Lines = std::vector<std::string>;
  // An unterminated comment swallows the rest of the page.
  EXPECT_EQ(ParseAndDescribe("<body>a<!-- never closed <p>b"),
            (Lines{"body", "TEXT_DATA[TEXT=a]"}));
  // Ten megabytes of "<": each "<" with the 64 after it is a tag name given up; the ten left
  // at the end make one tag named by the last nine.
  EXPECT_EQ(ParseAndDescribe(std::string(10'000'000, '<')), Lines{"<<<<<<<<<"});
  EXPECT_EQ(ParseAndDescribe("a<" + std::string(1'000'000, '\t') + "zz").size(), 1u);
  constexpr size_t kMillion = 1'000'000;
  EXPECT_EQ(ParseAndDescribe(Repeated("<!--c-->", kMillion)).size(), kMillion);
  // Two million elements, torn down without recursion; a million attributes on one element.
  std::string nested = Repeated("<div>", kMillion) + "x" + Repeated("</div>", kMillion);
  EXPECT_EQ(ParseAndDescribe(nested).size(), 2 * kMillion + 1);
  EXPECT_EQ(ParseAndDescribe("<p" + Repeated(" a", kMillion) + ">").at(0).size(), 1 + 3 * kMillion);
}

TEST(HtmlDocumentTest, CollectsTheTextOfTheLowerCaseBody) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP1252");
  const std::pair<std::string, std::u16string> cases[] = {
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
  for (const auto& [html, text] : cases) {
    HtmlDocument document;
    document.Parse(html.c_str());
    EXPECT_EQ(Utf8(document.CollectBodyText().Str()), Utf8(text)) << html;
  }
}

// Reading the body text straight from the page gives what the element list gives, on pages
// built from the pieces where the reader has its quirks.
TEST(HtmlDocumentTest, ReadingTheBodyTextDirectlyMatchesTheElementList) {
  const std::string pieces[] = {
      "<body>", "</body>", "<BODY>", "<body bgcolor=red TEXT=navy>", "<p class=x>", " text ",
      "<td\tclass='a>b'>", "<!-- note -->", "<!---->", "<script>// hidden</script>", "a < 3",
      "x<<y", "<br />", "&amp; &lt;", "<" + std::string(70, 'q') + ">", "<>", "\xFF",
      "<img TEXT src=\"i.png\">", "<font TEXTx='caf\xE9'>", "<p =v>", "<a href=x<b>", "\r\n", "  ",
      "<!-- open", "<body/>", "<unknown tag>", "\xE9t\xE9",
      // Values and names longer than the reader's search blocks.
      "<td style=\"font-family:Helvetica,Arial,sans-serif;x<y\" TEXT='a "
      "long line of text that runs on < and on'>",
      "<a href=https://news.example.com/?utm_source=newsletter&amp;u=1>",
      "<font TEXTlong-attribute-name-that-runs-past-a-block=v>",
      // Malformed markup: unclosed tags and quotes, names cut by "<", references cut short.
      "<p", "<b class=\"x", "<td\t", "< /p >", "<div<p>", "<" + std::string(63, 'v') + "<p>",
      "<" + std::string(64, 'w'), "<body", "</bod", "&am", "p;", "&#3", "8;", "&l", "t;", "<br /",
      ">", "<!", "-->", "--", "<!-", "'", "\"", "=", "<x=y>", "\x85/"};
  std::mt19937 random(515);
  for (int round = 0; round < 4000; ++round) {
    std::string page;
    for (int k = static_cast<int>(random() % 30); k > 0; --k) {
      page += pieces[random() % std::size(pieces)];
    }
    HtmlDocument document;
    document.Parse(page.c_str());
    CString collected = document.CollectBodyText();
    ASSERT_EQ(HtmlDocument::ReadBodyText(page.c_str()), collected) << page;
    std::u16string decoded = u"left over";
    HtmlDocument::ReadDecodedBodyTextInto(page.c_str(), decoded);
    ASSERT_EQ(CString(std::move(decoded)), HtmlEntityDecoder().Decode(collected)) << page;
  }
}

// On the single-byte device pages the text is gathered as bytes and widened once; the same page
// under another of its names is read run by run through iconv. Both read every page alike:
// bytes beyond ASCII, white space of every kind at the ends of runs, runs of "//".
TEST(HtmlDocumentTest, GatheringBytesReadsAsWideningEachRun) {
  const std::string pieces[] = {"<body>",
                                "</body>",
                                "<p>",
                                " \t",
                                "\v\f",
                                "\r\n",
                                "//",
                                "/x",
                                "caf\xE9",
                                "\xA0",
                                "\x81\x8D\x90",
                                "\xFE\xFF",
                                "<!-- \xE9 -->",
                                "<font TEXT=' \xE0 '>",
                                "<br TEXT>",
                                "a",
                                "&amp;"};
  const std::pair<const char*, const char*> pages[] = {{"CP1252", "WINDOWS-1252"},
                                                       {"CP1250", "WINDOWS-1250"},
                                                       {"CP1251", "WINDOWS-1251"},
                                                       {"CP1256", "WINDOWS-1256"}};
  std::mt19937 random(616);
  for (int round = 0; round < 1000; ++round) {
    std::string page;
    for (int k = static_cast<int>(random() % 24); k > 0; --k) {
      page += pieces[random() % std::size(pieces)];
    }
    for (auto [fast, other] : pages) {
      CString gathered, perRun;
      {
        ScopedEnv codePage("MAILSLICE_CODEPAGE", fast);
        gathered = HtmlDocument::ReadBodyText(page.c_str());
      }
      {
        ScopedEnv codePage("MAILSLICE_CODEPAGE", other);
        perRun = HtmlDocument::ReadBodyText(page.c_str());
      }
      ASSERT_EQ(gathered, perRun) << fast << ": " << page;
    }
  }
}

}  // namespace
}  // namespace mailslice::html
