// The Base64 coder through its exports, so that the tests also prove the wiring.
#include "codec/base64_coder.h"

#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <string>

namespace {

std::string Decoded() {
  return std::string(Base64CoderDecodedMessage(), Base64CoderDecodedLength());
}

TEST(Base64CoderTest, DecodesGroupByGroup) {
  const std::pair<std::string, std::string> cases[] = {
      {"QU\r\nJ D\t", "ABC"},             // white space is dropped first
      {"QQ==", std::string("A\0\0", 3)},  // padding still counts three bytes
      {"QUJ", "AB@"},                     // a cut group counts its characters
      {"\xD1\xD5\xCA\xC4", "ABC"},        // bit 7 is ignored
      {"QU-D", "A\x4F\x83"},              // a stray byte enters the arithmetic as 254
      {"", ""}};
  for (const auto& [text, bytes] : cases) {
    Base64CoderDecode(text.c_str());
    EXPECT_EQ(Decoded(), bytes) << text;
  }
  Base64CoderDecode("QU\r\nJ D\t");
  EXPECT_STREQ(Base64CoderEncodedMessage(), "QUJD");  // the input, white space removed, is kept
}

TEST(Base64CoderTest, EncodesOnOneLineAndReusesItsBuffers) {
  std::string bytes(100, '\xA5'), expected;  // no line breaks however long
  for (int k = 0; k < 33; ++k) expected += "paWl";
  Base64CoderEncode(bytes.c_str());
  EXPECT_EQ(Base64CoderEncodedMessage(), expected + "pQ==");
  EXPECT_EQ(Base64CoderEncodedLength(), 136);
  EXPECT_EQ(Decoded(), bytes);  // the decoded buffer holds the input
  // A buffer that is large enough is reused; the new text still ends where it should.
  Base64CoderEncode("AB");
  EXPECT_STREQ(Base64CoderEncodedMessage(), "QUI=");
  // Decoding the coder's own text, and encoding its own bytes, work in place.
  Base64CoderDecode(Base64CoderEncodedMessage());
  EXPECT_EQ(Decoded(), std::string("AB\0", 3));
  EXPECT_STREQ(Base64CoderEncodedMessage(), "QUI=");
  Base64CoderEncode(Base64CoderDecodedMessage());
  EXPECT_STREQ(Base64CoderEncodedMessage(), "QUI=");
}

TEST(Base64CoderTest, KeepsItsMessagesUntilFreed) {
  Base64CoderEncode("ABCD");
  Base64CoderDecodedFreeMemory();
  EXPECT_EQ(Base64CoderDecodedMessage(), nullptr);
  EXPECT_EQ(Base64CoderDecodedLength(), 0);
  EXPECT_STREQ(Base64CoderEncodedMessage(), "QUJDRA==");  // the other buffer is kept
  Base64CoderEncodedFreeMemory();
  Base64CoderEncode(nullptr);
  Base64CoderDecode(nullptr);
  EXPECT_EQ(Base64CoderEncodedMessage(), nullptr);
}

}  // namespace
