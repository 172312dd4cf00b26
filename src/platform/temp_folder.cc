#include "platform/temp_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>

#include "platform/device_settings.h"
#include "platform/file_system.h"
#include "platform/folder_acl.h"
#include "platform/kept_file.h"

namespace mailslice::platform {
namespace {

constexpr mode_t kGroupAndOtherBits = 077;

int64_t Nanoseconds(const struct timespec& time) {
  return static_cast<int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

// Whether the folder gives its new files a default ACL. Every save asks it of the same folder,
// which does not change meanwhile (the staged file has no name in it): the answer is kept
// while the folder's identity and change time are as they were, since setting an ACL moves
// the change time.
bool FolderGivesDefaultAcl(const std::string& path, const struct stat& status) {
  struct Kept {
    std::string path;
    dev_t device = 0;
    ino_t inode = 0;
    int64_t changeTime = 0;
    bool acl = false;
  };
  thread_local Kept kept;
  int64_t changeTime = Nanoseconds(status.st_ctim);
  if (kept.path == path && kept.device == status.st_dev && kept.inode == status.st_ino &&
      kept.changeTime == changeTime) {
    return kept.acl;
  }
  int64_t lookedAt = NowNanoseconds();
  bool acl = GivesDefaultAcl(path);
  if (SettledWhenLooked(changeTime, lookedAt)) {
    kept = {path, status.st_dev, status.st_ino, changeTime, acl};
  } else {
    kept.path.clear();
  }
  return acl;
}

// True when `path` is a real folder (not a link) owned by this user; `tighten` takes away any
// access of other users. `*look`, when asked for, is filled in.
bool IsOwnFolder(const std::string& path, bool tighten, TempFolderLook* look) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) return false;
  if (status.st_uid != geteuid()) return false;
  bool closed = (status.st_mode & kGroupAndOtherBits) == 0;
  if (tighten && !closed) {
    if (chmod(path.c_str(), 0700) != 0) return false;
    closed = true;
  }
  if (look != nullptr) {
    look->movable =
        closed && (status.st_mode & S_ISGID) == 0 && !FolderGivesDefaultAcl(path, status);
    look->device = static_cast<uint64_t>(status.st_dev);
    look->inode = static_cast<uint64_t>(status.st_ino);
    look->changeTime = Nanoseconds(status.st_ctim);
    look->lookedAt = NowNanoseconds();
  }
  return true;
}

}  // namespace

std::optional<std::string> PrivateTempFolder(TempFolderLook* look) {
  auto chosen = TempFolderSetting();
  // A folder the user chose keeps its mode; the default one in a shared place is made private.
  std::string path = chosen ? *chosen : HostTempRoot() + "/mailslice-" + std::to_string(geteuid());
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  // The folder is usually there from the last call: one look spares creating it and its parents.
  if (!IsOwnFolder(path, !chosen, look)) {
    if (Files().MakeFolders(path, true) != kErrorSuccess) return std::nullopt;
    if (!IsOwnFolder(path, !chosen, look)) return std::nullopt;
  }
  return path;
}

}  // namespace mailslice::platform
