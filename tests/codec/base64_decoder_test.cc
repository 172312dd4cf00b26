#include "codec/base64_decoder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace mailslice::codec {
namespace {

constexpr int kNoLength = -1000;  // in the tables: decode without a length pointer
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Decoded {
  std::string buffer;  // the whole result buffer, uncounted bytes included
  int length;
  int error;
};

Decoded Decode(const std::string& text, int count) {
  int length = count;
  int error = -1;
  char* result = DecodeBase64(text.c_str(), count == kNoLength ? nullptr : &length, &error);
  size_t size =
      (count == kNoLength || count > static_cast<int>(text.size()) ? text.size() : size_t(count)) +
      1;
  Decoded decoded{std::string(result, size), length, error};
  std::free(result);
  return decoded;
}

// The decoder read literally: the counters i and L of the plain loop, and a read position that
// may look one byte past the count (here into padding).
Decoded ReferenceDecode(const std::string& text, int count) {
  auto value = [](unsigned char c) -> int8_t {
    const char* at = c == 0 ? nullptr : std::strchr(kAlphabet, c);
    return at ? static_cast<int8_t>(at - kAlphabet) : static_cast<int8_t>(0x82);
  };
  std::string padded = text + std::string(8, '\0');
  const unsigned char* p = reinterpret_cast<const unsigned char*>(padded.c_str());
  int L = count;
  std::string out(count + 4, '\0');
  int cursor = 0, n = 0, i = 1, error = 0;
  int32_t acc = 0;
  auto store = [&] {
    acc >>= 6;
    out[cursor] = char(acc >> 16), out[cursor + 1] = char(acc >> 8), out[cursor + 2] = char(acc);
  };
  while (*p != '=' && i <= L) {
    while (value(*p) == static_cast<int8_t>(0x82)) {
      if (*p != '\r' && *p != '\n') error = 1;
      ++p;
      --L;
      if (!(i < L)) break;
    }
    acc = static_cast<int32_t>(static_cast<uint32_t>(acc | value(*p++)) << 6);
    if (i % 4 == 0) {
      store();
      cursor += 3, n += 3, acc = 0;
    }
    ++i;
  }
  --i;
  if (int r = i % 4; r != 0) {
    for (int k = 0; k < 4 - r; ++k) acc = static_cast<int32_t>(static_cast<uint32_t>(acc) << 6);
    n += r - 1;
    store();
  }
  out.resize(count + 1);
  return {out, n, error};
}

TEST(Base64DecoderTest, DecodesTheCasesMailBrings) {
  struct Case {
    std::string text;
    int count;
    std::string buffer;
    int length, error;
  };
  const Case cases[] = {
      {"QUJD", kNoLength, std::string("ABC\0", 5), kNoLength, 0},
      {"QUI=", 4, std::string("AB\0\0\0", 5), 2, 0},
      {"QQ==", 4, std::string("A\0\0\0\0", 5), 1, 0},
      // One character of a last group gives no byte, but its bits land in the buffer.
      {"Q", 1, std::string("@\0", 2), 0, 0},
      {"QUJD\r\nREVG", 10, std::string("ABCDEF") + std::string(5, '\0'), 6, 0},
      {"QU JD", 5, std::string("ABC\0\0\0", 6), 3, 1},
      {"QUJDREVG", 4, std::string("ABC\0\0", 5), 3, 0},
      {"QUI=\r\nQUJD", 10, std::string("AB") + std::string(9, '\0'), 2, 0},
      // An "=" met while skipping a line break is skipped like any stray byte.
      {"QUJD\r\n=QUJD", 11, std::string("ABCABC") + std::string(6, '\0'), 6, 1},
      // The closing line break: the LF is taken as the input runs out and spoils the last,
      // uncounted group.
      {"QUJD\r\n", 6, std::string("ABC\x08\0\0\0", 7), 3, 0},
      {"QUJD ", 5, std::string("ABC\x08\0\0", 6), 3, 1},
      {"", 0, std::string("\0", 1), 0, 0},
  };
  for (const Case& c : cases) {
    Decoded got = Decode(c.text, c.count);
    EXPECT_EQ(got.buffer, c.buffer) << c.text;
    EXPECT_EQ(got.length, c.length) << c.text;
    EXPECT_EQ(got.error, c.error) << c.text;
  }
}

TEST(Base64DecoderTest, StopsAtTheTerminatorWhateverTheCount) {
  // Exactly sized, so that a read past the NUL shows in the sanitizer build.
  std::unique_ptr<char[]> text(new char[5]);
  std::memcpy(text.get(), "QUJD", 5);
  int length = 100;
  char* result = DecodeBase64(text.get(), &length);
  EXPECT_EQ(std::string(result, 4), std::string("ABC\0", 4));
  EXPECT_EQ(length, 3);
  std::free(result);

  for (int count : {-1, -5}) {
    length = count;
    result = DecodeBase64("QUJD", &length);
    EXPECT_STREQ(result, "");
    EXPECT_EQ(length, count == -1 ? 0 : count);
    std::free(result);
  }
}

// Inputs of the kinds mail brings and breaks: Base64 with line breaks and stray bytes, "=" in
// odd places, and plain noise.
std::string RandomInput(std::mt19937& random) {
  const std::string noise = std::string("\r\n =-\x80\xFF.") + kAlphabet;
  std::string text;
  int size = std::uniform_int_distribution<int>(0, 48)(random);
  bool mostlyBase64 = random() % 2 == 0;
  for (int k = 0; k < size; ++k) {
    int roll = std::uniform_int_distribution<int>(0, 99)(random);
    if (mostlyBase64 && roll < 85) {
      text += kAlphabet[random() % 64];
    } else if (mostlyBase64 && roll < 93) {
      text += "\r\n";
    } else {
      text += noise[random() % noise.size()];
    }
  }
  return text;
}

TEST(Base64DecoderTest, MatchesTheLiteralReadingOnGeneratedInput) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 20000; ++round) {
    std::string text = RandomInput(random);
    int count = random() % 3 == 0 ? static_cast<int>(random() % (text.size() + 1))
                                  : static_cast<int>(text.size());
    Decoded got = Decode(text, count);
    Decoded want = ReferenceDecode(text, count);
    ASSERT_EQ(got.buffer, want.buffer) << ::testing::PrintToString(text) << " count " << count;
    ASSERT_EQ(got.length, want.length) << text << " count " << count;
    ASSERT_EQ(got.error, want.error) << text << " count " << count;
  }
}

// The bytes of `text` decoded in blocks whose sizes come from `sizes`, cycled.
std::pair<std::string, int> DecodeInBlocks(const std::string& text, const std::vector<int>& sizes) {
  Base64BlockDecoder decoder;
  std::string out;
  size_t at = 0;
  for (size_t k = 0; at < text.size(); ++k) {
    size_t size = std::min<size_t>(sizes[k % sizes.size()], text.size() - at);
    decoder.Decode(std::string_view(text).substr(at, size), false, out);
    at += size;
  }
  decoder.Decode({}, true, out);
  return {out, decoder.error()};
}

TEST(Base64BlockDecoderTest, BlocksOfAnySizeDecodeLikeTheWholeBody) {
  std::string body;
  for (int k = 0; k < 40; ++k) body += std::string(76, kAlphabet[k % 64]) + "\r\n";
  body += "QUI=\r\n";
  Decoded whole = Decode(body, static_cast<int>(body.size()));
  for (int size : {1, 2, 3, 5, 7, 75, 76, 77, 78, 79, 131, 1000, 4096}) {
    auto [bytes, error] = DecodeInBlocks(body, {size});
    EXPECT_EQ(bytes, whole.buffer.substr(0, whole.length)) << "blocks of " << size;
    EXPECT_EQ(error, 0);
  }

  std::mt19937 random(7);
  for (int round = 0; round < 5000; ++round) {
    std::string text = RandomInput(random);
    std::vector<int> sizes = {1 + int(random() % 7), 1 + int(random() % 3), 1 + int(random() % 9)};
    Decoded want = Decode(text, static_cast<int>(text.size()));
    auto [bytes, error] = DecodeInBlocks(text, sizes);
    ASSERT_EQ(bytes, want.buffer.substr(0, want.length)) << text;
    ASSERT_EQ(error, want.error) << text;
  }
}

TEST(Base64BlockDecoderTest, IgnoresWhatFollowsTheEnd) {
  Base64BlockDecoder decoder;
  std::string out;
  decoder.Decode("QUI", false, out);
  decoder.Decode("=\r\nQUJD", false, out);
  EXPECT_TRUE(decoder.finished());
  decoder.Decode("QUJD", true, out);
  EXPECT_EQ(out, "AB");
}

}  // namespace
}  // namespace mailslice::codec
