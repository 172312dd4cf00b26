// The codec exports forward to the library-wide instances and hand over what they promise.
#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <cstdlib>
#include <string>

namespace {

TEST(CodecExportsTest, DecodersAndEncodersHandOverTheirResults) {
  char* decoded = Base64Decode("QUJD", nullptr);
  EXPECT_STREQ(decoded, "ABC");
  std::free(decoded);
  char* text = QPdecode("a=3Db");
  EXPECT_STREQ(text, "a=b");
  std::free(text);

  const auto* bytes = reinterpret_cast<const unsigned char*>("ABCD");
  for (char* encoded : {Encode(bytes, 4), EncodeToChar(bytes, 4)}) {
    EXPECT_STREQ(encoded, "QUJDRA==");
    std::free(encoded);
  }
  EXPECT_EQ(EncodeToCString(bytes, 4, 0), u"QUJDRA==");
}

TEST(CodecExportsTest, TheCoderKeepsItsMessagesUntilFreed) {
  Base64CoderEncode("ABCD");
  EXPECT_STREQ(Base64CoderEncodedMessage(), "QUJDRA==");
  EXPECT_EQ(Base64CoderEncodedLength(), 8);
  Base64CoderDecode("QUJD\r\n");
  EXPECT_EQ(std::string(Base64CoderDecodedMessage(), Base64CoderDecodedLength()), "ABC");
  Base64CoderDecodedFreeMemory();
  Base64CoderEncodedFreeMemory();
  EXPECT_EQ(Base64CoderDecodedMessage(), nullptr);
  EXPECT_EQ(Base64CoderEncodedMessage(), nullptr);
  EXPECT_EQ(Base64CoderDecodedLength(), 0);
}

TEST(CodecExportsTest, JapaneseConversions) {
  char euc[] = "\xB0\xA1";
  EXPECT_EQ(euc2sjs(euc), 0);
  EXPECT_STREQ(euc, "\x88\x9F");
  char sjis[8] = {};
  EXPECT_EQ(jis2sjs(sjis, "\x1B$B0!\x1B(B"), sjis);
  EXPECT_STREQ(sjis, "\x88\x9F");
  char jis[16] = {};
  SJIStoJIS(jis, sjis);
  EXPECT_STREQ(jis, "\x1B$B0!\x1B(B");
  char* narrowed = utf82sjs("plain");
  EXPECT_STREQ(narrowed, "plain");
  std::free(narrowed);
  utf72sjs(static_cast<char*>(std::calloc(1, 1)));
}

}  // namespace
