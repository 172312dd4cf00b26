#include "platform/spare_buffers.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace mailslice::platform {
namespace {

// Each thread keeps its own buffers: a new thread starts with none.
template <typename Check>
void OnFreshThread(Check check) {
  std::thread(check).join();
}

TEST(SpareBuffersTest, HandsTheKeptBufferOnlyToTextsItSuits) {
  OnFreshThread([] {
    std::u16string kept;
    kept.reserve(1000);
    const char16_t* room = kept.data();
    KeepSpare(std::move(kept));
    std::u16string small = TakeSpareWide(100);  // would hold on to ten times its size
    EXPECT_NE(small.data(), room);
    std::u16string suited = TakeSpareWide(600);
    EXPECT_EQ(suited.data(), room);
    EXPECT_TRUE(suited.empty());
    std::u16string again = TakeSpareWide(600);  // taken already
    EXPECT_NE(again.data(), room);
    EXPECT_GE(again.capacity(), 600u);
  });
}

TEST(SpareBuffersTest, KeepsTheLargerBufferUpToTheLimit) {
  OnFreshThread([] {
    std::string large, larger, huge;
    large.reserve(1 << 20);
    larger.reserve(2 << 20);
    huge.reserve(64 << 20);
    const char* kept = larger.data();
    KeepSpare(std::move(larger));
    KeepSpare(std::move(large));  // smaller than the one kept
    KeepSpare(std::move(huge));   // over the limit
    EXPECT_EQ(TakeSpareBytes(1 << 20).data(), kept);
  });
}

}  // namespace
}  // namespace mailslice::platform
