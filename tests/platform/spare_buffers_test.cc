#include "platform/spare_buffers.h"

#include <gtest/gtest.h>

#include <set>
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

// Room to be written is handed over as the kept buffer held it: its size, never its content,
// is what the caller asked for.
TEST(SpareBuffersTest, HandsRoomOverWithoutClearingIt) {
  OnFreshThread([] {
    std::string kept(800, 'k');
    const char* room = kept.data();
    KeepSpare(std::move(kept));
    std::string taken = TakeSpareRoom(600);
    EXPECT_EQ(taken.data(), room);
    EXPECT_EQ(taken.size(), 600u);
    std::string fresh = TakeSpareRoom(50);
    EXPECT_EQ(fresh, std::string(50, '\0'));
    // Room to be written and kept again may be much larger than asked for, up to 64 KB.
    std::string roomy;
    roomy.reserve(60 << 10);
    const char* roomyData = roomy.data();
    KeepSpare(std::move(roomy));
    EXPECT_NE(TakeSpareBytes(100).data(), roomyData);
    EXPECT_EQ(TakeSpareRoom(100).data(), roomyData);
  });
}

// Two buffers of each kind are kept (a body's decoded bytes and its page are in use together):
// the two with the most room, none over the limit.
TEST(SpareBuffersTest, KeepsTheTwoLargestBuffersUpToTheLimit) {
  OnFreshThread([] {
    std::string sizes[4];
    const size_t rooms[4] = {1 << 20, 2 << 20, 512 << 10, 64 << 20};
    const char* data[4];
    for (int k = 0; k < 4; ++k) {
      sizes[k].reserve(rooms[k]);
      data[k] = sizes[k].data();
    }
    for (std::string& buffer : sizes) KeepSpare(std::move(buffer));
    std::set<const char*> taken = {TakeSpareBytes(1 << 20).data(), TakeSpareBytes(1 << 20).data()};
    EXPECT_EQ(taken, (std::set<const char*>{data[0], data[1]}));
    EXPECT_LT(TakeSpareBytes(300 << 10).capacity(), 512u << 10);  // nothing kept now
  });
}

}  // namespace
}  // namespace mailslice::platform
