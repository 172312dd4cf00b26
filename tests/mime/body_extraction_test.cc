#include "mime/body_extraction.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <random>
#include <string>

#include "support/test_support.h"

namespace mailslice::mime {
namespace {

using testing::Repeated;
using testing::Taken;

std::string Mixed(const std::string& boundary, const std::string& parts,
                  const std::string& type = "multipart/mixed") {
  return "Content-Type: " + type + "; boundary=\"" + boundary + "\"\r\n\r\n" + parts + "--" +
         boundary + "--\r\n";
}

std::string Part(const std::string& boundary, const std::string& header, const std::string& body) {
  return "--" + boundary + "\r\n" + header + "\r\n\r\n" + body + "\r\n";
}

// A part of the given content type, behind the delimiter of boundary "B".
std::string Typed(const std::string& type, const std::string& body) {
  return Part("B", "Content-Type: " + type, body);
}

CString Read(const std::string& message, int* alternative = nullptr) {
  return GetReadingBody(WalkedText(message.c_str()), alternative, HtmlArguments{});
}

const std::string kHtml = "<html><body><p>Hello &amp; welcome</p></body></html>";

TEST(BodyExtractionTest, HtmlAlternativeReplacesThePlainTextExceptFromAppleMail) {
  std::string parts = Typed("text/plain", "Hello plain") + Typed("text/html", kHtml);
  int alternative = -1;
  EXPECT_EQ(Read(Mixed("B", parts, "multipart/alternative"), &alternative), u"Hello & welcome");
  EXPECT_EQ(alternative, 0);  // two parts: the flag is cleared
  std::string apple = "Apple-Mail=_1F2E";
  std::string appleParts = Part(apple, "Content-Type: text/plain", "Hello plain") +
                           Part(apple, "Content-Type: text/html", kHtml);
  EXPECT_EQ(Read(Mixed(apple, appleParts, "multipart/alternative")),
            u"Hello plain\r\n\r\nHello & welcome");
  // Of three alternatives the first is taken and the second skipped.
  EXPECT_EQ(Read(Mixed("B",
                       Typed("text/plain", "first") + Typed("text/plain", "second") +
                           Typed("text/plain", "third"),
                       "multipart/alternative")),
            u"first\r\n\r\nthird");
}

TEST(BodyExtractionTest, TextPartsJoinAndOthersStayOut) {
  std::string parts =
      Typed("text/plain", "one") + Typed("image/gif", "GIF89a") + Typed("text/plain", "two") +
      Typed("audio/wav", "RIFF") + Typed("application/pdf", "%PDF-1.4") +
      Typed("text/plain\r\nContent-Disposition: attachment; filename=\"notes.txt\"", "notes") +
      Typed("text/plain", "three");
  EXPECT_EQ(Read(Mixed("B", parts)), u"one\r\n\r\ntwo\r\n\r\nthree");
  // Without its closing delimiter the message is repaired on a copy.
  std::string open = "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n" +
                     Typed("text/plain", "one") + Typed("text/plain", "two");
  std::string before = open;
  EXPECT_EQ(Read(open), u"one\r\n\r\ntwo");
  EXPECT_EQ(open, before);
  // HTML related to its inline images.
  std::string related = Part("R", "Content-Type: text/html", kHtml) +
                        Part("R", "Content-Type: image/jpeg\r\nContent-ID: <i1>", "/9j/4AAQ");
  EXPECT_EQ(Read(Mixed("B", Typed("multipart/related; boundary=\"R\"", related + "--R--"))),
            u"Hello & welcome");
}

TEST(BodyExtractionTest, EmbeddedMessagesAreIntroducedByMessage1153) {
  std::string forwarded =
      Typed("message/rfc822", "Subject: old\r\nContent-Type: text/plain\r\n\r\nold text");
  EXPECT_EQ(Read(Mixed("B", Typed("text/plain", "see below") + forwarded)),
            u"see below\r\n\r\n----- Forwarded Message -----\r\nold text\r\n");
  std::string nested =
      Typed("message/rfc822", Mixed("N", Part("N", "Content-Type: text/plain", "inner")));
  EXPECT_EQ(Read(Mixed("B", nested)), u"----- Forwarded Message -----\r\ninner");
}

TEST(BodyExtractionTest, SinglePartBodies) {
  EXPECT_EQ(Read("Content-Type: text/html\r\n\r\n" + kHtml), u"Hello & welcome");
  EXPECT_EQ(Read("Subject: x\r\n\r\n<!DOCTYPE html>" + kHtml), u"Hello & welcome");
  EXPECT_EQ(Read("Subject: x\r\n\r\n<!doctype html><p>x</p>"), u"<!doctype html><p>x</p>");
  EXPECT_EQ(Read("Content-Type: application/octet-stream\r\n\r\nbinary"), u"");
  EXPECT_EQ(Read("Content-Type: text/plain\n\nLF only\nlines\n"), u"LF only\nlines\n");
  EXPECT_EQ(Read("no empty line at all"), u"");
}

TEST(BodyPiecesTest, SinglePartFirstPartAndRemainingBody) {
  // The single-part body keeps the reply the mail fetcher left behind it; a header this short
  // lets the cut land inside the reply.
  EXPECT_EQ(Taken(GetSinglePartBody("Subject: x\r\n\r\ntext\r\n+OK Y")), "text\r\n+OK Y");
  EXPECT_EQ(Taken(GetSinglePartBody("\n\nab+OK Y")), "ab+O");
  EXPECT_EQ(Taken(GetSinglePartBody("no empty line")), std::nullopt);
  // The first body drops its trailing line ends, and is nothing when one character or less.
  EXPECT_EQ(Taken(GetMultiPartFirstBody("--B\r\nX: y\r\n\r\nline one\r\nline two\r\n\r\n\r\n")),
            "line one\r\nline two");
  EXPECT_EQ(Taken(GetMultiPartFirstBody("--B\r\nX: y\r\n\r\nx\r\n")), std::nullopt);
  EXPECT_EQ(Taken(GetMultiPartFirstBody("no empty line\r\n")), std::nullopt);
  EXPECT_EQ(GetRemainBody(u"--BODY--: \r\nhello\r\n--ATTACHMENT--:a.txt"), u"hello");
  EXPECT_EQ(GetRemainBody(u"--BODY--:hello world"), u"hello wor");  // last two characters go
  EXPECT_EQ(GetRemainBody(u"no markers"), u"");
}

// Saving the source needs the body's wide text, which the reading alone can do without: the
// reading is the same either way, on a page that holds the body's letters and on one that
// does not, for a single-part page and for the HTML part of an alternative.
TEST(BodyExtractionTest, HtmlBodiesReadTheSameWhetherTheirSourceIsSavedOrNot) {
  testing::ScratchFolder scratch;
  testing::ScopedEnv temp("MAILSLICE_TEMP", scratch.path().string());
  const std::string source = "<body><p>Caf\xC3\xA9 &amp; cr\xC3\xA8me \xE2\x82\xAC</p> ok</body>";
  const std::string encoded = "<body><p>Caf=C3=A9 &amp; cr=C3=A8me =E2=82=AC</p> o=\r\nk</body>";
  const std::string header =
      "Content-Type: text/html; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable";
  const std::string messages[] = {
      header + "\r\n\r\n" + encoded,
      Mixed("B", Typed("text/plain", "plain") + Part("B", header, "  " + encoded + " \r\n"),
            "multipart/alternative")};
  for (const char* page : {"CP1252", "CP1251", "CP932"}) {
    testing::ScopedEnv codePage("MAILSLICE_CODEPAGE", page);
    for (const std::string& message : messages) {
      std::filesystem::remove(scratch.path() / "saved.html");
      CString read = Read(message);
      CString saved = GetReadingBody(WalkedText(message.c_str()), nullptr,
                                     HtmlArguments{u"saved.html", 1, 0, 0});
      EXPECT_EQ(saved, read) << page;
      EXPECT_FALSE(read.IsEmpty());
      std::optional<std::string> file = testing::Contents((scratch.path() / "saved.html").string());
      ASSERT_TRUE(file.has_value());
      EXPECT_NE(file->find("Caf"), std::string::npos) << page;
    }
  }
}

// Plain parts that an HTML alternative replaces are not read; with the HTML source saved every
// part is read. Both give the same text for messages of every shape: the alternative flag, parts
// whose two content-type readings differ, nested and embedded multiparts, Apple Mail's way.
TEST(BodyExtractionTest, UnreadPlainPartsChangeNothing) {
  testing::ScratchFolder scratch;
  testing::ScopedEnv temp("MAILSLICE_TEMP", scratch.path().string());
  const std::string parts[] = {
      "Content-Type: text/plain\r\n\r\nplain",
      "Content-Type: text/html\r\n\r\n" + kHtml,
      "Content-Type: text/plain\r\nMime-Version: 1.0\r\nContent-Type: text/html\r\n\r\n" + kHtml,
      "Content-Type: text/html\r\nMIME-Version: 1.0\r\nContent-Type: text/plain\r\n\r\nhi",
      "Content-Type: application/pdf\r\n\r\n%PDF",
      "Content-Type: image/gif\r\n\r\nGIF89a",
      "Content-Type: text/plain\r\nContent-Disposition: attachment; filename=a.txt\r\n\r\nx",
      "Content-Type: multipart/alternative; boundary=\"I\"\r\n\r\n--I\r\n"
      "Content-Type: text/plain\r\n\r\ninner\r\n--I\r\nContent-Type: text/html\r\n\r\n"
      "<body>inner html</body>\r\n--I--",
      "Content-Type: message/rfc822\r\n\r\nContent-Type: text/plain\r\n\r\nforwarded",
      "Content-Type: text/plain\r\n\r\n  ",
  };
  std::mt19937 random(31);
  for (int round = 0; round < 400; ++round) {
    std::string boundary = round % 3 == 0 ? "Apple-Mail=_7" : "B";
    std::string body;
    for (size_t count = 1 + random() % 5; count > 0; --count) {
      body += "--" + boundary + "\r\n" + parts[random() % std::size(parts)] + "\r\n";
    }
    std::string message =
        Mixed(boundary, body, round % 2 == 0 ? "multipart/alternative" : "multipart/mixed");
    int alternative = -1, savedAlternative = -2;
    CString read = Read(message, &alternative);
    CString saved = GetReadingBody(WalkedText(message.c_str()), &savedAlternative,
                                   HtmlArguments{u"saved.html", 1, 0, 0});
    ASSERT_EQ(read, saved) << message;
    ASSERT_EQ(alternative, savedAlternative) << message;
  }
}

TEST(BodyExtractionTest, HostileMessagesFinish) {
  std::string nested = "Content-Type: text/plain\r\n\r\ndeep";
  for (int level = 0; level < 100; ++level) {
    std::string boundary = "L" + std::to_string(level);
    nested = Mixed(boundary, Part(boundary, "Content-Type: message/rfc822", nested));
  }
  Read(nested);
  Read("Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n" + Repeated("--B\r\n", 400'000));
  std::string base64 =
      Repeated("QUJDREVGR0hJSktMTU5PUFFSU1RVVldYWVphYmNkZWZnaGlqa2xt\r\n", 170'000);
  EXPECT_EQ(Read("Content-Transfer-Encoding: base64\r\n\r\n" + base64).Left(6), u"ABCDEF");
  Read("Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n--B\r\nContent-Type: text/pl");
}

}  // namespace
}  // namespace mailslice::mime
