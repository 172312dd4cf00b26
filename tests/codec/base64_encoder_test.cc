#include "codec/base64_encoder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

#include "codec/base64_decoder.h"

namespace mailslice::codec {
namespace {

std::string Encoded(const std::string& bytes) {
  char* text =
      EncodeToChar(reinterpret_cast<const unsigned char*>(bytes.data()), int(bytes.size()));
  std::string result(text);
  std::free(text);
  return result;
}

TEST(Base64EncoderTest, EncodesShortInputs) {
  const std::pair<std::string, std::string> cases[] = {
      {"ABC", "QUJD"},
      {"ABCD", "QUJDRA=="},
      {"ABCDE", "QUJDREU="},
      // Fewer than three bytes give only padding.
      {"AB", "===="},
      {"", "===="},
      // A second last byte of 0x80 or more turns the first into 0xFF.
      {"\x01\x02\x03\x41\x80", "AQID/4A="},
      {"\x01\x02\x03\x41\x7F", "AQIDQX8="},
      {"\x01\x02\x03\x80", "AQIDgA=="}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(Encoded(bytes), text) << text;
}

// Whatever the length, the lines hold 76 characters but the last, and the text decodes back
// to the input (with the sign quirk of a two-byte last group).
TEST(Base64EncoderTest, RoundTripsThroughTheDecoderInLinesOf76) {
  EXPECT_EQ(Encoded(std::string(57, 'x')).substr(72), "eHh4\r\n");
  EXPECT_EQ(Encoded(std::string(58, 'x')).substr(72), "eHh4\r\neA==");
  std::mt19937 random(99);
  for (int round = 0; round < 200; ++round) {
    std::string bytes(3 + random() % 400, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    std::string text = Encoded(bytes);
    for (size_t at = 0, end; (end = text.find("\r\n", at)) != std::string::npos; at = end + 2) {
      ASSERT_EQ(end - at, 76u);
    }
    EXPECT_LE(text.size() - text.rfind('\n') - 1, 76u);
    int length = int(text.size());
    char* decoded = DecodeBase64(text.c_str(), &length);
    if (bytes.size() % 3 == 2 && static_cast<unsigned char>(bytes.back()) >= 0x80) {
      bytes[bytes.size() - 2] = '\xFF';
    }
    EXPECT_EQ(std::string(decoded, size_t(length)), bytes);
    std::free(decoded);
  }
}

}  // namespace
}  // namespace mailslice::codec
