#include "codec/base64_coder.h"

#include <gtest/gtest.h>

#include <string>

namespace mailslice::codec {
namespace {

std::string Decoded(const Base64Coder& coder) {
  return std::string(reinterpret_cast<const char*>(coder.DecodedMessage()),
                     coder.DecodedMessageSize());
}

TEST(Base64CoderTest, DecodesGroupByGroup) {
  const std::pair<std::string, std::string> cases[] = {
      {"QU\r\nJ D\t", "ABC"},             // white space is dropped first
      {"QQ==", std::string("A\0\0", 3)},  // padding still counts three bytes
      {"QUJ", "AB@"},                     // a cut group counts its characters
      {"\xD1\xD5\xCA\xC4", "ABC"},        // bit 7 is ignored
      {"QU-D", "A\x4F\x83"},              // a stray byte enters the arithmetic as 254
      {"", ""},
  };
  Base64Coder coder;
  for (const auto& [text, bytes] : cases) {
    coder.Decode(text.c_str());
    EXPECT_EQ(Decoded(coder), bytes) << text;
  }
}

TEST(Base64CoderTest, EncodesOnOneLineAndReusesItsBuffers) {
  Base64Coder coder;
  std::string bytes(100, '\xA5');
  coder.Encode(bytes.c_str());
  std::string text = coder.EncodedMessage();
  std::string expected;  // no line breaks however long
  for (int k = 0; k < 33; ++k) expected += "paWl";
  EXPECT_EQ(text, expected + "pQ==");
  EXPECT_EQ(coder.EncodedMessageSize(), 136u);
  EXPECT_EQ(Decoded(coder), bytes);  // the decoded buffer holds the input
  // A buffer that is large enough is reused; the new text still ends where it should.
  coder.Encode("AB");
  EXPECT_STREQ(coder.EncodedMessage(), "QUI=");
  // Decoding the coder's own text, and encoding its own bytes, work in place.
  coder.Decode(coder.EncodedMessage());
  EXPECT_EQ(Decoded(coder), std::string("AB\0", 3));
  EXPECT_STREQ(coder.EncodedMessage(), "QUI=");
  coder.Encode(reinterpret_cast<const char*>(coder.DecodedMessage()));
  EXPECT_STREQ(coder.EncodedMessage(), "QUI=");
}

}  // namespace
}  // namespace mailslice::codec
