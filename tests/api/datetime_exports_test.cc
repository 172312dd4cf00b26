// The date exports as the mail application calls them: the Date of a loaded message parsed,
// joined and shown in the device's zone.
#include <gtest/gtest.h>
#include <mailslice/exports.h>
#include <time.h>

#include "support/test_support.h"

namespace {

using mailslice::testing::ScopedEnv;

TEST(DatetimeExportsTest, DateOfALoadedMessageShownInTheDevicesZone) {
  mailslice::testing::ScratchFolder folder;
  ScopedEnv zone("TZ", "<-05>5"), language("MAILSLICE_LANGUAGE", "1"),
      messages("MAILSLICE_MESSAGES", std::nullopt),
      registry("MAILSLICE_REGISTRY", (folder.path() / "registry.reg").string());
  tzset();
  // A folded Date line with tabs, as some mail programs write it.
  std::string message = folder.Write(
      "m.eml", "From: a@example.org\r\nDate: Thu, 1 Jan 2009\r\n\t02:30:00\t+0100 (CET)\r\n\r\n");
  ASSERT_EQ(MessageFileOpenAndMemoryAlloc(CString::FromUtf8(message)), 1);
  CString fields[8];
  GetParsingDate(GetDate(), fields);
  MessageMemoryFree();
  EXPECT_EQ(GetNewDate(fields).ToUtf8(), "2009/01/01 01:30:00");
  EXPECT_EQ(GetTimeZoneBias(), -300);
  EXPECT_EQ(ConvertToDisplayTime(GetNewDate(fields)).ToUtf8(), "2008/12/31 20:30:00");
  double local = 39813.0 + 20.5 / 24;  // 31 December 2008, 20:30
  EXPECT_EQ(GetDateMsg(0, 0, local).ToUtf8() + " " + GetTimeMsg(0, 0, local).ToUtf8(),
            "Wed, Dec 31, 2008 08:30:00 PM");
  GetParsingDate(u"Mon, 5 Jan 2009 10:20:30 +0900", nullptr);  // no entries: nothing to fill
  EXPECT_TRUE(GetNewDate(nullptr).IsEmpty());
}

}  // namespace
