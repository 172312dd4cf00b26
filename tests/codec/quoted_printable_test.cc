#include "codec/quoted_printable.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <string>

#include "support/test_support.h"

namespace mailslice::codec {
namespace {

using mailslice::testing::ScopedEnv;

struct Decoded {
  std::string buffer;  // the whole result buffer
  int length;
  int error;
};

constexpr int kUntouched = -7;

Decoded Decode(const std::string& text, bool withLength) {
  int length = kUntouched;
  int error = -1;
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
    if (valid) {
      out[q++] = static_cast<char>(hex(p[0]) * 16 | hex(p[1]));
      p += 2;
    }
  }
  if (!withLength && language == 33) {
    for (size_t k = 0; k < q; ++k) out[k] = out[k] == '_' ? ' ' : out[k];
  }
  return {out, withLength ? static_cast<int>(q) : kUntouched, error};
}

std::string Text(const Decoded& decoded) { return decoded.buffer.c_str(); }

TEST(QuotedPrintableTest, DecodesTheCasesMailBrings) {
  struct Case {
    std::string text, decoded;
    int error;
  };
  const Case cases[] = {
      {"a=3Db", "a=b", 1},  // the flag is set whenever a digit place holds no CR LF
      {"a=3db", "a3db", 1},
      {"line=\r\nnext", "linenext", 0},
      {"end=4", "end", 1},
      {"x=A\r\ny", "x\ny", 1},
      {"x=\ny", "x\ny", 1},
      {"caf=C3=A9", "caf\xC3\xA9", 1},
      {"a=\xE9zb", "a\xE9zb", 1},
      {"=", "", 1},
      {"plain text", "plain text", 0},
  };
  for (const Case& c : cases) {
    Decoded got = Decode(c.text, false);
    EXPECT_EQ(Text(got), c.decoded) << c.text;
    EXPECT_EQ(got.error, c.error) << c.text;
  }
}

TEST(QuotedPrintableTest, LengthAndUnderscores) {
  {
    ScopedEnv language("MAILSLICE_LANGUAGE", "33");
    EXPECT_EQ(Text(Decode("a_b", false)), "a b");
    Decoded counted = Decode("a_b=41", true);
    EXPECT_EQ(Text(counted), "a_bA");
    EXPECT_EQ(counted.length, 4);
    // A cut escape returns at once: no length, no underscore rule.
    EXPECT_EQ(Decode("a_b=4", true).length, kUntouched);
    EXPECT_EQ(Text(Decode("a_b=4", false)), "a_b");
  }
  ScopedEnv language("MAILSLICE_LANGUAGE", "81");
  EXPECT_EQ(Text(Decode("a_b", false)), "a_b");
}

std::string RandomQuotedPrintable(std::mt19937& random) {
  const char* pieces[] = {"=", "=\r\n", "\r\n", "=3D", "=3d", "=A",   "=C3=A9", "_",  "a", "Z",
                          "0", "F",     "\r",   "\n",  " ",   "\x80", "=\n",    "=g", "=F"};
  std::string text;
  int count = std::uniform_int_distribution<int>(0, 24)(random);
  for (int k = 0; k < count; ++k) text += pieces[random() % std::size(pieces)];
  return text;
}

TEST(QuotedPrintableTest, MatchesTheLiteralReadingOnGeneratedInput) {
  std::mt19937 random(1207);
  for (int language : {1, 33}) {
    ScopedEnv setting("MAILSLICE_LANGUAGE", std::to_string(language));
    for (int round = 0; round < 3000; ++round) {
      std::string text = RandomQuotedPrintable(random);
      bool withLength = random() % 2 == 0;
      Decoded got = Decode(text, withLength);
      Decoded want = ReferenceDecode(text, withLength, language);
      ASSERT_EQ(got.buffer, want.buffer) << text;
      ASSERT_EQ(got.length, want.length) << text;
      ASSERT_EQ(got.error, want.error) << text;
    }
  }
}

}  // namespace
}  // namespace mailslice::codec
