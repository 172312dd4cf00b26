#include "platform/folder_acl.h"

#include <errno.h>
#include <sys/xattr.h>

#include <array>
#include <chrono>
#include <cstdint>

namespace mailslice::platform {
namespace {

// A change within a timestamp tick of the asking could leave the change time as it was; an
// answer is kept only when the folder's last change is older than this.
constexpr int64_t kSettledNanoseconds = int64_t{3} * 1'000'000'000;

struct Answer {
  std::string folder;
  dev_t device = 0;
  ino_t inode = 0;
  int64_t changeTime = 0;
  bool hasAcl = false;
};

int64_t Nanoseconds(const struct timespec& time) {
  return static_cast<int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

int64_t NowNanoseconds() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

bool AskHost(const std::string& folder) {
  if (getxattr(folder.c_str(), "system.posix_acl_default", nullptr, 0) >= 0) return true;
  return errno != ENODATA && errno != ENOTSUP;
}

}  // namespace

bool GivesDefaultAcl(const std::string& folder, const struct stat& status) {
  // The temporary folder and one destination folder are all a save asks about.
  thread_local std::array<Answer, 2> kept;
  thread_local size_t next = 0;
  int64_t changeTime = Nanoseconds(status.st_ctim);
  for (const Answer& answer : kept) {
    if (answer.folder == folder && answer.device == status.st_dev &&
        answer.inode == status.st_ino && answer.changeTime == changeTime) {
      return answer.hasAcl;
    }
  }
  int64_t askedAt = NowNanoseconds();
  bool hasAcl = AskHost(folder);
  if (askedAt - changeTime > kSettledNanoseconds) {
    kept[next] = {folder, status.st_dev, status.st_ino, changeTime, hasAcl};
    next = (next + 1) % kept.size();
  }
  return hasAcl;
}

}  // namespace mailslice::platform
