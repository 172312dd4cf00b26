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

constexpr int kNoLength = -1000;  // decode without a length pointer
constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Decoded {
  std::string buffer;  // the whole result buffer, uncounted bytes included
  int length, error;
  bool operator==(const Decoded&) const = default;
};

void PrintTo(const Decoded& d, std::ostream* out) {
  *out << ::testing::PrintToString(d.buffer) << " length " << d.length << " error " << d.error;
}

Decoded Decode(const std::string& text, int count) {
  int length = count, error = -1;
  char* result = DecodeBase64(text.c_str(), count == kNoLength ? nullptr : &length, &error);
  size_t size = count == kNoLength || count > int(text.size()) ? text.size() : size_t(count);
  Decoded decoded{std::string(result, size + 1), length, error};
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
  int L = count, cursor = 0, n = 0, i = 1, error = 0;
  std::string out(count + 4, '\0');
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
    if (i % 4 == 0) store(), cursor += 3, n += 3, acc = 0;
    ++i;
  }
  if (int r = (i - 1) % 4; r != 0) {
    for (int k = 0; k < 4 - r; ++k) acc = static_cast<int32_t>(static_cast<uint32_t>(acc) << 6);
    n += r - 1;
    store();
  }
  out.resize(count + 1);
  return {out, n, error};
}

TEST(Base64DecoderTest, DecodesTheCasesMailBrings) {
  using std::string;
  const std::pair<std::pair<string, int>, Decoded> cases[] = {
      {{"QUJD", kNoLength}, {string("ABC\0", 5), kNoLength, 0}},
      // One character of a last group gives no byte, but its bits land in the buffer.
      {{"Q", 1}, {string("@\0", 2), 0, 0}},
      {{"QUJDREVG", 4}, {string("ABC\0\0", 5), 3, 0}},
      {{"QU JD=QUJD", 10}, {"ABC" + string(8, '\0'), 3, 1}},
      // An "=" met while skipping a line break is skipped like any stray byte.
      {{"QUJD\r\n=QUJD", 11}, {"ABCABC" + string(6, '\0'), 6, 1}},
      // The closing LF is taken as the input runs out and spoils the last, uncounted group.
      {{"QUJD\r\n", 6}, {string("ABC\x08\0\0\0", 7), 3, 0}},
      {{"", 0}, {string("\0", 1), 0, 0}}};
  for (const auto& [in, want] : cases) EXPECT_EQ(Decode(in.first, in.second), want) << in.first;
}

TEST(Base64DecoderTest, StopsAtTheTerminatorWhateverTheCount) {
  // Exactly sized, so that a read past the NUL shows in the sanitizer build.
  std::unique_ptr<char[]> text(new char[5]);
  std::memcpy(text.get(), "QUJD", 5);
  for (int count : {100, -1, -5}) {
    int length = count;
    char* result = DecodeBase64(text.get(), &length);
    EXPECT_EQ(std::string(result), count > 0 ? "ABC" : "");
    EXPECT_EQ(length, count > 0 ? 3 : count == -1 ? 0 : count);
    std::free(result);
  }
}

// Lines of clean Base64 long enough for the vector path (which takes 32 characters a step),
// of any length, with now and then a byte of every kind anywhere in them.
std::string RandomLines(std::mt19937& random) {
  std::string text;
  for (int lines = 1 + int(random() % 6); lines > 0; --lines) {
    for (int k = int(random() % 100); k > 0; --k) {
      text += random() % 60 == 0 ? char(1 + random() % 255) : kAlphabet[random() % 64];
    }
    text += random() % 8 == 0 ? "\n" : "\r\n";
  }
  return text;
}

// Inputs of the kinds mail brings and breaks: Base64 with line breaks and stray bytes, "=" in
// odd places, and plain noise.
std::string RandomInput(std::mt19937& random) {
  if (random() % 3 == 0) return RandomLines(random);
  const std::string noise = std::string("\r\n =-\x80\xFF.") + kAlphabet;
  std::string text;
  bool mostlyBase64 = random() % 2 == 0;
  for (int k = int(random() % 49); k > 0; --k) {
    unsigned roll = random() % 100;
    if (mostlyBase64 && roll < 93) {
      text += roll < 85 ? std::string(1, kAlphabet[random() % 64]) : "\r\n";
    } else {
      text += noise[random() % noise.size()];
    }
  }
  return text;
}

TEST(Base64DecoderTest, MatchesTheLiteralReadingOnGeneratedInput) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 10000; ++round) {
    std::string text = RandomInput(random);
    int count = random() % 3 == 0 ? int(random() % (text.size() + 1)) : int(text.size());
    ASSERT_EQ(Decode(text, count), ReferenceDecode(text, count))
        << ::testing::PrintToString(text) << " count " << count;
  }
}

// Every byte value at every place of a run the vector path would take whole: only the 64
// alphabet characters may be decoded there.
TEST(Base64DecoderTest, TellsEveryByteOutsideTheAlphabetInLongRuns) {
  std::string clean;
  for (int k = 0; k < 96; ++k) clean += kAlphabet[(k * 7) % 64];
  for (int byte = 1; byte < 256; ++byte) {
    for (size_t at : {0, 5, 31, 32, 47, 63, 64, 95}) {
      std::string text = clean;
      text[at] = char(byte);
      ASSERT_EQ(Decode(text, int(text.size())), ReferenceDecode(text, int(text.size())))
          << "byte " << byte << " at " << at;
    }
  }
}

// The bytes of `text` decoded in blocks whose sizes come from `sizes`, cycled, and the error.
// The last block comes marked final, as the attachment saver passes it, or is followed by an
// empty final one.
Decoded DecodeInBlocks(const std::string& text, const std::vector<int>& sizes,
                       bool emptyFinal = true) {
  Base64BlockDecoder decoder;
  std::string out;
  for (size_t at = 0, k = 0; at < text.size(); at += size_t(sizes[k++ % sizes.size()])) {
    size_t size = size_t(sizes[k % sizes.size()]);
    decoder.Decode(std::string_view(text).substr(at, size), !emptyFinal && at + size >= text.size(),
                   out);
  }
  decoder.Decode({}, true, out);  // ignored after a final block
  return {out, int(out.size()), decoder.error()};
}

Decoded Whole(const std::string& text) {
  Decoded whole = Decode(text, int(text.size()));
  whole.buffer.resize(size_t(whole.length));
  return whole;
}

TEST(Base64BlockDecoderTest, BlocksOfAnySizeDecodeLikeTheWholeBody) {
  std::string body;
  for (int k = 0; k < 40; ++k) body += std::string(76, kAlphabet[k % 64]) + "\r\n";
  body += "QUI=\r\n";
  for (int size : {1, 2, 3, 5, 75, 76, 77, 78, 79, 131, 4096}) {
    EXPECT_EQ(DecodeInBlocks(body, {size}), Whole(body)) << "blocks of " << size;
  }
  std::mt19937 random(7);
  for (int round = 0; round < 5000; ++round) {
    std::string text = RandomInput(random);
    std::vector<int> sizes = {1 + int(random() % 7), 1 + int(random() % 3), 1 + int(random() % 9)};
    ASSERT_EQ(DecodeInBlocks(text, sizes, round % 2 == 0), Whole(text))
        << ::testing::PrintToString(text);
  }
  // What follows the "=" that ends the text is ignored, in later blocks too.
  EXPECT_EQ(DecodeInBlocks("QUI=\r\nQUJDQUJD", {3, 4, 4}).buffer, "AB");
}

}  // namespace
}  // namespace mailslice::codec
