#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <cstring>
#include <random>
#include <string>

#include "mime/attachment_markers.h"
#include "support/test_support.h"

namespace {

using mailslice::mime::CountAttachmentMarkers;
using mailslice::mime::IsAttachmentHeader;
using mailslice::testing::Repeated;

std::string Message(const std::string& parts, const std::string& closing = "--B--\r\n") {
  return "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n" + parts + closing;
}

const std::string kText = "--B\r\nContent-Type: text/plain\r\n\r\nhello\r\n";
const std::string kPdf =
    "--B\r\nContent-Type: application/pdf; name=\"r.pdf\"\r\n"
    "Content-Disposition: attachment; filename=\"report.pdf.pdf\"\r\n\r\nJVBE\r\n";

std::vector<std::string> Listed(const std::string& message, int expectedResult = 1) {
  CString names(u"stale");
  int count = -1;
  EXPECT_EQ(GetAttachFile(message.c_str(), names, &count), expectedResult);
  std::vector<std::string> listed;
  for (int i = 0; i < GetAttachArrayCount(); ++i) listed.push_back(GetAttachArrayFile(i).ToUtf8());
  return listed;
}

TEST(AttachmentMarkersTest, FirstMarkerWithHitsGivesTheCount) {
  EXPECT_EQ(CountAttachmentMarkers("attachment attachment filename="), 2);
  EXPECT_EQ(CountAttachmentMarkers("x filename*0*=a"), 1);  // the fourth marker
  EXPECT_EQ(CountAttachmentMarkers("name= name="), 2);
  EXPECT_EQ(CountAttachmentMarkers("plain text"), 0);
  EXPECT_EQ(CountAttachmentMarkers(nullptr), 0);
  EXPECT_EQ(IsAttachmentHeader("Content-Disposition: inline; filename=a.txt"), 1);
  EXPECT_EQ(IsAttachmentHeader("Content-description: x\r\nname=\"a\""), 1);
  EXPECT_EQ(IsAttachmentHeader("Content-Type: text/plain; filename=a.txt"), 0);
  EXPECT_EQ(IsAttachmentHeader("Content-Disposition: attachment"), 0);
}

// Only the first marker that occurs at all is counted, overlapping occurrences included:
// checked against counting each marker in turn on texts made of markers and their pieces.
TEST(AttachmentMarkersTest, CountAgreesWithCountingEachMarkerInTurn) {
  const char* const markers[] = {"attachment", "attach;", "filename=", "filename*0*=", "name="};
  const std::string_view pieces[] = {"attach", "ment", ";", "file", "name", "=", "*0*", "x"};
  std::mt19937 random(17);
  for (int round = 0; round < 4000; ++round) {
    std::string text;
    for (size_t count = random() % 10; count > 0; --count) text += pieces[random() % 8];
    int expected = 0;
    for (const char* marker : markers) {
      for (const char* at = std::strstr(text.c_str(), marker); at != nullptr;
           at = std::strstr(at + 1, marker)) {
        ++expected;
      }
      if (expected > 0) break;
    }
    EXPECT_EQ(CountAttachmentMarkers(text.c_str()), expected) << text;
  }
}

TEST(AttachmentListingTest, ListsNamedPartsInOrder) {
  std::string message =
      Message(kText + kPdf + "--B\r\nContent-Type: message/rfc822\r\n\r\nFrom: a\r\n\r\nhi\r\n" +
              "--B\r\nContent-Type: text/plain; name=\"x.txt\"\r\n\r\nno disposition\r\n");
  EXPECT_EQ(Listed(message), (std::vector<std::string>{"report.pdf", "noname.eml"}));
  EXPECT_EQ(GetAttachArrayFile(2), u"");  // one past the end
  EXPECT_EQ(GetAttachArrayFile(-1), u"");
  // A message without a boundary, or without a marker, empties the list.
  EXPECT_EQ(Listed("Subject: none\r\n\r\nplain body\r\n", 0), std::vector<std::string>{});
  Listed(message);
  EXPECT_EQ(Listed("Subject: x\r\n\r\nsee the attachment\r\n"), std::vector<std::string>{});
  // The repair of a missing closing delimiter appends the boundary and "--" (without the
  // leading "--"), so the open last part still has no end; the caller's text is unchanged.
  std::string open = Message(kPdf + kPdf, "");
  std::string before = open;
  EXPECT_EQ(Listed(open), std::vector<std::string>{"report.pdf"});
  EXPECT_EQ(open, before);
}

TEST(AttachmentListingTest, EmbeddedMessagesAreNamedBySubject) {
  // Without an attachment marker elsewhere the message would count no attachment at all.
  auto embedded = [](const std::string& subject) {
    return Message("--B\r\nContent-Type: message/rfc822\r\n\r\nSubject: " + subject +
                   "\r\n\r\nhi\r\n" + kPdf);
  };
  EXPECT_EQ(Listed(embedded("Re: plan? <v2>")),
            (std::vector<std::string>{"Re plan v2.eml", "report.pdf"}));
  EXPECT_EQ(Listed(embedded("=?utf-8?B?5pel5pys?=")),
            (std::vector<std::string>{"日本.eml", "report.pdf"}));
  mailslice::testing::ScopedEnv japanese("MAILSLICE_LANGUAGE", "81");
  EXPECT_EQ(Listed(embedded("Re: plan? <v2>")),
            (std::vector<std::string>{"Re： plan？ ＜v2＞.eml", "report.pdf"}));
}

TEST(AttachmentListingTest, RecordsCanBeFilledAndFreedByTheCaller) {
  std::string message = Message(kText + kPdf);
  int count = 0;
  ASSERT_EQ(GetMultiPartNoInAttachFile(message.c_str(), u"B", &count), 0);
  ASSERT_EQ(count, 2);
  auto** records = new PartRecord*[count + 1];
  for (int i = 0; i <= count; ++i) records[i] = new PartRecord();
  ASSERT_EQ(GetMultiPart(message.c_str(), u"B", records), 0);
  GetMultiPartAttachInfo(records, count);
  EXPECT_EQ(records[0]->kind, 0);
  EXPECT_EQ(records[1]->kind, 'A');
  EXPECT_EQ(TrimAttFileName(records, 1), u"report.pdf");
  EXPECT_EQ(TrimContType(records, 1), u"application/pdf");
  EXPECT_EQ(TrimTnsEncode(records, 1), u"8bit");
  EXPECT_EQ(records[1]->disposition, u"attachment");
  EXPECT_EQ(GetAttachArrayCount(), 1);
  OnDeleteMailMessage(records, count + 1);
  EXPECT_EQ(records[0], nullptr);
  delete[] records;
}

TEST(AttachmentListingTest, HostileMessagesFinish) {
  EXPECT_EQ(Listed(Message(Repeated(kPdf, 10'000))).size(), 10'000u);
  Listed("Content-Type: multipart/mixed; boundary=x\r\n\r\nfilename=" + Repeated("--x", 100'000));
}

}  // namespace
