#include "mime/header_parameters.h"

#include <gtest/gtest.h>

#include <string>

#include "support/test_support.h"

namespace mailslice::mime {
namespace {

struct BoundaryCase {
  const char* name;
  const char* text;
  int found;
  const char16_t* boundary;
  int offset;
};

class BoundaryTest : public ::testing::TestWithParam<BoundaryCase> {};

TEST_P(BoundaryTest, ReadsTheParameter) {
  CString boundary(u"untouched");
  int offset = -7;
  EXPECT_EQ(GetBoundary(GetParam().text, boundary, &offset), GetParam().found);
  EXPECT_EQ(boundary, GetParam().boundary);
  EXPECT_EQ(offset, GetParam().offset);
}

INSTANTIATE_TEST_SUITE_P(
    Spellings, BoundaryTest,
    ::testing::Values(
        BoundaryCase{"UnquotedRunsToTheLineEnd", "X; boundary=abc; type=x\r\n", 1, u"abc; type=x",
                     12},
        BoundaryCase{"Quoted", "Content-Type: multipart/mixed; boundary=\"abc\"\r\n", 1, u"abc",
                     41},
        BoundaryCase{"UpperCase", "BOUNDARY=  zz \nx", 1, u"zz", 9},
        BoundaryCase{"SpaceBeforeEquals", "boundary =q\r\n", 1, u"q", 10},
        BoundaryCase{"CapitalWithSpaceIsNotKnown", "Boundary =x\r\n", 0, u"untouched", -7},
        BoundaryCase{"NoLineEnd", "boundary=abc", 0, u"untouched", -7},
        BoundaryCase{"UnclosedQuote", "boundary=\"abc\r\n", 0, u"untouched", -7},
        BoundaryCase{"QuoteOnALaterLineIsNotAQuote", "boundary=ab\r\n\"x\"", 1, u"ab", 9},
        BoundaryCase{"EmptyQuoted", "boundary=\"\"\r\n", 0, u"untouched", -7},
        BoundaryCase{"QuotedReplyLine", "> Content-Type: m; boundary=\"q\"\r\n> more", 0,
                     u"untouched", -7},
        BoundaryCase{"QuotedLineWithoutReplyAfter", "> x boundary=\"q\"\r\nmore", 1, u"q", 14},
        BoundaryCase{"ReplyAfterButNotOnItsLine", "x\r\nboundary=\"q\"\r\n> more", 1, u"q", 13}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(BoundaryTest, OffsetIsOptional) {
  CString boundary;
  EXPECT_EQ(GetBoundary("boundary=\"b\"\r\n", boundary, nullptr), 1);
  EXPECT_EQ(boundary, u"b");
}

struct ContentTypeCase {
  const char* name;
  const char* text;
  int wholeText;
  const char16_t* contentType;
};

class ContentTypeTest : public ::testing::TestWithParam<ContentTypeCase> {};

TEST_P(ContentTypeTest, ReadsTheField) {
  EXPECT_EQ(GetContentType(GetParam().text, GetParam().wholeText), GetParam().contentType);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, ContentTypeTest,
    ::testing::Values(
        ContentTypeCase{"CutAtSemicolon", "Content-Type: text/plain; charset=x\r\n", 0,
                        u"text/plain"},
        ContentTypeCase{"LowerCaseSpelling", "Content-type:text/html\r\n", 0, u"text/html"},
        ContentTypeCase{"WholeTextEndsAtLineEnd", "Content-Type: a/b\r\nX: c; d\r\n", 1, u"a/b"},
        ContentTypeCase{"LetterCaseKept", "Content-Type: Text/HTML\r\n", 1, u"Text/HTML"},
        ContentTypeCase{"AfterTheMimeVersionLine",
                        "Content-Type: a/a\r\nMIME-Version: 1.0\r\nContent-Type: b/b\r\n", 0,
                        u"b/b"},
        ContentTypeCase{"BeforeTheVersionLineAsLastResort",
                        "Content-Type: a/a\r\nMime-Version: 1.0\r\nX: y\r\n", 0, u"a/a"},
        ContentTypeCase{"EmptyFieldBeforeDateIsPassedOver",
                        "Content-Type:Date: x\r\nContent-Type: c/c\r\n", 1, u"c/c"},
        ContentTypeCase{"EmptyFieldSwallowsSender", "Content-Type:\r\nSender:;\r\n", 0, u""},
        ContentTypeCase{"EmptyFieldSwallowsOtherText", "Content-Type:\r\nX-Other: y\r\n", 1,
                        u"X-Other: y"},
        // In a bare-LF message the ";" is looked for first, across line ends, and the later cut
        // only knows CR LF.
        ContentTypeCase{"LfMessageRunsToTheNextSemicolon", "Content-Type: text/plain\nX: a; b\n", 0,
                        u"text/plain\nX: a"},
        ContentTypeCase{"NoEnd", "Content-Type: text/plain", 0, u""},
        ContentTypeCase{"FieldAtTheVeryEnd", "Content-Type:", 1, u""},
        // Only an empty field before Content-Transfer-Encoding: a loop with no way out; the
        // text has no usable content type.
        ContentTypeCase{"OnlyFieldRunsIntoTransferEncoding",
                        "Content-Type:Content-Transfer-Encoding: 7bit\r\nMIME-Version: 1.0\r\n", 0,
                        u""}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(CharsetTest, EndRules) {
  EXPECT_EQ(GetCharSet("Content-Type: text/plain; charset=\"ISO-2022-JP\"\r\n\r\nx"),
            u"ISO-2022-JP");
  EXPECT_EQ(GetCharSet("Content-Type: text/plain; charset=utf-8 (x)\r\n"), u"utf-8");
  EXPECT_EQ(GetCharSet("Content-Type: text/plain; Charset=utf-8\r\n"), u"");
  EXPECT_EQ(GetCharSet("charset='koi8-r'; format=flowed\r\n"), u"koi8-r");
  // A ";" anywhere further on makes the CR LF the end; without one the LF is.
  EXPECT_EQ(GetCharSet("charset=a\r\nb; c\r\n"), u"a");
  EXPECT_EQ(GetCharSet("charset=utf-8"), u"");
  EXPECT_EQ(GetCharSet("charset=a b"), u"a");
  EXPECT_EQ(GetCharSet(nullptr), u"");
  // Searched after the version line first, then from the start.
  EXPECT_EQ(GetCharSet("charset=a\r\nMime-Version: 1.0\r\ncharset=b\r\n"), u"b");
}

TEST(TransferEncodingTest, FieldsAndDefaults) {
  EXPECT_EQ(GetTransEncode("Content-Transfer-Encoding: Base64\r\n"), u"Base64");
  EXPECT_EQ(GetTransEncode("Content-transfer-encoding: quoted-printable\n"), u"quoted-printable");
  EXPECT_EQ(GetTransEncode("Content-Transfer-Encoding: x\r\n"), u"8bit");
  EXPECT_EQ(GetTransEncode("Subject: none\r\n\r\nbody"), u"8bit");
  EXPECT_EQ(GetTransEncode("Content-Transfer-Encoding: base64"), u"8bit");  // no line end
  EXPECT_EQ(GetTransEncode(nullptr), u"");
  // An unknown word: the next field is read and taken as it is.
  EXPECT_EQ(GetTransEncode("Content-Transfer-Encoding: uuencode\r\n"
                           "Content-Transfer-Encoding: base64\r\n"),
            u"base64");
  EXPECT_EQ(GetTransEncode("Content-Transfer-Encoding: uuencode\r\n"
                           "Content-Transfer-Encoding: binary\r\n"),
            u"binary");
  // A field right behind an empty "Content-Type:" before the version line: the search would go
  // round for ever; the default answers.
  EXPECT_EQ(GetTransEncode("Content-Type:Content-Transfer-Encoding: base64\r\n"
                           "MIME-Version: 1.0\r\n"),
            u"8bit");
  EXPECT_EQ(IsKnownTransferEncoding(u"QUOTED-Printable"), 1);
  EXPECT_EQ(IsKnownTransferEncoding(u"binary"), 0);
}

}  // namespace
}  // namespace mailslice::mime
