#include "datetime/time_format_setting.h"

#include <gtest/gtest.h>

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
  // A file where the store's folder should be: nothing can be created below it.
  ScopedEnv registry("MAILSLICE_REGISTRY", folder.Write("not-a-folder", "x") + "/registry.reg");
  EXPECT_EQ(LoadTimeFormat(), kTwentyFourHourClock);
}

}  // namespace
}  // namespace mailslice::datetime
