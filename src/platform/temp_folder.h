// The private temporary folder that stands for the device's "\temp\".
#ifndef MAILSLICE_PLATFORM_TEMP_FOLDER_H
#define MAILSLICE_PLATFORM_TEMP_FOLDER_H

#include <cstdint>
#include <optional>
#include <string>

namespace mailslice::platform {

// $MAILSLICE_TEMP, else mailslice-<uid> under $TMPDIR (or /tmp), created with mode 0700 when
// missing. Nothing when the folder cannot be made, or when what is there is not a folder of
// this user (a link or another user's folder planted in a shared place is never used).
struct TempFolderLook {
  // Whether a file made in the folder may leave it as it is: the folder is closed to every
  // other user (no access for group or others, as the default folder always is; a folder the
  // user chose may not be), so its files need no mode of their own to stay private, and it
  // gives them nothing of its own (no default ACL, not its group).
  bool movable = false;
  // The file system the folder is on, as stat gives it, and which folder of it this is.
  uint64_t device = 0;
  uint64_t inode = 0;
  // When the folder last changed (anything put in it or taken out moves this time) and when
  // it was looked at, in nanoseconds as NowNanoseconds gives them.
  int64_t changeTime = 0;
  int64_t lookedAt = 0;
};

// `look`, when given, tells what a save needs to know of the folder.
std::optional<std::string> PrivateTempFolder(TempFolderLook* look = nullptr);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_TEMP_FOLDER_H
