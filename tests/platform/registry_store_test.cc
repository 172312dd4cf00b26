#include "platform/registry_store.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace mailslice::platform::registry {
namespace {

using testing::Contents;
using testing::ScopedEnv;
using testing::ScratchFolder;

constexpr char kKey[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvane\\TimeSet";

class RegistryStoreTest : public ::testing::Test {
 protected:
  ScratchFolder folder_;
  std::string path_ = (folder_.path() / "config" / "registry.reg").string();
  ScopedEnv store_{"MAILSLICE_REGISTRY", path_};
};

TEST_F(RegistryStoreTest, MissingStoreIsCreatedWithTheEmptyKey) {
  EXPECT_FALSE(QueryDword(kKey, "TimeFormat"));
  EXPECT_TRUE(CreateOrOpenKey(kKey));
  EXPECT_EQ(Contents(path_).value_or(""),
            "Windows Registry Editor Version 5.00\n\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvane\\TimeSet]\n");
  EXPECT_FALSE(QueryDword(kKey, "TimeFormat"));  // the key exists, the value does not
}

TEST_F(RegistryStoreTest, ValuesAreSetReplacedAndReadWithoutRegardToCase) {
  ASSERT_TRUE(SetDword(kKey, "TimeFormat", 1));
  ASSERT_TRUE(SetDword(kKey, "Other", 0xDEADBEEF));
  ASSERT_TRUE(SetDword(kKey, "TimeFormat", 0));
  EXPECT_EQ(QueryDword("hkey_local_machine\\software\\corvane\\timeset", "timeformat"), 0u);
  EXPECT_EQ(QueryDword(kKey, "Other"), 0xDEADBEEFu);
  EXPECT_NE(Contents(path_).value_or("").find("\"TimeFormat\"=dword:00000000\n"),
            std::string::npos);
}

TEST_F(RegistryStoreTest, ReadsCrLfFilesAndKeepsWhatItDoesNotKnow) {
  folder_.Write("config/registry.reg",
                "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\X]\r\n"
                "\"Name\"=\"text\"\r\n\r\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvane\\TimeSet]\r\n"
                "\"TimeFormat\"=dword:00000001\r\n\"Bad\"=dword:xyz\r\n");
  EXPECT_EQ(QueryDword(kKey, "TimeFormat"), 1u);
  EXPECT_FALSE(QueryDword(kKey, "Bad"));
  EXPECT_FALSE(QueryDword("HKEY_CURRENT_USER\\X", "Name"));  // not a DWORD
  ASSERT_TRUE(SetDword(kKey, "TimeFormat", 2));
  EXPECT_NE(Contents(path_).value_or("").find("[HKEY_CURRENT_USER\\X]\n\"Name\"=\"text\"\n"),
            std::string::npos);
}

TEST_F(RegistryStoreTest, AStoreInAPlaceThatIsNoFolderFailsTheCreateCall) {
  folder_.Write("config", "a file where the folder should be");
  EXPECT_FALSE(CreateOrOpenKey(kKey));
  EXPECT_FALSE(SetDword(kKey, "TimeFormat", 1));
}

}  // namespace
}  // namespace mailslice::platform::registry
