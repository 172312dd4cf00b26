#include "mime/multipart_walker.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "mime/content_type_reader.h"
#include "mime/header_parameters.h"
#include "support/test_support.h"

namespace mailslice::mime {
namespace {

// The records a caller makes: count + 1 fresh ones.
struct Cut {
  int result = -1;
  int count = -1;
  std::vector<std::unique_ptr<PartRecord>> owned;
  std::vector<PartRecord*> records;

  std::string Text(int index) const {
    const char* text = records[static_cast<size_t>(index)]->partText;
    return text == nullptr ? "<null>" : text;
  }
  int Stored() const {
    int stored = 0;
    while (stored < static_cast<int>(records.size()) && records[stored]->partText) ++stored;
    return stored;
  }
};

Cut CutMessage(const std::string& message, const char16_t* boundary) {
  Cut cut;
  EXPECT_EQ(GetMultiPartNoInAttachFile(message.c_str(), boundary, &cut.count), kWalkDone);
  for (int i = 0; i <= cut.count; ++i) {
    cut.owned.push_back(std::make_unique<PartRecord>());
    cut.records.push_back(cut.owned.back().get());
  }
  cut.result = GetMultiPart(message.c_str(), boundary, cut.records.data());
  return cut;
}

const std::string kHeader = "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n";

TEST(MultipartWalkerTest, PartsEndAtTheNextDelimiterAndTheClosingOneCounts) {
  Cut cut = CutMessage(kHeader + "--B\r\nA: 1\r\n\r\none\r\n--B\r\n\r\ntwo\r\n--B--\r\n", u"B");
  EXPECT_EQ(cut.result, kWalkDone);
  EXPECT_EQ(cut.count, 2);
  EXPECT_EQ(cut.Text(0), "--B\r\nA: 1\r\n\r\none\r\n");
  EXPECT_EQ(cut.Text(1), "--B\r\n\r\ntwo\r\n");
  EXPECT_EQ(cut.records[0]->delimiter, u"--B");
  EXPECT_EQ(cut.Text(2), "<null>");  // the spare record stays fresh

  Cut unclosed = CutMessage(kHeader + "--B\r\n\r\none\r\n--B\r\n\r\ntwo\r\n", u"B");
  EXPECT_EQ(unclosed.count, 1);  // the last part has no end, so it is not stored
  EXPECT_EQ(unclosed.Stored(), 1);
}

TEST(MultipartWalkerTest, ADelimiterInsideABodyLineAlsoSplits) {
  Cut cut = CutMessage(kHeader + "--B\r\n\r\nsee --B here\r\n--B--", u"B");
  EXPECT_EQ(cut.count, 2);
  EXPECT_EQ(cut.Text(0), "--B\r\n\r\nsee ");
  EXPECT_EQ(cut.Text(1), "--B here\r\n");
}

TEST(MultipartWalkerTest, NestedAlternativeJoinsTheFlatList) {
  std::string message =
      kHeader +
      "--B\r\nContent-Type: multipart/alternative; boundary=\"I\"\r\n\r\n"
      "pre\r\n--I\r\nContent-Type: text/plain\r\n\r\nplain\r\n"
      "--I\r\nContent-Type: text/html\r\n\r\n<p>html</p>\r\n--I--\r\n"
      "--B\r\nContent-Type: application/pdf; name=\"a.pdf\"\r\n\r\nPDF\r\n--B--\r\n";
  Cut cut = CutMessage(message, u"B");
  ASSERT_EQ(cut.count, 5);
  EXPECT_EQ(cut.Stored(), 5);
  // The nested header and preamble, starting one character into the outer delimiter.
  EXPECT_EQ(cut.Text(0),
            "-B\r\nContent-Type: multipart/alternative; boundary=\"I\"\r\n\r\npre\r\n");
  EXPECT_EQ(cut.Text(1), "--I\r\nContent-Type: text/plain\r\n\r\nplain\r\n");
  EXPECT_EQ(cut.records[1]->delimiter, u"--I");
  EXPECT_EQ(cut.Text(2), "--I\r\nContent-Type: text/html\r\n\r\n<p>html</p>\r\n");
  EXPECT_EQ(cut.Text(3), "--I--\r\n");  // from the inner closing delimiter to the next outer one
  EXPECT_EQ(cut.Text(4), "--B\r\nContent-Type: application/pdf; name=\"a.pdf\"\r\n\r\nPDF\r\n");
}

TEST(MultipartWalkerTest, ForwardedMessageWithTheSameBoundaryIsOnePiece) {
  std::string message = kHeader +
                        "--B\r\nContent-Type: text/plain\r\n\r\nsee below\r\n"
                        "--B\r\nContent-Type: message/rfc822\r\n\r\n"
                        "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n"
                        "--B\r\n\r\ninner\r\n--B--\r\n"
                        "--B\r\nContent-Type: text/plain\r\n\r\nafter\r\n--B--\r\n";
  Cut cut = CutMessage(message, u"B");
  ASSERT_EQ(cut.count, 3);
  EXPECT_EQ(cut.Text(0), "--B\r\nContent-Type: text/plain\r\n\r\nsee below\r\n");
  EXPECT_EQ(cut.Text(1).substr(0, 33), "--B\r\nContent-Type: message/rfc822");
  EXPECT_NE(cut.Text(1).find("inner\r\n--B--\r\n"), std::string::npos);
  EXPECT_EQ(cut.Text(2), "--B\r\nContent-Type: text/plain\r\n\r\nafter\r\n");
}

TEST(MultipartWalkerTest, UnusedBoundaryGivesTheWholeTextInRecordZero) {
  std::string message = kHeader + "no parts at all\r\n";
  Cut cut = CutMessage(message, u"B");
  EXPECT_EQ(cut.count, 0);
  EXPECT_EQ(cut.result, kWalkNotMultipart);
  EXPECT_EQ(cut.Text(0), message);
  EXPECT_EQ(GetHeaderLength(message.c_str()), static_cast<int>(kHeader.size()) - 4);
  EXPECT_EQ(GetHeaderLength("A: 1\n\nb"), 4);
  EXPECT_EQ(GetHeaderLength("no empty line"), 0);
}

// Messages of random shape: nested alternatives, missing closing delimiters, forwarded
// messages with the same boundary, delimiters inside lines, bare-LF lines.
std::string RandomMessage(std::mt19937& random) {
  auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const char* eol = pick(3) == 0 ? "\n" : "\r\n";
  std::string message = std::string("Content-Type: multipart/mixed; boundary=\"B\"") + eol + eol;
  int parts = pick(6);
  for (int part = 0; part < parts; ++part) {
    message += std::string("--B") + eol;
    switch (pick(5)) {
      case 0:
        message += std::string("Content-Type: multipart/alternative; boundary=\"I\"") + eol + eol +
                   "--I" + eol + eol + "a" + eol + "--I" + eol + eol + "b" + eol +
                   (pick(2) ? "--I--" : "") + eol;
        break;
      case 1:
        message += std::string("Content-Type: message/rfc822") + eol + eol +
                   "Content-Type: multipart/mixed; boundary=\"B\"" + eol + eol + "--B" + eol + eol +
                   "x" + eol + (pick(2) ? "--B--" : "") + eol;
        break;
      case 2:
        message += std::string("Content-Type: text/plain") + eol + eol + "x --B y" + eol;
        break;
      case 3:
        message += std::string("Content-type: multipart/mixed") + eol + eol + "z" + eol;
        break;
      default:
        message += std::string(eol) + "plain" + eol;
    }
  }
  if (pick(2)) message += "--B--";
  return message;
}

TEST(MultipartWalkerTest, CountAlwaysEqualsTheRecordsStored) {
  std::mt19937 random(2009);
  for (int round = 0; round < 400; ++round) {
    std::string message = RandomMessage(random);
    Cut cut = CutMessage(message, u"B");
    if (cut.result == kWalkNotMultipart) {
      ASSERT_EQ(cut.count, 0) << message;  // record 0 holds the whole text instead
    } else {
      ASSERT_EQ(cut.Stored(), cut.count) << message;
    }
  }
}

TEST(ContentTypeReaderTest, AgreesWithTheWholeTextReadingAtEveryStep) {
  std::mt19937 random(7);
  const char* pieces[] = {"Content-Type: a/b\r\n",
                          "Content-type: c/d\n",
                          "Content-Type:Date\r\n",
                          "Content-Type:Content-Transfer-Encoding: x\r\n",
                          "Content-Type:",
                          "; q\r\n",
                          "\r\n",
                          "\n",
                          "Sender:",
                          "Message-Id",
                          "text "};
  for (int round = 0; round < 300; ++round) {
    std::string text;
    for (int i = 0; i < 12; ++i) text += pieces[random() % std::size(pieces)];
    ContentTypeReader reader(text);
    for (size_t at = 0; at <= text.size(); at += 1 + random() % 4) {
      ASSERT_EQ(reader.At(text.c_str() + at), GetContentType(text.c_str() + at, 1))
          << text << " @" << at;
    }
  }
}

TEST(MultipartWalkerTest, HostileStructuresFinish) {
  std::string manyParts = kHeader;
  for (int i = 0; i < 10'000; ++i) manyParts += "--B\r\nContent-Type: text/plain\r\n\r\nx\r\n";
  EXPECT_EQ(CutMessage(manyParts + "--B--", u"B").count, 10'000);

  std::string delimiters = kHeader;
  while (delimiters.size() < 9'000'000) delimiters += "--B";
  int count = 0;
  EXPECT_EQ(GetMultiPartNoInAttachFile(delimiters.c_str(), u"B", &count), kWalkDone);
  EXPECT_GT(count, 2'900'000);

  // A nested multipart that never uses its boundary: the walk steps over it.
  std::string nested = kHeader + "--B\r\nContent-Type: multipart/mixed; boundary=\"Q\"\r\n\r\n" +
                       std::string(1'000'000, 'x') + "\r\n--B--";
  EXPECT_EQ(CutMessage(nested, u"B").Stored(), 1);

  std::string everyLine = "Content-Type: multipart/mixed; boundary=\"-\"\n\n";
  for (int i = 0; i < 100'000; ++i) everyLine += "---\n";
  Cut cut = CutMessage(everyLine, u"-");
  EXPECT_EQ(cut.Stored(), cut.count);
}

}  // namespace
}  // namespace mailslice::mime
