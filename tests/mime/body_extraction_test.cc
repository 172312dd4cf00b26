#include "mime/body_extraction.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/test_support.h"

namespace mailslice::mime {
namespace {

using testing::ScopedEnv;

std::string Mixed(const std::string& boundary, const std::string& parts,
                  const std::string& type = "multipart/mixed") {
  return "Content-Type: " + type + "; boundary=\"" + boundary + "\"\r\n\r\n" + parts + "--" +
         boundary + "--\r\n";
}

std::string Part(const std::string& boundary, const std::string& header, const std::string& body) {
  return "--" + boundary + "\r\n" + header + "\r\n\r\n" + body + "\r\n";
}

CString Read(const std::string& message, int* alternative = nullptr) {
  return GetReadingBody(message.c_str(), alternative, HtmlArguments{});
}

const std::string kHtml = "<html><body><p>Hello &amp; welcome</p></body></html>";

TEST(BodyExtractionTest, HtmlAlternativeReplacesThePlainTextExceptFromAppleMail) {
  std::string parts = Part("B", "Content-Type: text/plain", "Hello plain") +
                      Part("B", "Content-Type: text/html", kHtml);
  int alternative = -1;
  EXPECT_EQ(Read(Mixed("B", parts, "multipart/alternative"), &alternative), u"Hello & welcome");
  EXPECT_EQ(alternative, 0);  // two parts: the flag is cleared
  std::string apple = "Apple-Mail=_1F2E";
  std::string appleParts = Part(apple, "Content-Type: text/plain", "Hello plain") +
                           Part(apple, "Content-Type: text/html", kHtml);
  EXPECT_EQ(Read(Mixed(apple, appleParts, "multipart/alternative")),
            u"Hello plain\r\n\r\nHello & welcome");
}

TEST(BodyExtractionTest, MixedPartsJoinAndNonTextPartsStayOut) {
  std::string parts = Part("B", "Content-Type: text/plain", "one") +
                      Part("B", "Content-Type: image/gif", "GIF89a") +
                      Part("B", "Content-Type: text/plain", "two") +
                      Part("B", "Content-Type: audio/wav", "RIFF") +
                      Part("B", "Content-Type: application/pdf", "%PDF-1.4") +
                      Part("B",
                           "Content-Type: text/plain\r\nContent-Disposition: attachment; "
                           "filename=\"notes.txt\"",
                           "attached notes") +
                      Part("B", "Content-Type: text/plain", "three");
  EXPECT_EQ(Read(Mixed("B", parts)), u"one\r\n\r\ntwo\r\n\r\nthree");
}

TEST(BodyExtractionTest, ThreeAlternativesTakeTheFirstAndSkipTheSecond) {
  std::string parts = Part("B", "Content-Type: text/plain", "first") +
                      Part("B", "Content-Type: text/plain", "second") +
                      Part("B", "Content-Type: text/plain", "third");
  EXPECT_EQ(Read(Mixed("B", parts, "multipart/alternative")), u"first\r\n\r\nthird");
}

TEST(BodyExtractionTest, EmbeddedMessagesAreIntroducedByMessage1153) {
  std::string forwarded = Part("B", "Content-Type: message/rfc822",
                               "Subject: old\r\nContent-Type: text/plain\r\n\r\nold text");
  EXPECT_EQ(Read(Mixed("B", Part("B", "Content-Type: text/plain", "see below") + forwarded)),
            u"see below\r\n\r\n----- Forwarded Message -----\r\nold text\r\n");
  std::string nested = Part("B", "Content-Type: message/rfc822",
                            Mixed("N", Part("N", "Content-Type: text/plain", "inner")));
  EXPECT_EQ(Read(Mixed("B", nested)), u"----- Forwarded Message -----\r\ninner");
}

TEST(BodyExtractionTest, RelatedHtmlWithInlineImages) {
  std::string related =
      Mixed("R",
            Part("R", "Content-Type: text/html", kHtml) +
                Part("R", "Content-Type: image/jpeg\r\nContent-ID: <i1>", "/9j/4AAQ"),
            "multipart/related");
  std::string message = Mixed("B", Part("B", "Content-Type: multipart/related; boundary=\"R\"",
                                        related.substr(related.find("--R"))));
  EXPECT_EQ(Read(message), u"Hello & welcome");
}

TEST(BodyExtractionTest, SinglePartBodies) {
  EXPECT_EQ(Read("Content-Type: text/html\r\n\r\n" + kHtml), u"Hello & welcome");
  EXPECT_EQ(Read("Subject: x\r\n\r\n<!DOCTYPE html>" + kHtml), u"Hello & welcome");
  EXPECT_EQ(Read("Subject: x\r\n\r\n<!doctype html><p>x</p>"), u"<!doctype html><p>x</p>");
  EXPECT_EQ(Read("Content-Type: application/octet-stream\r\n\r\nbinary"), u"");
  EXPECT_EQ(Read("Content-Type: text/plain\n\nLF only\nlines\n"), u"LF only\nlines\n");
  EXPECT_EQ(Read("no empty line at all"), u"");
}

TEST(BodyExtractionTest, MissingClosingDelimiterIsRepairedOnACopy) {
  std::string message = "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n" +
                        Part("B", "Content-Type: text/plain", "one") +
                        Part("B", "Content-Type: text/plain", "two");
  std::string before = message;
  EXPECT_EQ(Read(message), u"one\r\n\r\ntwo");
  EXPECT_EQ(message, before);
}

TEST(BodyPiecesTest, SinglePartBodyKeepsTheServerReply) {
  char* body = GetSinglePartBody("Subject: x\r\n\r\ntext\r\n+OK Y");
  ASSERT_NE(body, nullptr);
  EXPECT_STREQ(body, "text\r\n+OK Y");
  std::free(body);
  body = GetSinglePartBody("\n\nab+OK Y");  // a header this short lets the cut land inside
  EXPECT_STREQ(body, "ab+O");
  std::free(body);
  EXPECT_EQ(GetSinglePartBody("no empty line"), nullptr);
}

TEST(BodyPiecesTest, FirstBodyDropsTrailingLineEnds) {
  char* body = GetMultiPartFirstBody("--B\r\nX: y\r\n\r\nline one\r\nline two\r\n\r\n\r\n");
  ASSERT_NE(body, nullptr);
  EXPECT_STREQ(body, "line one\r\nline two");
  std::free(body);
  EXPECT_EQ(GetMultiPartFirstBody("--B\r\nX: y\r\n\r\nx\r\n"), nullptr);  // one character
  EXPECT_EQ(GetMultiPartFirstBody("--B\r\nX: y\r\n\r\n"), nullptr);
  EXPECT_EQ(GetMultiPartFirstBody("no empty line\r\n"), nullptr);
}

TEST(BodyPiecesTest, RemainBodyBetweenTheMarkers) {
  EXPECT_EQ(GetRemainBody(u"--BODY--: \r\nhello\r\n--ATTACHMENT--:a.txt"), u"hello");
  EXPECT_EQ(GetRemainBody(u"--BODY--:hello world"), u"hello wor");  // last two characters go
  EXPECT_EQ(GetRemainBody(u"no markers"), u"");
}

TEST(BodyExtractionTest, HostileMessagesFinish) {
  std::string nested = "Content-Type: text/plain\r\n\r\ndeep";
  for (int level = 0; level < 100; ++level) {
    std::string boundary = "L" + std::to_string(level);
    nested = "Content-Type: multipart/mixed; boundary=\"" + boundary + "\"\r\n\r\n--" + boundary +
             "\r\nContent-Type: message/rfc822\r\n\r\n" + nested + "\r\n--" + boundary + "--\r\n";
  }
  Read(nested);
  std::string delimiters = "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n";
  while (delimiters.size() < 2'000'000) delimiters += "--B\r\n";
  Read(delimiters);
  std::string base64 = "Content-Transfer-Encoding: base64\r\n\r\n";
  while (base64.size() < 9'000'000)
    base64 += "QUJDREVGR0hJSktMTU5PUFFSU1RVVldYWVphYmNkZWZnaGlqa2xt\r\n";
  EXPECT_EQ(Read(base64).Left(6), u"ABCDEF");
  Read("Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n--B\r\nContent-Type: text/pl");
}

}  // namespace
}  // namespace mailslice::mime
