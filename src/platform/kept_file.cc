#include "platform/kept_file.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

namespace mailslice::platform {
namespace {

constexpr int64_t kSettledNanoseconds = int64_t{3} * 1'000'000'000;

bool SameFile(const FileStatus& a, const FileStatus& b) {
  return a.device == b.device && a.inode == b.inode && a.size == b.size &&
         a.modificationTime == b.modificationTime && a.changeTime == b.changeTime;
}

}  // namespace

int64_t NowNanoseconds() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

bool SettledWhenLooked(int64_t changeTime, int64_t lookedAt) {
  return lookedAt - changeTime > kSettledNanoseconds;
}

const std::string* KeptFile::Read(const std::string& path) {
  if (trusted_ && path == path_) {
    std::optional<FileStatus> now = Files().Status(path);
    if (now && !now->isFolder && SameFile(*now, *trusted_)) return &content_;
  }
  trusted_.reset();
  path_ = path;
  ErrorCode error = kErrorSuccess;
  auto file = Files().OpenForReading(path, &error);
  if (!file) return nullptr;
  // The status comes first: a change after it shows as a later change time next call.
  std::optional<FileStatus> status = file->Status();
  int64_t readAt = NowNanoseconds();
  std::optional<std::string> content = ReadRest(*file);
  if (!content) return nullptr;
  content_ = std::move(*content);
  if (status && SettledWhenLooked(std::max(status->changeTime, status->modificationTime), readAt)) {
    trusted_ = status;
  }
  return &content_;
}

}  // namespace mailslice::platform
