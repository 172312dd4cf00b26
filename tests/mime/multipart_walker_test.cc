#include "mime/multipart_walker.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "mime/content_type_reader.h"
#include "mime/header_parameters.h"
#include "mime/text_memo.h"
#include "support/test_support.h"

namespace mailslice::mime {
namespace {

using testing::Repeated;

// The records a caller makes: count + 1 fresh ones.
struct Cut {
  int result = -1, count = -1;
  std::vector<std::unique_ptr<PartRecord>> owned;
  std::vector<PartRecord*> records;

  // The texts of the records filled, up to the first left fresh.
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (PartRecord* record : records) {
      if (record->partText == nullptr) break;
      texts.push_back(record->partText);
    }
    return texts;
  }
};

Cut CutMessage(const std::string& message, const char16_t* boundary = u"B") {
  Cut cut;
  EXPECT_EQ(GetMultiPartNoInAttachFile(message.c_str(), boundary, &cut.count), kWalkDone);
  for (int i = 0; i <= cut.count; ++i) {
    cut.records.push_back(cut.owned.emplace_back(std::make_unique<PartRecord>()).get());
  }
  cut.result = GetMultiPart(message.c_str(), boundary, cut.records.data());
  return cut;
}

const std::string kHeader = "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n";

TEST(MultipartWalkerTest, PartsRunFromEachDelimiterToTheNext) {
  const std::tuple<std::string, std::vector<std::string>, std::string> cases[] = {
      {"--B\r\nA: 1\r\n\r\none\r\n--B\r\n\r\ntwo\r\n--B--\r\n",
       {"--B\r\nA: 1\r\n\r\none\r\n", "--B\r\n\r\ntwo\r\n"},
       "BB"},
      // The last part has no end, so it is not stored.
      {"--B\r\n\r\none\r\n--B\r\n\r\ntwo\r\n", {"--B\r\n\r\none\r\n"}, "B"},
      // A delimiter inside a body line also splits.
      {"--B\r\n\r\nsee --B here\r\n--B--", {"--B\r\n\r\nsee ", "--B here\r\n"}, "BB"},
      // A nested alternative joins the flat list: its header and preamble start one character
      // into the outer delimiter, and its closing delimiter runs to the next outer one.
      {"--B\r\nContent-Type: multipart/alternative; boundary=\"I\"\r\n\r\npre\r\n"
       "--I\r\n\r\nplain\r\n--I\r\n\r\n<p>html</p>\r\n--I--\r\n--B\r\n\r\nPDF\r\n--B--\r\n",
       {"-B\r\nContent-Type: multipart/alternative; boundary=\"I\"\r\n\r\npre\r\n",
        "--I\r\n\r\nplain\r\n", "--I\r\n\r\n<p>html</p>\r\n", "--I--\r\n", "--B\r\n\r\nPDF\r\n"},
       "IIIBB"},
      // A forwarded message with the same boundary is one piece.
      {"--B\r\n\r\nsee below\r\n--B\r\nContent-Type: message/rfc822\r\n\r\n" + kHeader +
           "--B\r\n\r\ninner\r\n--B--\r\n--B\r\n\r\nafter\r\n--B--\r\n",
       {"--B\r\n\r\nsee below\r\n",
        "--B\r\nContent-Type: message/rfc822\r\n\r\n" + kHeader + "--B\r\n\r\ninner\r\n--B--\r\n",
        "--B\r\n\r\nafter\r\n"},
       "BBB"},
  };
  for (const auto& [parts, texts, boundaries] : cases) {
    Cut cut = CutMessage(kHeader + parts);
    EXPECT_EQ(cut.result, kWalkDone);
    EXPECT_EQ(cut.Texts(), texts);
    EXPECT_EQ(cut.count, int(texts.size()));
    std::string delimiters;  // the boundary each record was cut by, a letter each
    for (size_t i = 0; i < texts.size(); ++i) delimiters += cut.records[i]->delimiter.ToUtf8()[2];
    EXPECT_EQ(delimiters, boundaries);
  }
}

TEST(MultipartWalkerTest, UnusedBoundaryGivesTheWholeTextInRecordZero) {
  std::string message = kHeader + "no parts at all\r\n";
  Cut cut = CutMessage(message);
  EXPECT_EQ(cut.count, 0);
  EXPECT_EQ(cut.result, kWalkNotMultipart);
  EXPECT_EQ(cut.Texts(), std::vector<std::string>{message});
  EXPECT_EQ(GetHeaderLength(message.c_str()), static_cast<int>(kHeader.size()) - 4);
  EXPECT_EQ(GetHeaderLength("A: 1\n\nb"), 4);
  EXPECT_EQ(GetHeaderLength("no empty line"), 0);
}

// Messages of random shape: nested alternatives, missing closing delimiters, forwarded
// messages with the same boundary, delimiters inside lines, bare-LF lines.
std::string RandomMessage(std::mt19937& random) {
  const std::string inner = "--I\r\n\r\na\r\n--I\r\n\r\nb\r\n", forwarded = "--B\r\n\r\nx\r\n";
  const std::string parts[] = {
      "Content-Type: multipart/alternative; boundary=\"I\"\r\n\r\n" + inner + "--I--\r\n",
      "Content-Type: multipart/alternative; boundary=\"I\"\r\n\r\n" + inner + "\r\n",
      "Content-Type: message/rfc822\r\n\r\n" + kHeader + forwarded + "--B--\r\n",
      "Content-Type: message/rfc822\r\n\r\n" + kHeader + forwarded + "\r\n",
      "Content-Type: text/plain\r\n\r\nx --B y\r\n",
      "Content-type: multipart/mixed\r\n\r\nz\r\n",
      "\r\nplain\r\n"};
  std::string message = kHeader;
  for (int part = int(random() % 6); part > 0; --part) message += "--B\r\n" + parts[random() % 7];
  if (random() % 2 == 0) message += "--B--";
  if (random() % 3 == 0) std::erase(message, '\r');  // bare-LF lines
  return message;
}

TEST(MultipartWalkerTest, CountAlwaysEqualsTheRecordsStored) {
  std::mt19937 random(2009);
  for (int round = 0; round < 400; ++round) {
    std::string message = RandomMessage(random);
    Cut cut = CutMessage(message);
    // When no part is cut, record 0 holds the whole text instead.
    int stored = cut.result == kWalkNotMultipart ? cut.count + 1 : cut.count;
    ASSERT_EQ(cut.Texts().size(), size_t(stored)) << message;
  }
}

// The pieces of a walk as (begin, end, delimiter), up to `limit` pieces.
std::vector<std::tuple<ptrdiff_t, ptrdiff_t, std::string>> Walked(const char* text,
                                                                  size_t limit = SIZE_MAX) {
  std::vector<std::tuple<ptrdiff_t, ptrdiff_t, std::string>> pieces;
  WalkMultipart(text, u"B", [&](const Piece& piece) {
    pieces.emplace_back(piece.begin - text, piece.end - text, *piece.delimiter);
    return pieces.size() < limit;
  });
  return pieces;
}

// A text the library keeps (the loaded message) is walked once and replayed after: a replay
// gives the walk's pieces, also after a first walk that was stopped early.
TEST(MultipartWalkerTest, AKeptTextReplaysItsWalk) {
  std::mt19937 random(4711);
  for (int round = 0; round < 300; ++round) {
    std::string message = RandomMessage(random);
    auto expected = Walked(message.c_str());
    TextMemo standing(message.c_str(), message.size(), TextMemo::Standing{});
    if (round % 2 == 0) Walked(message.c_str(), 1);  // stopped: nothing is kept
    for (int walk = 0; walk < 2; ++walk) ASSERT_EQ(Walked(message.c_str()), expected) << message;
    if (expected.size() > 1) {
      ASSERT_EQ(Walked(message.c_str(), 1),
                decltype(expected)(expected.begin(), expected.begin() + 1));
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
  std::string many = kHeader + Repeated("--B\r\nContent-Type: text/plain\r\n\r\nx\r\n", 10'000);
  EXPECT_EQ(CutMessage(many + "--B--").count, 10'000);
  int count = 0;
  std::string delimiters = kHeader + Repeated("--B", 3'000'000);
  EXPECT_EQ(GetMultiPartNoInAttachFile(delimiters.c_str(), u"B", &count), kWalkDone);
  EXPECT_GT(count, 2'900'000);
  // A nested multipart that never uses its boundary: the walk steps over it.
  std::string nested = kHeader + "--B\r\nContent-Type: multipart/mixed; boundary=\"Q\"\r\n\r\n" +
                       std::string(1'000'000, 'x') + "\r\n--B--";
  EXPECT_EQ(CutMessage(nested).Texts().size(), 1u);
  Cut cut = CutMessage(
      "Content-Type: multipart/mixed; boundary=\"-\"\n\n" + Repeated("---\n", 100'000), u"-");
  EXPECT_EQ(cut.Texts().size(), size_t(cut.count));
}

}  // namespace
}  // namespace mailslice::mime
