// Round trips: attachments of every size, encoding and name spelling, listed by GetAttachFile
// and saved back byte for byte by SaveAttachedFile under the name the list reported.
#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <string>
#include <vector>

#include "support/saving.h"

namespace {

using mailslice::testing::Base64Lines;
using mailslice::testing::Contents;
using mailslice::testing::QuotedPrintableLines;
using mailslice::testing::RandomBytes;
using mailslice::testing::SaveScratch;

constexpr char kBoundary[] = "=_mailslice_7f3a9c";

struct Encoding {
  const char* name;  // as the Content-Transfer-Encoding field gives it
  std::string (*encode)(std::string_view);
  bool noNul;  // sent as it is inside the NUL-ended message text
};

std::string AsItIs(std::string_view bytes) { return std::string(bytes); }

const Encoding kEncodings[] = {
    {"base64", Base64Lines, false},
    {"quoted-printable", QuotedPrintableLines, false},
    {"8bit", AsItIs, true},
};

struct NameForm {
  const char* parameter;  // as the sender's mail program writes it
  const char16_t* listed;
};

const NameForm kNameForms[] = {
    {"filename=\"data file.bin\"", u"data file.bin"},
    {"filename=data.bin", u"data.bin"},
    {"filename*=utf-8''%E6%97%A5%E6%9C%AC.bin", u"日本.bin"},
    {"filename*0*=utf-8''long%20; filename*1=name.bin", u"long name.bin"},
};

std::string Part(const Encoding& encoding, const NameForm& name, const std::string& bytes) {
  std::string encoded = encoding.encode(bytes);
  // Base64 lines end in CR LF already; the delimiter needs a line end of its own.
  if (encoding.encode != Base64Lines || encoded.empty()) encoded += "\r\n";
  return std::string("--") + kBoundary + "\r\nContent-Type: application/octet-stream\r\n" +
         "Content-Disposition: attachment; " + name.parameter + "\r\n" +
         "Content-Transfer-Encoding: " + encoding.name + "\r\n\r\n" + encoded;
}

std::string Message(const std::vector<std::string>& parts) {
  std::string message = std::string("From: a@example.com\r\nMIME-Version: 1.0\r\n") +
                        "Content-Type: multipart/mixed; boundary=\"" + kBoundary + "\"\r\n\r\n" +
                        "--" + kBoundary + "\r\nContent-Type: text/plain\r\n\r\nSee attached.\r\n";
  for (const std::string& part : parts) message += part;
  return message + "--" + kBoundary + "--\r\n";
}

// Lists the message, checks the names, and saves each attachment by the name listed.
void ExpectRoundTrip(const std::string& message, const std::vector<std::string>& bodies,
                     const std::vector<const NameForm*>& names) {
  SaveScratch scratch;
  CString listing;
  int count = 0;
  ASSERT_EQ(GetAttachFile(message.c_str(), listing, &count), 1);
  ASSERT_EQ(GetAttachArrayCount(), static_cast<int>(bodies.size()));
  for (size_t i = 0; i < bodies.size(); ++i) {
    CString listed = GetAttachArrayFile(static_cast<int>(i));
    ASSERT_EQ(listed, names[i]->listed);
    std::string destination = scratch.Path("saved-" + std::to_string(i));
    ASSERT_EQ(SaveAttachedFile(message.c_str(), CString(), CString::FromUtf8(destination),
                               CString(kBoundary), listed),
              1);
    std::optional<std::string> saved = Contents(destination);
    ASSERT_TRUE(saved.has_value());
    ASSERT_EQ(saved->size(), bodies[i].size()) << listed.ToUtf8();
    ASSERT_TRUE(*saved == bodies[i]) << listed.ToUtf8();
    EXPECT_FALSE(scratch.HoldsTempFile());
  }
}

class RoundTripTest : public ::testing::TestWithParam<int> {};

// Every size that sits at a Base64 block edge, and the tiny ones, in every name spelling.
TEST_P(RoundTripTest, EverySizeInEveryNameSpelling) {
  const size_t sizes[] = {0, 1, 2, 3, 131'071, 131'072, 131'073, 131'074, 131'075};
  for (size_t size : sizes) {
    std::vector<std::string> parts, bodies;
    std::vector<const NameForm*> names;
    for (const NameForm& name : kNameForms) {
      const Encoding& encoding = kEncodings[GetParam()];
      bodies.push_back(
          RandomBytes(size, static_cast<unsigned>(size * 7 + parts.size()), encoding.noNul));
      parts.push_back(Part(encoding, name, bodies.back()));
      names.push_back(&name);
    }
    SCOPED_TRACE("size " + std::to_string(size));
    ExpectRoundTrip(Message(parts), bodies, names);
  }
}

TEST_P(RoundTripTest, SeveralMegabytes) {
  const Encoding& encoding = kEncodings[GetParam()];
  const NameForm& name = kNameForms[GetParam()];
  std::string body = RandomBytes(3'000'001, 99, encoding.noNul);
  ExpectRoundTrip(Message({Part(encoding, name, body)}), {body}, {&name});
}

INSTANTIATE_TEST_SUITE_P(Encodings, RoundTripTest, ::testing::Values(0, 1, 2));

}  // namespace
