#include "attach/staged_file.h"

#include <gtest/gtest.h>

#include "platform/kept_file.h"

namespace {

using mailslice::attach::FreeTempPath;
using mailslice::platform::TempFolderLook;

constexpr int64_t kSecond = 1'000'000'000;

// A look at the folder `seconds` after its last change.
TempFolderLook LookAfter(int64_t seconds) {
  TempFolderLook look;
  look.device = 7;
  look.inode = 42;
  look.changeTime = 1'700'000'000 * kSecond;
  look.lookedAt = look.changeTime + seconds * kSecond;
  return look;
}

// The temporary path is taken as free only while the folder is the one looked at and has not
// changed since; a look right after a change teaches nothing.
TEST(FreeTempPathTest, KnownOnlyWhileTheFolderIsUnchanged) {
  const std::string path = "/tmp/t/AttachTempfile~.txt";
  FreeTempPath known;
  TempFolderLook settled = LookAfter(60);
  EXPECT_FALSE(known.Known(path, settled));
  known.Note(path, settled);
  EXPECT_TRUE(known.Known(path, settled));
  TempFolderLook later = settled;
  later.lookedAt += 3600 * kSecond;
  EXPECT_TRUE(known.Known(path, later));  // the same folder, unchanged, looked at again

  TempFolderLook changed = settled;
  changed.changeTime += 1;  // something put in the folder or taken out
  TempFolderLook otherFolder = settled;
  otherFolder.inode = 43;  // the folder made anew
  TempFolderLook otherDevice = settled;
  otherDevice.device = 8;
  for (const TempFolderLook& look : {changed, otherFolder, otherDevice}) {
    EXPECT_FALSE(known.Known(path, look));
  }
  EXPECT_FALSE(known.Known("/tmp/u/AttachTempfile~.txt", settled));

  known.Note(path, LookAfter(0));  // within a timestamp tick of the change
  EXPECT_FALSE(known.Known(path, LookAfter(0)));
  EXPECT_FALSE(known.Known(path, settled));
  known.Note(path, settled);
  known.Forget();
  EXPECT_FALSE(known.Known(path, settled));
}

}  // namespace
