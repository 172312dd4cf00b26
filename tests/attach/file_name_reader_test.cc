#include "attach/file_name_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/code_page.h"
#include "support/test_support.h"

namespace mailslice::attach {
namespace {

using testing::ScopedEnv;

struct NameCase {
  const char* name;
  std::string part;
  const char16_t* fileName;
};

class FileNameReaderTest : public ::testing::TestWithParam<NameCase> {};

TEST_P(FileNameReaderTest, ReadsTheSendersName) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP1252");
  EXPECT_EQ(ReadFileNameParameter(GetParam().part.c_str()), GetParam().fileName);
}

// Long Japanese names as mail programs split them over RFC 2231 continuations.
std::string JapaneseContinuations() {
  return "Content-Disposition: attachment;\r\n"
         " filename*0*=utf-8''%E5%9B%9B%E5%8D%8A%E6%9C%9F%E3%81%AE;\r\n"
         " filename*1*=%E5%A0%B1%E5%91%8A%E6%9B%B8;\r\n"
         " filename*2=\".pdf\"\r\n\r\nbody";
}

INSTANTIATE_TEST_SUITE_P(
    MailProgramHabits, FileNameReaderTest,
    ::testing::Values(
        NameCase{"Quoted", "Content-Disposition: attachment; filename=\"a b.txt\"\r\n", u"a b.txt"},
        NameCase{"Unquoted", "Content-Disposition: attachment; filename=a.txt; size=3\r\n",
                 u"a.txt"},
        NameCase{"QuotesAndSemicolonsInside",
                 "Content-Disposition: attachment; filename=\"say \\\"hi\\\"; now.txt\"\r\n",
                 u"say \"hi\"; now.txt"},
        NameCase{"NameParameterBeforeRfc2231",
                 "Content-Type: text/plain; name=\"n.txt\"\r\nContent-Disposition: attachment; "
                 "filename*=utf-8''x.txt\r\n",
                 u"n.txt"},
        NameCase{"Rfc2231WithCharset",
                 "Content-Disposition: attachment; filename*=utf-8'ja'%E6%97%A5%E6%9C%AC.txt\r\n",
                 u"日本.txt"},
        NameCase{"Rfc2231Latin1", "Content-Disposition: x; filename*=iso-8859-1''caf%E9.txt\r\n",
                 u"café.txt"},
        NameCase{"Continuations", JapaneseContinuations(), u"四半期の報告書.pdf"},
        NameCase{"Rfc2231FormAfterPlainSpelling",
                 "Content-Disposition: attachment; filename=\"utf-8''%E6%97%A5.txt\"\r\n",
                 u"日.txt"},
        NameCase{"RawUtf8Bytes", "Content-Disposition: a; filename=\"\xE6\x97\xA5.txt\"\r\n",
                 u"日.txt"},
        NameCase{"RawDeviceCodePageBytes", "Content-Disposition: a; filename=\"caf\xE9.txt\"\r\n",
                 u"café.txt"},
        NameCase{"FoldedQuotedName",
                 "Content-Disposition: attachment; filename=\"long\r\n name.txt\"\r\n",
                 u"long name.txt"},
        NameCase{
            "EncodedWordsJoinWithoutTheBlankBetween",
            "Content-Type: text/plain; name=\"=?utf-8?B?5pel5pys6Kqe?= =?utf-8?B?LnR4dA==?=\"\r\n",
            u"日本語.txt"},
        NameCase{"FoldedEncodedWords",
                 "Content-Disposition: a; filename=\"=?UTF-8?B?5pel5pys?=\r\n "
                 "=?UTF-8?Q?=E8=AA=9E?=\"\r\n",
                 u"日本語"},
        NameCase{"Latin1QuotedPrintableWord",
                 "Content-Disposition: a; filename=\"=?iso-8859-1?Q?caf=E9?= menu.txt\"\r\n",
                 u"café menu.txt"},
        NameCase{"UnterminatedWordStaysText",
                 "Content-Disposition: a; filename=\"=?utf-8?B?abc\"\r\n", u"=?utf-8?B?abc"},
        NameCase{"MetaElementIsNoFileName",
                 "Content-Disposition: inline\r\n\r\n<html><meta name=\"viewport\">", u""},
        NameCase{"NoName", "Content-Disposition: inline\r\n\r\nbody", u""}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(FileNameReaderTest, JapaneseWordsUnderAJapaneseDevice) {
  ScopedEnv language("MAILSLICE_LANGUAGE", "81");
  ScopedEnv codePage("MAILSLICE_CODEPAGE", std::nullopt);
  EXPECT_EQ(ReadFileNameParameter("Content-Disposition: attachment;\r\n filename=\""
                                  "=?ISO-2022-JP?B?GyRCRnxLXDhsGyhC?=.pdf\"\r\n"),
            u"日本語.pdf");
}

TEST(ListedFileNameTest, CollapsesDoubledExtensionsAndMakesNamesSafe) {
  EXPECT_EQ(ListedFileName(u"report.pdf.pdf", u""), u"report.pdf");
  EXPECT_EQ(ListedFileName(u"my.report.pdf.pdf", u""), u"my.report.pdf");
  EXPECT_EQ(ListedFileName(u"report.pdf.PDF", u""), u"report.pdf.PDF");
  EXPECT_EQ(ListedFileName(u"archive.tar.gz", u""), u"archive.tar.gz");
  EXPECT_EQ(ListedFileName(u"../../etc/passwd", u""), u".._.._etc_passwd");
  EXPECT_EQ(ListedFileName(u"C:\\temp\\a.txt", u""), u"C:_temp_a.txt");
  EXPECT_EQ(ListedFileName(u"a\tb\x01.txt", u""), u"ab.txt");
  EXPECT_EQ(ListedFileName(u"..", u"application/pdf"), u"noname.pdf");
  EXPECT_EQ(ListedFileName(u"", u"IMAGE/JPEG"), u"noname.jpg");
  EXPECT_EQ(ListedFileName(u"  ", u"application/x-unknown"), u"noname");
}

}  // namespace
}  // namespace mailslice::attach
