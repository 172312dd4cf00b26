// A small file read on every call (the registry store) without reading it every time: its
// content is kept with the file's status and read again only when the file may have changed.
#ifndef MAILSLICE_PLATFORM_KEPT_FILE_H
#define MAILSLICE_PLATFORM_KEPT_FILE_H

#include <cstdint>
#include <optional>
#include <string>

#include "platform/file_system.h"

namespace mailslice::platform {

// The wall clock now, in nanoseconds since 1970-01-01 00:00 UTC, as file times are kept.
int64_t NowNanoseconds();

// Whether a look taken at `lookedAt` at something whose status last changed at `changeTime`
// (both as NowNanoseconds gives them) saw it as it stays until its change time moves again:
// the change lies more than the coarsest timestamp tick of the file systems in use (two
// seconds on FAT) before the look. A change within a tick of the look could leave the time as
// it was, so what such a look learnt must not be kept.
bool SettledWhenLooked(int64_t changeTime, int64_t lookedAt);

class KeptFile {
 public:
  // The whole content of the file at `path`, or null when it cannot be opened or read. One
  // status call tells whether the kept content still holds: the same file (device and inode),
  // size, modification and change times as when it was read, its last change well before
  // that read. A change made within a timestamp tick of the read could leave the times as they
  // were, so such a read is not trusted and the next call reads again.
  const std::string* Read(const std::string& path);

 private:
  std::string path_;
  std::string content_;
  std::optional<FileStatus> trusted_;  // the status of the file `content_` was read from
};

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_KEPT_FILE_H
