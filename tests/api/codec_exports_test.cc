// The codec exports forward to the library-wide instances and hand over what they promise.
#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <cstdlib>
#include <string>

#include "support/test_support.h"

namespace {

using mailslice::testing::Taken;

TEST(CodecExportsTest, DecodersAndEncodersHandOverTheirResults) {
  EXPECT_EQ(Taken(Base64Decode("QUJD", nullptr)), "ABC");
  EXPECT_EQ(Taken(QPdecode("a=3Db")), "a=b");
  const auto* bytes = reinterpret_cast<const unsigned char*>("ABCD");
  EXPECT_EQ(Taken(Encode(bytes, 4)), "QUJDRA==");
  EXPECT_EQ(Taken(EncodeToChar(bytes, 4)), "QUJDRA==");
  EXPECT_EQ(EncodeToCString(bytes, 4, 0), u"QUJDRA==");
}

}  // namespace
