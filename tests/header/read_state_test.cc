#include <fcntl.h>
#include <gtest/gtest.h>
#include <mailslice/exports.h>
#include <sys/stat.h>
#include <time.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "support/test_support.h"

namespace {

using mailslice::testing::ScopedEnv;
using mailslice::testing::ScratchFolder;
using mailslice::testing::Taken;

CString Path(const std::string& path) { return CString::FromUtf8(path); }

// Sets the file's modification time to a local calendar time.
void SetLocalModificationTime(const std::string& path, int year, int month, int day, int hour) {
  tm local{};
  local.tm_year = year - 1900, local.tm_mon = month - 1, local.tm_mday = day;
  local.tm_hour = hour, local.tm_isdst = -1;
  tzset();
  timespec times[2] = {{mktime(&local), 0}, {mktime(&local), 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

class ReadStateTest : public ::testing::Test {
 protected:
  ScratchFolder folder_;
  ScopedEnv zone_{"TZ", "Asia/Tokyo"};
};

TEST_F(ReadStateTest, ModificationYearBefore1981InLocalTimeMarksAMessage) {
  std::string path = folder_.Write("m.eml", "x");
  SetLocalModificationTime(path, 1980, 12, 31, 23);
  EXPECT_EQ(IsReadingMail(Path(path)), 1);
  SetLocalModificationTime(path, 1981, 1, 1, 0);
  EXPECT_EQ(IsReadingMail(Path(path)), 0);
  {
    // 1981-01-01 00:00 in Tokyo is still 1980 in Coordinated Universal Time: local time counts.
    ScopedEnv utc("TZ", "UTC");
    EXPECT_EQ(IsReadingMail(Path(path)), 1);
  }
  SetLocalModificationTime(path, 1969, 6, 1, 12);
  EXPECT_EQ(IsReadingMail(Path(path)), 1);
  EXPECT_EQ(IsReadingMail(Path(folder_.path() / "missing.eml")), 0);
}

TEST_F(ReadStateTest, CreationTimesCompareExactly) {
  std::string first = folder_.Write("a.eml", "a");
  std::string link = (folder_.path() / "link.eml").string();
  std::filesystem::create_hard_link(first, link);  // one file, created once
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  std::string later = folder_.Write("b.eml", "b");
  EXPECT_EQ(IsInitIndex(Path(first), Path(first)), 1);
  EXPECT_EQ(IsInitIndex(Path(first), Path(link)), 1);
  EXPECT_EQ(IsInitIndex(Path(first), Path(later)), 0);
  EXPECT_EQ(IsInitIndex(Path(first), Path(folder_.path() / "missing")), 0);
  EXPECT_EQ(IsInitIndex(Path(folder_.path() / "missing"), Path(first)), 0);
}

TEST_F(ReadStateTest, OpeningMailHandsOverTheWholeFile) {
  EXPECT_EQ(Taken(OpeningMail(Path(folder_.Write("empty.eml", "")))), "");
  std::string big(10'000'001, 'x');  // no device size limit applies here
  ScopedEnv type("MAILSLICE_DEVICE_TYPE", "3");
  EXPECT_TRUE(Taken(OpeningMail(Path(folder_.Write("big.eml", big)))) == big);
  EXPECT_EQ(OpeningMail(Path(folder_.path() / "missing.eml")), nullptr);
  EXPECT_EQ(OpeningMail(Path(folder_.path())), nullptr);
}

}  // namespace
