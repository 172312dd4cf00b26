#include <gtest/gtest.h>
#include <mailslice/device.h>
#include <sys/stat.h>

#include <filesystem>

#include "platform/device_settings.h"
#include "platform/temp_folder.h"
#include "support/test_support.h"

namespace {

using mailslice::testing::ScopedEnv;
using mailslice::testing::ScratchFolder;

class MessageCatalogTest : public ::testing::Test {
 protected:
  ScratchFolder folder_;
  ScopedEnv messages_{"MAILSLICE_MESSAGES", folder_.path().string()};
  ScopedEnv language_{"MAILSLICE_LANGUAGE", "81"};
};

TEST_F(MessageCatalogTest, BuiltInCatalogsServeWithoutFiles) {
  CSystemValue value;
  ASSERT_TRUE(value.LoadMessageFile(u"Email"));
  EXPECT_EQ(value.GetMessageW(116), u"10月");
  EXPECT_EQ(value.GetDateAndTimeMessage(2009, 1, 5, 5, 0, 9), u"2009/01/05 05:00:09");
  ScopedEnv korean("MAILSLICE_LANGUAGE", "82");
  ASSERT_TRUE(value.LoadMessageFile(u"Email"));
  EXPECT_EQ(value.GetMessageW(131), u"일");
  ScopedEnv unknown("MAILSLICE_LANGUAGE", "33");  // no catalog of its own: English
  ASSERT_TRUE(value.LoadMessageFile(u"Email"));
  EXPECT_EQ(value.GetMessageW(118), u"Dec");
  EXPECT_EQ(value.GetMessageW(99999), u"");
  EXPECT_FALSE(value.LoadMessageFile(u"NoSuchCatalog"));
  EXPECT_EQ(value.GetMessageW(118), u"Dec");  // a failed load keeps what was loaded
}

TEST_F(MessageCatalogTest, LanguageFileComesFirstThenTheSharedFileThenTheBuiltIns) {
  folder_.Write("Email", "133\tshared file\n1193\tafternoon\n2000\t%04d-%02d-%02dT%02d %s\n");
  folder_.Write("81/Email",
                "# comment\r\n\r\n133\t\\t(nobody)\\n\\\\x\\q\r\nnot a message\n77 no tab\n");
  CSystemValue value;
  ASSERT_TRUE(value.LoadMessageFile(u"Email"));
  EXPECT_EQ(value.GetMessageW(133), u"\t(nobody)\n\\x\\q");
  EXPECT_EQ(value.GetMessageW(1193), u"午後");  // not from the shared file: the language file won
  EXPECT_EQ(value.GetMessageW(77), u"");
  ScopedEnv german("MAILSLICE_LANGUAGE", "49");  // no file of its own
  ASSERT_TRUE(value.LoadMessageFile(u"Email"));
  EXPECT_EQ(value.GetMessageW(133), u"shared file");
  EXPECT_EQ(value.GetMessageW(1192), u"AM");
  // A catalog's own date format: integers only, so "%s" stays text.
  EXPECT_EQ(value.GetDateAndTimeMessage(2009, 1, 5, 7, 8, 9), u"2009-01-05T07 %s");
}

TEST_F(MessageCatalogTest, AFileChangedBetweenLoadsIsReadAgain) {
  CSystemValue value;
  folder_.Write("81/Email", "133\tone\n");
  ASSERT_TRUE(value.LoadMessageFile(u"Email"));
  EXPECT_EQ(value.GetMessageW(133), u"one");
  folder_.Write("81/Email", "133\ttwo\n");  // same size, same moment
  ASSERT_TRUE(value.LoadMessageFile(u"Email"));
  EXPECT_EQ(value.GetMessageW(133), u"two");
  std::filesystem::remove(folder_.path() / "81/Email");
  ASSERT_TRUE(value.LoadMessageFile(u"Email"));
  EXPECT_EQ(value.GetMessageW(133), u"(不明)");
}

TEST(DeviceTest, SettingsAreReadFreshAndBadNumbersFallBack) {
  CVelEdit device;
  ScopedEnv type("MAILSLICE_DEVICE_TYPE", "9");
  EXPECT_EQ(device.GetCurrentDeviceType(), 9);
  ScopedEnv language("MAILSLICE_LANGUAGE", "82");
  EXPECT_EQ(device.GetCurrentLanguageCode(), 82);
  EXPECT_EQ(device.GetResource(1), u"한국어");
  ScopedEnv badType("MAILSLICE_DEVICE_TYPE", "9x");
  ScopedEnv badLanguage("MAILSLICE_LANGUAGE", "");
  EXPECT_EQ(device.GetCurrentDeviceType(), 0);
  EXPECT_EQ(device.GetCurrentLanguageCode(), 1);
  EXPECT_EQ(device.GetResource(12345), u"");
}

// Within one call the settings are read once (a scope keeps them); the next call reads them
// again.
TEST(DeviceTest, ASettingsScopeKeepsWhatItReadUntilItEnds) {
  CVelEdit device;
  ScopedEnv language("MAILSLICE_LANGUAGE", "81");
  {
    mailslice::platform::SettingsScope call;
    EXPECT_EQ(device.GetCurrentLanguageCode(), 81);
    EXPECT_EQ(mailslice::platform::AnsiCodePageName(), "CP932");
    ScopedEnv changed("MAILSLICE_LANGUAGE", "82");
    ScopedEnv page("MAILSLICE_CODEPAGE", "CP1252");
    EXPECT_EQ(mailslice::platform::AnsiCodePageName(), "CP932");
    ScopedEnv type("MAILSLICE_DEVICE_TYPE", "3");  // not read before: read now
    mailslice::platform::SettingsScope nested;
    EXPECT_EQ(device.GetCurrentLanguageCode(), 81);
    EXPECT_EQ(device.GetCurrentDeviceType(), 3);
  }
  EXPECT_EQ(device.GetCurrentLanguageCode(), 81);  // `changed` is gone again
  EXPECT_EQ(mailslice::platform::AnsiCodePageName(), "CP932");
  ScopedEnv later("MAILSLICE_LANGUAGE", "7");
  EXPECT_EQ(device.GetCurrentLanguageCode(), 7);
}

// Between calls the settings follow the environment however it is changed: the pass over it
// is kept from call to call, so each kind of change must show at the next call.
TEST(DeviceTest, EveryWayOfChangingTheEnvironmentShowsAtTheNextCall) {
  CVelEdit device;
  ScopedEnv language("MAILSLICE_LANGUAGE", "81");
  EXPECT_EQ(device.GetCurrentLanguageCode(), 81);
  setenv("MAILSLICE_LANGUAGE", "82", 1);
  EXPECT_EQ(device.GetCurrentLanguageCode(), 82);

  static char handed[] = "MAILSLICE_LANGUAGE=48";
  putenv(handed);
  EXPECT_EQ(device.GetCurrentLanguageCode(), 48);
  handed[19] = '7';  // the caller rewrites the string it handed over: "=78"
  EXPECT_EQ(device.GetCurrentLanguageCode(), 78);
  handed[20] = '\0';
  EXPECT_EQ(device.GetCurrentLanguageCode(), 7);

  unsetenv("MAILSLICE_LANGUAGE");
  EXPECT_EQ(device.GetCurrentLanguageCode(), 1);

  // A whole new environment put in place.
  char entry[] = "MAILSLICE_LANGUAGE=966";
  char* replacement[] = {entry, nullptr};
  char** saved = environ;
  environ = replacement;
  EXPECT_EQ(device.GetCurrentLanguageCode(), 966);
  EXPECT_EQ(mailslice::platform::AnsiCodePageName(), "CP1256");
  environ = saved;
  EXPECT_EQ(device.GetCurrentLanguageCode(), 1);
}

// The code page name and language code worked out in one call are kept for the next while
// their variables read the same: each change, even one made in place, must show.
TEST(DeviceTest, TheCodePageFollowsItsVariablesFromCallToCall) {
  using mailslice::platform::AnsiCodePageName;
  using mailslice::platform::LanguageCode;
  auto inCall = [] {
    mailslice::platform::SettingsScope call;
    return std::to_string(LanguageCode()) + " " + AnsiCodePageName();
  };
  ScopedEnv language("MAILSLICE_LANGUAGE", "81");
  ScopedEnv page("MAILSLICE_CODEPAGE", std::nullopt);
  EXPECT_EQ(inCall(), "81 CP932");
  const std::string& lent = AnsiCodePageName();

  static char handedPage[] = "MAILSLICE_CODEPAGE=CP1251";
  putenv(handedPage);
  EXPECT_EQ(inCall(), "81 CP1251");
  handedPage[24] = '0';  // rewritten in place, same length
  EXPECT_EQ(inCall(), "81 CP1250");
  EXPECT_EQ(lent, "CP1250");  // the name lent before follows at the next call
  unsetenv("MAILSLICE_CODEPAGE");
  EXPECT_EQ(inCall(), "81 CP932");

  static char handedLanguage[] = "MAILSLICE_LANGUAGE=8\0";
  putenv(handedLanguage);
  EXPECT_EQ(inCall(), "8 CP1252");
  handedLanguage[20] = '1';  // "8" grows to "81" in place
  EXPECT_EQ(inCall(), "81 CP932");
  EXPECT_EQ(AnsiCodePageName(), "CP932");  // outside any call as well
  handedLanguage[20] = '\0';
  EXPECT_EQ(AnsiCodePageName(), "CP1252");
  handedLanguage[19] = '\0';  // empty: as if unset
  EXPECT_EQ(inCall(), "1 CP1252");
  setenv("MAILSLICE_LANGUAGE", "82", 1);
  EXPECT_EQ(inCall(), "82 CP949");
}

TEST(TempFolderTest, DefaultFolderIsPrivateAndALinkIsRefused) {
  ScratchFolder root;
  ScopedEnv chosen("MAILSLICE_TEMP", std::nullopt);
  ScopedEnv tmp("TMPDIR", root.path().string());
  auto folder = mailslice::platform::PrivateTempFolder();
  ASSERT_TRUE(folder);
  struct stat status;
  ASSERT_EQ(lstat(folder->c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  chmod(folder->c_str(), 0755);
  EXPECT_TRUE(mailslice::platform::PrivateTempFolder());
  ASSERT_EQ(lstat(folder->c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);  // made private again

  std::filesystem::remove(*folder);
  std::filesystem::create_directory_symlink(root.path(), *folder);
  EXPECT_FALSE(mailslice::platform::PrivateTempFolder());
}

}  // namespace
