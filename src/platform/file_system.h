// Files, as the mail logic needs them: open, read, write, copy, delete, test and describe.
// Errors are reported as the Windows error codes that the library's callers know (see
// error_code.h); paths are UTF-8 host paths.
#ifndef MAILSLICE_PLATFORM_FILE_SYSTEM_H
#define MAILSLICE_PLATFORM_FILE_SYSTEM_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/error_code.h"

namespace mailslice::platform {

struct FileStatus {
  // Nanoseconds since 1970-01-01 00:00 UTC.
  int64_t creationTime = 0;
  int64_t modificationTime = 0;
  int64_t accessTime = 0;
  uint64_t size = 0;
  bool isFolder = false;
  // Which file it is, and when its status last changed (nanoseconds as above): with the size
  // and modification time, what tells whether a file is still the one read before.
  uint64_t device = 0;
  uint64_t inode = 0;
  int64_t changeTime = 0;
};

// An open file; closed when destroyed.
class File {
 public:
  virtual ~File() = default;
  virtual std::optional<uint64_t> Size() = 0;
  // Whether the file has no name in any folder yet (see FileSystem::CreateUnnamed).
  virtual bool Unnamed() const { return false; }
  // The open file's status (its times, size and identity); none where the host cannot tell.
  virtual std::optional<FileStatus> Status() { return std::nullopt; }
  // Reads until `size` bytes or the end of the file; `*got` is the number read.
  virtual ErrorCode Read(void* buffer, size_t size, size_t* got) = 0;
  virtual ErrorCode Write(const void* data, size_t size) = 0;
  // Flushes and closes; reports a write error that only the close revealed.
  virtual ErrorCode Close() = 0;
};

class FileSystem {
 public:
  virtual ~FileSystem() = default;
  virtual std::unique_ptr<File> OpenForReading(const std::string& path, ErrorCode* error) = 0;
  // Creates a new file that only its owner may read and write; fails when anything (a file or
  // a link someone planted) is already at the path.
  virtual std::unique_ptr<File> CreateNew(const std::string& path, ErrorCode* error) = 0;
  // As CreateNew, but with the mode any new file gets (the user's umask applies), for a file
  // built in a folder that no other user can enter and that gives its files nothing of its
  // own (see PrivateTempFolder): such a file may later be moved to its destination as it is
  // (see CloseAndCopy). Hosts that cannot tell create it as CreateNew does.
  virtual std::unique_ptr<File> CreateNewOrdinary(const std::string& path, ErrorCode* error) {
    return CreateNew(path, error);
  }
  // As CreateNewOrdinary, but where the host can, the file gets no name in the folder of
  // `path` (nobody else can open it, and it is gone by itself when closed unless CloseAndCopy
  // names it): whatever is at `path` is deleted first, and a path that cannot be freed fails
  // the call. Elsewhere the file is made at `path` as CreateNewOrdinary makes it.
  virtual std::unique_ptr<File> CreateUnnamed(const std::string& path, ErrorCode* error) {
    if (ErrorCode removed = Remove(path);
        removed != kErrorSuccess && removed != kErrorFileNotFound) {
      *error = removed;
      return nullptr;
    }
    return CreateNewOrdinary(path, error);
  }
  // A file without a name in the folder that `destination` names its file in, for a file
  // staged on its way there: made in that folder, it gets from it just what a copy made there
  // would get (mode from the umask, the folder's group and default ACL, its security label),
  // and CloseAndCopy names it without copying. Only a folder on the file system `device` (as
  // stat gives it) will do, the one the temporary folder is on, so the file meets the limits
  // (space, size) it would have met in the temporary folder. Null where the host cannot, the
  // folder cannot take the file, or it is on another file system.
  virtual std::unique_ptr<File> CreateUnnamedBeside(const std::string& destination,
                                                    uint64_t device) {
    (void)destination;
    (void)device;
    return nullptr;
  }
  // Creates `destination` itself, new, for data small enough to be written in one go: the file
  // a copy made there would be (see CreateUnnamedBeside). Only a new name will do, and only a
  // folder on the file system `device`; null otherwise (nothing is left behind then), and where
  // the host cannot tell the file system of a file.
  virtual std::unique_ptr<File> CreateAtDestination(const std::string& destination,
                                                    uint64_t device) {
    (void)destination;
    (void)device;
    return nullptr;
  }
  // Copies `from` to `to`, replacing `to`; the destination changes only once the copy is
  // complete, so a failed copy leaves no partial file under the destination name.
  virtual ErrorCode Copy(const std::string& from, const std::string& to) = 0;
  // Closes `source`, a file that CreateNew opened at `sourcePath` and that has only been written
  // since, and copies it to `to` as Copy does. A close that fails leaves `to` untouched and its
  // error is the answer. The host copies from the open file instead of opening it again. A
  // file made by CreateNewOrdinary is moved to `to` instead where the result is the file a copy
  // would have made (same file system, same mode and group, nothing else attached to it):
  // `sourcePath` is gone then, and `*moved` says so. A file without a name is given the name
  // `to` on the same terms.
  virtual ErrorCode CloseAndCopy(File& source, const std::string& sourcePath, const std::string& to,
                                 bool* moved) {
    *moved = false;
    if (ErrorCode closed = source.Close(); closed != kErrorSuccess) return closed;
    return Copy(sourcePath, to);
  }
  // Moves `from` onto `to` in one step, replacing `to`.
  virtual ErrorCode Rename(const std::string& from, const std::string& to) = 0;
  virtual ErrorCode Remove(const std::string& path) = 0;
  virtual bool Exists(const std::string& path) = 0;
  virtual std::optional<FileStatus> Status(const std::string& path) = 0;
  // Creates the folder and its missing parents; `privateToUser` makes the last one mode 0700.
  virtual ErrorCode MakeFolders(const std::string& path, bool privateToUser) = 0;
};

// The file system in use: the host's, unless a test put another in place.
FileSystem& Files();

// Puts another file system in place for the lifetime of this object (tests).
class ScopedFileSystem {
 public:
  explicit ScopedFileSystem(FileSystem& replacement);
  ~ScopedFileSystem();
  ScopedFileSystem(const ScopedFileSystem&) = delete;
  ScopedFileSystem& operator=(const ScopedFileSystem&) = delete;

 private:
  FileSystem* previous_;
};

// The whole content of a file, or nothing when it cannot be opened or read.
std::optional<std::string> ReadWholeFile(const std::string& path);
// The rest of an open file, or nothing when it cannot be read.
std::optional<std::string> ReadRest(File& file);

// The folder part of a path: everything up to its last '/' or '\' (empty when there is none).
std::string FolderOf(const std::string& path);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_FILE_SYSTEM_H
