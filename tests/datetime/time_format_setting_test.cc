#include "datetime/time_format_setting.h"

#include <gtest/gtest.h>

#include <string>

#include "support/test_support.h"

namespace mailslice::datetime {
namespace {

using mailslice::testing::ScopedEnv;
using mailslice::testing::ScratchFolder;

TEST(TimeFormatSettingTest, ValueOneOrMissingMeansTwelveHours) {
  const std::string key =
      "Windows Registry Editor Version 5.00\r\n\r\n"
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvane\\TimeSet]\r\n";
  const struct {
    std::string store;  // empty: no store file yet
    int expected;
  } cases[] = {
      {"", kTwelveHourClock},
      {key, kTwelveHourClock},
      {key + "\"TimeFormat\"=dword:00000001\r\n", kTwelveHourClock},
      {key + "\"TimeFormat\"=dword:00000000\r\n", kTwentyFourHourClock},
      {key + "\"TimeFormat\"=dword:00000002\r\n", kTwentyFourHourClock},
  };
  for (const auto& c : cases) {
    ScratchFolder folder;
    std::string store = (folder.path() / "registry.reg").string();
    if (!c.store.empty()) folder.Write("registry.reg", c.store);
    ScopedEnv registry("MAILSLICE_REGISTRY", store);
    EXPECT_EQ(LoadTimeFormat(), c.expected) << c.store;
  }
}

TEST(TimeFormatSettingTest, UnusableStoreMeansTwentyFourHours) {
  ScratchFolder folder;
  // A file where the store's folder should be: nothing can be created below it.
  ScopedEnv registry("MAILSLICE_REGISTRY", folder.Write("not-a-folder", "x") + "/registry.reg");
  EXPECT_EQ(LoadTimeFormat(), kTwentyFourHourClock);
}

}  // namespace
}  // namespace mailslice::datetime
