#include "codec/quoted_printable.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "support/test_support.h"

namespace mailslice::codec {
namespace {

using mailslice::testing::Repeated;
using mailslice::testing::ScopedEnv;

constexpr int kUntouched = -7;

struct Decoded {
  std::string buffer;  // the whole result buffer
  int length, error;
  bool operator==(const Decoded&) const = default;
  std::string Text() const { return buffer.c_str(); }
};

void PrintTo(const Decoded& d, std::ostream* out) {
  *out << ::testing::PrintToString(d.buffer) << " length " << d.length << " error " << d.error;
}

Decoded Decode(const std::string& text, bool withLength = false) {
  int length = kUntouched, error = -1;
  char* result = DecodeQuotedPrintable(text.c_str(), withLength ? &length : nullptr, &error);
  Decoded decoded{std::string(result, text.size() + 1), length, error};
  std::free(result);
  return decoded;
}

// The decoder read literally, one byte at a time.
Decoded ReferenceDecode(const std::string& text, bool withLength, int language) {
  auto hex = [](char c) {
    return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
  };
  std::string out(text.size() + 1, '\0');
  const char* p = text.c_str();
  size_t q = 0;
  int error = 0;
  while (*p != '\0') {
    if (*p != '=') {
      out[q++] = *p++;
      continue;
    }
    if (p[1] == '\0' || p[2] == '\0') return {out, kUntouched, 1};
    ++p;
    bool valid = true;
    for (int k = 0; k < 2; ++k) {
      if (hex(p[k]) < 0) valid = false;
      if (p[k] == '\r' && p[k + 1] == '\n') {
        p += 2;
        break;
      }
      error = 1;
    }
    if (valid) out[q++] = static_cast<char>(hex(p[0]) * 16 | hex(p[1])), p += 2;
  }
  for (size_t k = 0; !withLength && language == 33 && k < q; ++k) {
    if (out[k] == '_') out[k] = ' ';
  }
  return {out, withLength ? static_cast<int>(q) : kUntouched, error};
}

TEST(QuotedPrintableTest, DecodesTheCasesMailBrings) {
  const std::tuple<std::string, std::string, int> cases[] = {
      {"a=3Db", "a=b", 1},  // the flag is set whenever a digit place holds no CR LF
      {"a=3db", "a3db", 1},    {"line=\r\nnext", "linenext", 0}, {"end=4", "end", 1},
      {"x=A\r\ny", "x\ny", 1}, {"a=\xE9zb", "a\xE9zb", 1}};
  for (const auto& [text, decoded, error] : cases) {
    EXPECT_EQ(Decode(text).Text(), decoded) << text;
    EXPECT_EQ(Decode(text).error, error) << text;
  }
}

TEST(QuotedPrintableTest, UnderscoresBecomeSpacesOnlyUncountedAndUnderLanguage33) {
  {
    ScopedEnv language("MAILSLICE_LANGUAGE", "33");
    EXPECT_EQ(Decode("a_b").Text(), "a b");
    EXPECT_EQ(Decode("a_b=41", true), (Decoded{std::string("a_bA\0\0\0", 7), 4, 1}));
    // A cut escape returns at once: no length, no underscore rule.
    EXPECT_EQ(Decode("a_b=4", true).length, kUntouched);
    EXPECT_EQ(Decode("a_b=4").Text(), "a_b");
  }
  ScopedEnv language("MAILSLICE_LANGUAGE", "81");
  EXPECT_EQ(Decode("a_b").Text(), "a_b");
}

// Every pair of bytes after an "=", inside text long enough for the block decoder and next to
// an escape it takes: only upper-case hex digits make an escape.
TEST(QuotedPrintableTest, EveryPairAfterAnEqualsSignReadsAsTheLiteralReading) {
  const std::string before(40, 'a'), after = "=C3=A9" + std::string(40, 'b');
  for (unsigned first = 1; first < 256; ++first) {
    for (unsigned second = 1; second < 256; ++second) {
      std::string text =
          before + "=" + static_cast<char>(first) + static_cast<char>(second) + after;
      ASSERT_EQ(Decode(text, true), ReferenceDecode(text, true, 1)) << first << " " << second;
    }
  }
}

TEST(QuotedPrintableTest, MatchesTheLiteralReadingOnGeneratedInput) {
  const char* pieces[] = {"=",
                          "=\r\n",
                          "\r\n",
                          "=3D",
                          "=3d",
                          "=A",
                          "=C3=A9",
                          "_",
                          "a",
                          "Z",
                          "0",
                          "F",
                          "\r",
                          "\n",
                          " ",
                          "\x80",
                          "=\n",
                          "=g",
                          "=F",
                          "a plain run longer than one block ",
                          "=41=42=43=44=45=46",
                          "=0A",
                          "=\r\n=\r\n",
                          "=\r"};
  std::mt19937 random(1207);
  for (int language : {1, 33}) {
    ScopedEnv setting("MAILSLICE_LANGUAGE", std::to_string(language));
    for (int round = 0; round < 6000; ++round) {
      std::string text;
      for (int k = int(random() % 80); k > 0; --k) text += pieces[random() % std::size(pieces)];
      bool withLength = random() % 2 == 0;
      Decoded expected = ReferenceDecode(text, withLength, language);
      ASSERT_EQ(Decode(text, withLength), expected) << text;
      if (withLength) continue;
      // A body is the same text up to its NUL, whatever the buffer held before.
      std::string body(random() % 100, 'x');
      DecodeQuotedPrintableBody(text.c_str(), text.size(), body);
      ASSERT_EQ(body.size(), text.size() + 1);
      ASSERT_EQ(std::string(body.c_str()), expected.Text()) << text;
    }
  }
  std::string large = Repeated("caf=C3=A9 au lait=\r\n ", 200000);
  std::string body;
  DecodeQuotedPrintableBody(large.c_str(), large.size(), body);
  EXPECT_EQ(std::string(body.c_str()), Decode(large).Text());
}

}  // namespace
}  // namespace mailslice::codec
