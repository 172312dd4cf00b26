// A small file read on every call (the registry store) without reading it every time: its
// content is kept with the file's status and read again only when the file may have changed.
#ifndef MAILSLICE_PLATFORM_KEPT_FILE_H
#define MAILSLICE_PLATFORM_KEPT_FILE_H

#include <optional>
#include <string>

#include "platform/file_system.h"

namespace mailslice::platform {

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
