#include "attach/file_name_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/code_page.h"
#include "support/test_support.h"

namespace mailslice::attach {
namespace {

using testing::ScopedEnv;

// Names as mail programs write them, Japanese long names split over RFC 2231 continuations
// among them.
TEST(FileNameReaderTest, ReadsTheSendersName) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP1252");
  const std::pair<std::string, const char16_t*> cases[] = {
      {"attachment; filename=\"a b.txt\"", u"a b.txt"},
      {"attachment; filename=a.txt; size=3", u"a.txt"},
      {"attachment; filename=\"say \\\"hi\\\"; now.txt\"", u"say \"hi\"; now.txt"},
      {"attachment; filename*=utf-8'ja'%E6%97%A5%E6%9C%AC.txt", u"日本.txt"},
      {"x; filename*=iso-8859-1''caf%E9.txt", u"café.txt"},
      {"attachment;\r\n filename*0*=utf-8''%E5%9B%9B%E5%8D%8A%E6%9C%9F%E3%81%AE;\r\n"
       " filename*1*=%E5%A0%B1%E5%91%8A%E6%9B%B8;\r\n filename*2=\".pdf\"",
       u"四半期の報告書.pdf"},
      {"attachment; filename=\"utf-8''%E6%97%A5.txt\"", u"日.txt"},  // the form, plainly spelt
      {"a; filename=\"\xE6\x97\xA5.txt\"", u"日.txt"},               // raw UTF-8 bytes
      {"a; filename=\"caf\xE9.txt\"", u"café.txt"},  // raw bytes in the device code page
      {"attachment; filename=\"long\r\n name.txt\"", u"long name.txt"},
      // Encoded words join without the blank between them, across a fold too.
      {"a; filename=\"=?UTF-8?B?5pel5pys?=\r\n =?UTF-8?Q?=E8=AA=9E?=\"", u"日本語"},
      {"a; filename=\"=?iso-8859-1?Q?caf=E9?= menu.txt\"", u"café menu.txt"},
      {"a; filename=\"=?utf-8?B?abc\"", u"=?utf-8?B?abc"},    // unterminated: stays text
      {"inline\r\n\r\n<html><meta name=\"viewport\">", u""},  // a meta element is no file name
      {"inline\r\n\r\nbody", u""}};
  for (const auto& [disposition, fileName] : cases) {
    std::string part = "Content-Disposition: " + disposition + "\r\n";
    EXPECT_EQ(ReadFileNameParameter(part.c_str()), fileName) << disposition;
  }
  // The name parameter comes before the RFC 2231 forms.
  EXPECT_EQ(ReadFileNameParameter("Content-Type: text/plain; name=\"=?utf-8?B?5pel5pys6Kqe?= "
                                  "=?utf-8?B?LnR4dA==?=\"\r\nContent-Disposition: attachment; "
                                  "filename*=utf-8''x.txt\r\n"),
            u"日本語.txt");
}

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
