#include "datetime/time_format_setting.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/test_support.h"

namespace mailslice::datetime {
namespace {

using mailslice::testing::ScopedEnv;
using mailslice::testing::ScratchFolder;

// The clock setting a value of 0, 1 or 2 gives is shown through the time text in
// date_display_test.cc; here the stores that hold no usable value.
TEST(TimeFormatSettingTest, NoStoreMeansTwelveHoursAnUnusableOneTwentyFour) {
  ScratchFolder folder;
  {
    ScopedEnv registry("MAILSLICE_REGISTRY", (folder.path() / "registry.reg").string());
    EXPECT_EQ(LoadTimeFormat(), kTwelveHourClock);
  }
  {
    // A link to nowhere is there but cannot be read: it is left alone.
    std::filesystem::path link = folder.path() / "link.reg";
    std::filesystem::create_symlink(folder.path() / "nowhere", link);
    ScopedEnv registry("MAILSLICE_REGISTRY", link.string());
    EXPECT_EQ(LoadTimeFormat(), kTwentyFourHourClock);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "nowhere"));
  }
  // A file where the store's folder should be: nothing can be created below it.
  ScopedEnv registry("MAILSLICE_REGISTRY", folder.Write("not-a-folder", "x") + "/registry.reg");
  EXPECT_EQ(LoadTimeFormat(), kTwentyFourHourClock);
}

}  // namespace
}  // namespace mailslice::datetime
