// The quick readings of a part header against the plain ones they stand in for: marking a part
// as an attachment without widening a content type it does not keep, reading a file name
// parameter in runs, and making a listed name safe without building a string per step.
#include <gtest/gtest.h>
#include <mailslice/part_record.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "attach/attachment_list.h"
#include "attach/attachment_listing.h"
#include "attach/disposition.h"
#include "attach/embedded_message_name.h"
#include "attach/file_name_reader.h"
#include "mime/attachment_markers.h"
#include "mime/content_type_rules.h"
#include "mime/header_parameters.h"
#include "platform/code_page.h"
#include "platform/letter_case.h"
#include "support/test_support.h"

namespace mailslice::attach {
namespace {

using testing::ScopedEnv;

std::string Pick(std::mt19937& random, const std::vector<std::string>& pool, int most) {
  std::string text;
  int count = std::uniform_int_distribution<int>(0, most)(random);
  for (int i = 0; i < count; ++i) {
    text += pool[std::uniform_int_distribution<size_t>(0, pool.size() - 1)(random)];
  }
  return text;
}

// The marking of one part as it was done: the content type read and widened first, for every
// part.
struct PlainMarks {
  char kind = 0;
  CString contentType, charset, transferEncoding, disposition, fileName;
};

PlainMarks PlainMarking(const char* part) {
  PlainMarks marks;
  CString contentType = mime::GetContentType(part, 0);
  if (platform::EqualsNoCase(contentType.Str(), u"Message/RFC822")) {
    marks = {'A',
             contentType,
             mime::GetCharSet(part),
             mime::GetTransEncode(part),
             CString(),
             EmbeddedMessageName(part)};
  } else if (mime::IsAttachmentHeader(part) == 1) {
    marks = {'A',
             contentType,
             mime::GetCharSet(part),
             mime::GetTransEncode(part),
             ReadDisposition(part),
             ListedFileName(ReadFileNameParameter(part), contentType)};
  }
  return marks;
}

// Header lines as senders write them and as broken messages carry them.
const std::vector<std::string> kHeaderLines = {
    "Content-Type: Message/RFC822\r\n",
    "Content-type: message/rfc822 ;x\r\n",
    "Content-Type:   MESSAGE/rfc822\r\n\r\n",
    "Content-Type: message/rfc822\xE9\r\n",
    "Content-Type: m\xC9ssage/rfc822\r\n",
    "Content-Type: message/rfc8220\r\n",
    "Content-Type: Message/RFC822",
    "Content-Type:\r\nSender: x\r\n",
    "Content-Type: Sender:\r\n",
    "Content-Type:Date: today\r\n",
    "Content-Type:Content-Transfer-Encoding: 7bit\r\n",
    "Content-Type:Message-Id: <a@b>\r\n",
    "Content-Type: application/pdf; name=\"a.pdf\"\r\n",
    "Content-Type: text/plain;\r\n charset=\"utf-8\"\r\n",
    "MIME-Version: 1.0\r\n",
    "Content-Disposition: attachment; filename=\"x/y.pdf.pdf\"\r\n",
    "Content-disposition: inline;\r\n filename=report\\\".txt\r\n",
    "Content-Description: notes\r\n",
    "Content-Transfer-Encoding: base64\r\n",
    "Content-Transfer-Encoding: x-unknown\r\n",
    "Subject: a|b:c\r\n",
    "filename*=utf-8''%E6%97%A5.pdf\r\n",
    "name=\"=?ISO-8859-1?Q?caf=E9?=.txt\"\r\n",
    "\r\n",
    "\n",
    "body text; more\r\n",
};

std::vector<PartRecord*> Records(const std::vector<std::string>& parts) {
  std::vector<PartRecord*> records;
  for (const std::string& part : parts) {
    records.push_back(new PartRecord);
    records.back()->partText = strdup(part.c_str());
  }
  return records;
}

TEST(PartMarkingDifferentialTest, MarksAsThePlainReadingOnGeneratedParts) {
  for (const char* language : {"1", "81"}) {
    ScopedEnv device("MAILSLICE_LANGUAGE", language);
    std::mt19937 random(7);
    std::vector<std::string> parts;
    for (int i = 0; i < 1500; ++i) parts.push_back(Pick(random, kHeaderLines, 6));
    std::vector<PartRecord*> records = Records(parts);
    AttachmentList list;
    FillAttachmentRecords(records.data(), static_cast<int>(records.size()), list);
    for (size_t i = 0; i < parts.size(); ++i) {
      SCOPED_TRACE(::testing::Message() << "language " << language << ": " << parts[i]);
      const char* part = parts[i].c_str();
      PlainMarks plain = PlainMarking(part);
      const PartRecord& record = *records[i];
      EXPECT_EQ(record.kind, plain.kind);
      EXPECT_EQ(record.contentType, plain.contentType);
      EXPECT_EQ(record.charset, plain.charset);
      EXPECT_EQ(record.transferEncoding, plain.transferEncoding);
      EXPECT_EQ(record.disposition, plain.disposition);
      EXPECT_EQ(record.fileName, plain.fileName);
      mime::TextSpan span = mime::ContentTypeSpan(part, 0);
      EXPECT_EQ(mime::ContentTypeValueIs(span.begin, span.end, "message/rfc822"),
                platform::EqualsNoCase(mime::GetContentType(part, 0).Str(), u"message/rfc822"));
    }
    DeleteRecords(records.data(), static_cast<int>(records.size()));
  }
}

// A file name parameter as it was read: byte by byte, then widened as UTF-8 when that reads
// without a replacement character, else through the device code page.
std::string PlainValue(const char* at) {
  auto blank = [](char ch) { return ch == ' ' || ch == '\t'; };
  while (blank(*at)) ++at;
  std::string value;
  if (*at == '"') {
    for (++at; *at != '\0' && *at != '"'; ++at) {
      if (*at == '\\' && at[1] != '\0') {
        value += *++at;
      } else if (*at == '\r' || *at == '\n') {
        const char* next = at + (at[0] == '\r' && at[1] == '\n' ? 2 : 1);
        if (!blank(*next)) break;
        at = next - 1;
      } else {
        value += *at;
      }
    }
    return value;
  }
  for (; *at != '\0' && *at != ';' && *at != '\r' && *at != '\n'; ++at) value += *at;
  while (!value.empty() && blank(value.back())) value.pop_back();
  return value;
}

CString PlainName(const std::string& bytes) {
  std::u16string utf8 = platform::MultiByteToWide(platform::kUtf8CodePage, bytes);
  if (utf8.find(u'\uFFFD') == std::u16string::npos) return CString(utf8);
  return CString(platform::AnsiToWide(bytes));
}

TEST(PartMarkingDifferentialTest, ReadsFileNamesAsTheByteByByteReading) {
  ScopedEnv codePage("MAILSLICE_CODEPAGE", "CP1252");
  // No "=?" and no "'": the plain spellings only, neither encoded words nor RFC 2231.
  const std::vector<std::string> pieces = {
      "a",     "report", ".pdf", " ",  "\t",       "\"",   "\\",           ";", "\r\n",
      "\r\n ", "\n\t",   "\r",   "\n", "\xC3\xA9", "\xE9", "\xEF\xBF\xBD", "/"};
  std::mt19937 random(11);
  for (int i = 0; i < 3000; ++i) {
    std::string value = Pick(random, pieces, 10);
    std::string part = "Content-Disposition: attachment; filename=" + value;
    SCOPED_TRACE(part);
    const char* at = part.c_str() + part.find("filename=") + std::strlen("filename=");
    EXPECT_EQ(ReadFileNameParameter(part.c_str()), PlainName(PlainValue(at)));
  }
}

// The listed name as it was made: one CString step after another.
CString PlainListedName(const CString& name, const CString& contentType) {
  CString collapsed = name;
  int last = name.ReverseFind(u'.');
  if (last > 0) {
    int before = name.Left(last).ReverseFind(u'.');
    CString outer = name.Mid(last + 1);
    if (before >= 0 && !outer.IsEmpty() && name.Mid(before + 1, last - before - 1) == outer) {
      collapsed = name.Left(last);
    }
  }
  std::u16string safe;
  for (char16_t ch : collapsed.Str()) {
    if (ch == u'/' || ch == u'\\') {
      safe += u'_';
    } else if (ch >= 0x20 && ch != 0x7F) {
      safe += ch;
    }
  }
  CString listed(safe);
  listed.Trim();
  if (listed.IsEmpty() || listed == u"." || listed == u"..") {
    return CString(u"noname") + (contentType == u"application/pdf" ? u".pdf" : u"");
  }
  return listed;
}

TEST(PartMarkingDifferentialTest, ListsNamesAsTheStepByStepMaking) {
  const std::vector<std::u16string> pieces = {u"a",    u"pdf",    u".",  u"..", u"/",
                                              u"\\",   u" ",      u"\t", u"\r", u"\x01",
                                              u"\x7F", u"\u00E9", u"_"};
  std::mt19937 random(5);
  for (int i = 0; i < 5000; ++i) {
    std::u16string name;
    int count = std::uniform_int_distribution<int>(0, 8)(random);
    for (int j = 0; j < count; ++j) {
      name += pieces[std::uniform_int_distribution<size_t>(0, pieces.size() - 1)(random)];
    }
    SCOPED_TRACE(testing::Utf8(name));
    EXPECT_EQ(ListedFileName(CString(name), u"application/pdf"),
              PlainListedName(CString(name), u"application/pdf"));
  }
}

}  // namespace
}  // namespace mailslice::attach
