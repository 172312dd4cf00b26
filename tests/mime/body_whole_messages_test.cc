// Whole messages as mail programs write them, read through the export the reader uses.
#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <cstdlib>
#include <string>

#include "platform/code_page.h"
#include "support/test_support.h"

namespace {

using mailslice::testing::ScopedEnv;

CString ReadingBody(const std::string& message) {
  int alternative = 0;
  return GetReadingBody(message.c_str(), &alternative, u"", 0, 0, 0);
}

TEST(WholeMessageBodyTest, Base64IsoJapaneseUnderAJapaneseDevice) {
  ScopedEnv language("MAILSLICE_LANGUAGE", "81");
  ScopedEnv codePage("MAILSLICE_CODEPAGE", std::nullopt);
  // "会議は明日です。" in ISO-2022-JP, then Base64 in a 76-column line.
  std::string jis = mailslice::platform::WideToMultiByte(50220, u"会議は明日です。");
  char* encoded = EncodeToChar(reinterpret_cast<const unsigned char*>(jis.data()),
                               static_cast<int>(jis.size()));
  std::string message =
      "MIME-Version: 1.0\r\nContent-Type: text/plain; charset=\"ISO-2022-JP\"\r\n"
      "Content-Transfer-Encoding: base64\r\n\r\n" +
      std::string(encoded) + "\r\n";
  std::free(encoded);
  EXPECT_EQ(ReadingBody(message), u"会議は明日です。");
}

TEST(WholeMessageBodyTest, QuotedPrintableUtf8WithSoftBreaks) {
  std::string message =
      "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable\r\n"
      "\r\nCaf=C3=A9 cr=C3=A8me, a long line that was =\r\nsoftly broken.\r\n";
  EXPECT_EQ(ReadingBody(message), u"Café crème, a long line that was softly broken.\r\n");
}

TEST(WholeMessageBodyTest, DigestOfTwoMessages) {
  std::string message =
      "Content-Type: multipart/mixed; boundary=\"O\"\r\n\r\n"
      "--O\r\nContent-Type: text/plain\r\n\r\nToday's digest\r\n"
      "--O\r\nContent-Type: multipart/digest; boundary=\"D\"\r\n\r\n"
      "--D\r\nContent-Type: text/plain\r\n\r\nfirst post\r\n"
      "--D\r\nContent-Type: text/plain\r\n\r\nsecond post\r\n"
      "--D--\r\n--O--\r\n";
  CString body = ReadingBody(message);
  EXPECT_EQ(body.Find(u"Today's digest"), 0);
  EXPECT_GT(body.Find(u"first post"), 0);
  EXPECT_GT(body.Find(u"second post"), body.Find(u"first post"));
}

}  // namespace
