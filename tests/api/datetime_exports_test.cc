// The Date of a loaded message, parsed, joined and shown in the device's zone.
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
  EXPECT_EQ(ConvertToDisplayTime(GetNewDate(fields)).ToUtf8(), "2008/12/31 20:30:00");
}

}  // namespace
