#include "mime/header_parameters.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "support/test_support.h"

namespace mailslice::mime {
namespace {

TEST(BoundaryTest, ReadsTheParameterAndItsOffset) {
  const std::tuple<const char*, int, const char16_t*, int> cases[] = {
      {"X; boundary=abc; type=x\r\n", 1, u"abc; type=x", 12},  // unquoted: to the line end
      {"Content-Type: multipart/mixed; boundary=\"abc\"\r\n", 1, u"abc", 41},
      {"BOUNDARY=  zz \nx", 1, u"zz", 9},
      {"boundary =q\r\n", 1, u"q", 10},
      {"Boundary =x\r\n", 0, nullptr, 0},  // a capital with a space is no spelling it knows
      {"boundary=abc", 0, nullptr, 0},     // no line end
      {"boundary=\"abc\r\n", 0, nullptr, 0},
      {"boundary=ab\r\n\"x\"", 1, u"ab", 9},  // a quote on a later line is no quote
      {"boundary=\"\"\r\n", 0, nullptr, 0},
      // A quoted reply line is passed over, unless no reply line follows it.
      {"> Content-Type: m; boundary=\"q\"\r\n> more", 0, nullptr, 0},
      {"> x boundary=\"q\"\r\nmore", 1, u"q", 14},
      {"x\r\nboundary=\"q\"\r\n> more", 1, u"q", 13}};
  for (auto [text, found, expected, expectedOffset] : cases) {
    CString boundary(u"untouched");
    int offset = -7;
    EXPECT_EQ(GetBoundary(text, boundary, &offset), found) << text;
    EXPECT_EQ(boundary, found ? expected : u"untouched") << text;
    EXPECT_EQ(offset, found ? expectedOffset : -7) << text;
  }
  CString boundary;
  EXPECT_EQ(GetBoundary("boundary=\"b\"\r\n", boundary, nullptr), 1);  // the offset is optional
  EXPECT_EQ(boundary, u"b");
}

// The parameter is read behind the first occurrence of the first spelling that occurs at all,
// whatever the spellings and near-spellings around it: checked against searching for each
// spelling in turn. Every line ends in a numbered value, so the value read tells which
// occurrence was taken.
TEST(BoundaryTest, AgreesWithSearchingEachSpellingInTurn) {
  const char* const spellings[] = {"boundary=", "BOUNDARY=", "boundary =", "Boundary="};
  const std::string_view pieces[] = {"boundary=", "BOUNDARY=", "boundary =", "Boundary=", "oundary",
                                     "OUNDARY",   "b",         "B",          "=",         " "};
  std::mt19937 random(31);
  for (int round = 0; round < 4000; ++round) {
    std::string text;
    for (int line = 0; line < 3; ++line) {
      for (size_t count = random() % 6; count > 0; --count) text += pieces[random() % 10];
      text += "v" + std::to_string(line) + "\r\n";
    }
    size_t start = std::string::npos;
    for (const char* spelling : spellings) {
      if (size_t found = text.find(spelling); found != std::string::npos) {
        start = found + std::strlen(spelling);
        break;
      }
    }
    CString boundary;
    int offset = -1;
    int found = GetBoundary(text.c_str(), boundary, &offset);
    ASSERT_EQ(found, start != std::string::npos ? 1 : 0) << text;
    if (found == 0) continue;
    EXPECT_EQ(offset, static_cast<int>(start)) << text;
    CString expected = CString::FromUtf8(text.substr(start, text.find("\r\n", start) - start));
    expected.Trim();
    EXPECT_EQ(boundary, expected) << text;
  }
}

TEST(ContentTypeTest, ReadsTheField) {
  const std::tuple<const char*, int, const char16_t*> cases[] = {
      {"Content-Type: text/plain; charset=x\r\n", 0, u"text/plain"},
      {"Content-type:text/html\r\n", 0, u"text/html"},
      {"Content-Type: a/b\r\nX: c; d\r\n", 1, u"a/b"},  // the whole text ends at the line end
      {"Content-Type: Text/HTML\r\n", 1, u"Text/HTML"},
      // After the version line first, before it as a last resort.
      {"Content-Type: a/a\r\nMIME-Version: 1.0\r\nContent-Type: b/b\r\n", 0, u"b/b"},
      {"Content-Type: a/a\r\nMime-Version: 1.0\r\nX: y\r\n", 0, u"a/a"},
      // An empty field is passed over before Date, and swallows other text.
      {"Content-Type:Date: x\r\nContent-Type: c/c\r\n", 1, u"c/c"},
      {"Content-Type:\r\nSender:;\r\n", 0, u""},
      {"Content-Type:\r\nX-Other: y\r\n", 1, u"X-Other: y"},
      // In a bare-LF message the ";" is looked for first, across line ends, and the later cut
      // only knows CR LF.
      {"Content-Type: text/plain\nX: a; b\n", 0, u"text/plain\nX: a"},
      {"Content-Type: text/plain", 0, u""},
      {"Content-Type:", 1, u""},
      // Only an empty field before Content-Transfer-Encoding: a loop with no way out; the text
      // has no usable content type.
      {"Content-Type:Content-Transfer-Encoding: 7bit\r\nMIME-Version: 1.0\r\n", 0, u""}};
  for (auto [text, wholeText, type] : cases)
    EXPECT_EQ(GetContentType(text, wholeText), type) << text;
}

TEST(CharsetTest, EndRules) {
  const std::pair<const char*, const char16_t*> cases[] = {
      {"Content-Type: text/plain; charset=\"ISO-2022-JP\"\r\n\r\nx", u"ISO-2022-JP"},
      {"Content-Type: text/plain; charset=utf-8 (x)\r\n", u"utf-8"},
      {"Content-Type: text/plain; Charset=utf-8\r\n", u""},
      {"charset='koi8-r'; format=flowed\r\n", u"koi8-r"},
      // A ";" anywhere further on makes the CR LF the end; without one the LF is.
      {"charset=a\r\nb; c\r\n", u"a"},
      {"charset=utf-8", u""},
      {"charset=a b", u"a"},
      {nullptr, u""},
      // Searched after the version line first, then from the start.
      {"charset=a\r\nMime-Version: 1.0\r\ncharset=b\r\n", u"b"}};
  for (auto [text, charset] : cases) EXPECT_EQ(GetCharSet(text), charset) << (text ? text : "");
}

TEST(TransferEncodingTest, FieldsAndDefaults) {
  const std::pair<const char*, const char16_t*> cases[] = {
      {"Content-Transfer-Encoding: Base64\r\n", u"Base64"},
      {"Content-transfer-encoding: quoted-printable\n", u"quoted-printable"},
      {"Content-Transfer-Encoding: x\r\n", u"8bit"},
      {"Subject: none\r\n\r\nbody", u"8bit"},
      {"Content-Transfer-Encoding: base64", u"8bit"},  // no line end
      {nullptr, u""},
      // An unknown word: the next field is read and taken as it is.
      {"Content-Transfer-Encoding: uuencode\r\nContent-Transfer-Encoding: binary\r\n", u"binary"},
      // A field right behind an empty "Content-Type:" before the version line: the search
      // would go round for ever; the default answers.
      {"Content-Type:Content-Transfer-Encoding: base64\r\nMIME-Version: 1.0\r\n", u"8bit"}};
  for (auto [text, encoding] : cases) {
    EXPECT_EQ(GetTransEncode(text), encoding) << (text ? text : "");
  }
  EXPECT_EQ(IsKnownTransferEncoding(u"QUOTED-Printable"), 1);
  EXPECT_EQ(IsKnownTransferEncoding(u"binary"), 0);
}

}  // namespace
}  // namespace mailslice::mime
