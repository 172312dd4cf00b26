// Round trips: attachments of every size, encoding and name spelling, listed by GetAttachFile
// and saved back byte for byte by SaveAttachedFile under the name the list reported.
#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/saving.h"

namespace {

using mailslice::testing::Base64Lines;
using mailslice::testing::Contents;
using mailslice::testing::QuotedPrintableLines;
using mailslice::testing::RandomBytes;
using mailslice::testing::SaveScratch;

const std::string kBoundary = "=_mailslice_7f3a9c";

struct Encoding {
  const char* name;  // as the Content-Transfer-Encoding field gives it
  std::string (*encode)(std::string_view);
  bool noNul;  // sent as it is inside the NUL-ended message text
};

std::string AsItIs(std::string_view bytes) { return std::string(bytes); }

const Encoding kEncodings[] = {{"base64", Base64Lines, false},
                               {"quoted-printable", QuotedPrintableLines, false},
                               {"8bit", AsItIs, true}};

// A file name as the sender's mail program writes it, and as the list shows it.
using NameForm = std::pair<const char*, const char16_t*>;

const NameForm kNameForms[] = {
    {"filename=\"data file.bin\"", u"data file.bin"},
    {"filename=data.bin", u"data.bin"},
    {"filename*=utf-8''%E6%97%A5%E6%9C%AC.bin", u"日本.bin"},
    {"filename*0*=utf-8''long%20; filename*1=name.bin", u"long name.bin"}};

using Attachments = std::vector<std::pair<const NameForm*, std::string>>;

// Sends the bodies in one message, lists it, checks the names, and saves each attachment by
// the name listed.
void ExpectRoundTrip(const Encoding& encoding, const Attachments& attachments) {
  std::string message = "Content-Type: multipart/mixed; boundary=\"" + kBoundary + "\"\r\n\r\n--" +
                        kBoundary + "\r\n\r\nSee attached.\r\n";
  for (const auto& [name, body] : attachments) {
    std::string encoded = encoding.encode(body);
    // Base64 lines end in CR LF already; the delimiter needs a line end of its own.
    if (encoding.encode != Base64Lines || encoded.empty()) encoded += "\r\n";
    message += "--" + kBoundary + "\r\nContent-Disposition: attachment; " + name->first +
               "\r\nContent-Transfer-Encoding: " + encoding.name + "\r\n\r\n" + encoded;
  }
  message += "--" + kBoundary + "--\r\n";
  SaveScratch scratch;
  CString listing;
  int count = 0;
  ASSERT_EQ(GetAttachFile(message.c_str(), listing, &count), 1);
  ASSERT_EQ(GetAttachArrayCount(), static_cast<int>(attachments.size()));
  for (size_t i = 0; i < attachments.size(); ++i) {
    CString listed = GetAttachArrayFile(static_cast<int>(i));
    ASSERT_EQ(listed, attachments[i].first->second);
    std::string destination = scratch.Path("saved-" + std::to_string(i));
    ASSERT_EQ(SaveAttachedFile(message.c_str(), CString(), CString::FromUtf8(destination),
                               CString(kBoundary.c_str()), listed),
              1);
    ASSERT_TRUE(Contents(destination) == attachments[i].second) << listed.ToUtf8();
    EXPECT_FALSE(scratch.HoldsTempFile());
  }
}

class RoundTripTest : public ::testing::TestWithParam<int> {};

// Every size that sits at a Base64 block edge, and the tiny ones, in every name spelling.
TEST_P(RoundTripTest, EverySizeInEveryNameSpelling) {
  const Encoding& encoding = kEncodings[GetParam()];
  for (size_t size : {0, 1, 2, 3, 131'071, 131'072, 131'073, 131'074, 131'075}) {
    Attachments attachments;
    for (const NameForm& name : kNameForms) {
      unsigned seed = static_cast<unsigned>(size * 7 + attachments.size());
      attachments.emplace_back(&name, RandomBytes(size, seed, encoding.noNul));
    }
    SCOPED_TRACE("size " + std::to_string(size));
    ExpectRoundTrip(encoding, attachments);
  }
}

TEST_P(RoundTripTest, SeveralMegabytes) {
  const Encoding& encoding = kEncodings[GetParam()];
  ExpectRoundTrip(encoding,
                  {{&kNameForms[GetParam()], RandomBytes(3'000'001, 99, encoding.noNul)}});
}

INSTANTIATE_TEST_SUITE_P(Encodings, RoundTripTest, ::testing::Values(0, 1, 2));

// The loaded message's listing is kept between saves; every load and free must drop it, even
// when the next message, of the same size, lands at the same address with an attachment of
// the same name in another place.
TEST(LoadedMessageTest, SavesFromEachMessageLoadedInTurn) {
  SaveScratch scratch;
  std::string file = scratch.Path("message.eml");
  CString destination = CString::FromUtf8(scratch.Path("saved"));
  for (int round = 0; round < 3; ++round) {
    // Three bytes fewer take four Base64 characters fewer, on as many lines.
    std::string body = RandomBytes(1000 - 3 * round, static_cast<unsigned>(round));
    std::string preamble(4 * round, 'x');
    {
      std::ofstream(file, std::ios::binary)
          << "Content-Type: multipart/mixed; boundary=\"" + kBoundary + "\"\r\n\r\n" + preamble +
                 "\r\n--" + kBoundary +
                 "\r\nContent-Disposition: attachment; filename=\"a.bin\"\r\n"
                 "Content-Transfer-Encoding: base64\r\n\r\n" +
                 Base64Lines(body) + "--" + kBoundary + "--\r\n";
    }
    ASSERT_EQ(MessageFileOpenAndMemoryAlloc(CString::FromUtf8(file)), 1);
    for (int save = 0; save < 2; ++save) {
      ASSERT_EQ(SaveAttachedFile(GetMessageText(), CString(), destination, CString(), u"a.bin"), 1);
      EXPECT_TRUE(Contents(scratch.Path("saved")) == body) << "round " << round;
    }
    if (round == 1) MessageMemoryFree();
  }
  MessageMemoryFree();
}

}  // namespace
