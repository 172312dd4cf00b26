// The host's file system, on POSIX calls.
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <random>
#include <utility>

#include "platform/file_system.h"
#include "platform/folder_acl.h"

namespace mailslice::platform {

ErrorCode ErrorCodeFromErrno(int error) {
  switch (error) {
    case 0:
      return kErrorSuccess;
    case ENOSPC:
    case EDQUOT:
      return kErrorDiskFull;
    case ENOENT:
      return kErrorFileNotFound;
    case ENOTDIR:
      return kErrorPathNotFound;
    case EMFILE:
    case ENFILE:
      return kErrorTooManyOpenFiles;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
      return kErrorAccessDenied;
    case ENOMEM:
      return kErrorNotEnoughMemory;
    case EIO:
      return kErrorWriteFault;
    case EBUSY:
    case ETXTBSY:
      return kErrorSharingViolation;
    case EEXIST:
      return kErrorFileExists;
    case EINVAL:
      return kErrorInvalidParameter;
    case ENAMETOOLONG:
      return kErrorFilenameTooLong;
    case EFBIG:
      return kErrorFileTooLarge;
    default:
      return kErrorGenFailure;
  }
}

namespace {

ErrorCode LastErrno() { return ErrorCodeFromErrno(errno); }

int64_t Nanoseconds(const statx_timestamp& time) {
  return static_cast<int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

FileStatus StatusOf(const struct statx& status) {
  FileStatus result;
  // Where the file system records no birth time, the status-change time stands in for the
  // creation time: it is set when the file is made and moves only when its inode changes.
  result.creationTime =
      Nanoseconds((status.stx_mask & STATX_BTIME) != 0 ? status.stx_btime : status.stx_ctime);
  result.modificationTime = Nanoseconds(status.stx_mtime);
  result.accessTime = Nanoseconds(status.stx_atime);
  result.size = status.stx_size;
  result.isFolder = S_ISDIR(status.stx_mode);
  result.device = (static_cast<uint64_t>(status.stx_dev_major) << 32) | status.stx_dev_minor;
  result.inode = status.stx_ino;
  result.changeTime = Nanoseconds(status.stx_ctime);
  return result;
}

class PosixFile final : public File {
 public:
  explicit PosixFile(int descriptor, bool ordinary = false, bool unnamed = false,
                     bool beside = false)
      : descriptor_(descriptor), ordinary_(ordinary), unnamed_(unnamed), beside_(beside) {}
  ~PosixFile() override { Close(); }

  std::optional<uint64_t> Size() override {
    if (openedSize_) return std::exchange(openedSize_, std::nullopt);
    struct stat status;
    if (fstat(descriptor_, &status) != 0) return std::nullopt;
    return static_cast<uint64_t>(status.st_size);
  }

  std::optional<FileStatus> Status() override {
    struct statx status;
    if (statx(descriptor_, "", AT_EMPTY_PATH, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) {
      return std::nullopt;
    }
    return StatusOf(status);
  }

  // The size the file had when it was opened, which the first Size() answers without asking
  // again: a message is measured right after it is opened.
  void NoteOpenedSize(uint64_t size) { openedSize_ = size; }

  ErrorCode Read(void* buffer, size_t size, size_t* got) override {
    *got = 0;
    while (*got < size) {
      ssize_t count = read(descriptor_, static_cast<char*>(buffer) + *got, size - *got);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return LastErrno();
      if (count == 0) break;
      *got += static_cast<size_t>(count);
    }
    return kErrorSuccess;
  }

  ErrorCode Write(const void* data, size_t size) override {
    size_t done = 0;
    while (done < size) {
      ssize_t count = write(descriptor_, static_cast<const char*>(data) + done, size - done);
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return LastErrno();
      done += static_cast<size_t>(count);
      written_ += static_cast<uint64_t>(count);
    }
    return kErrorSuccess;
  }

  int descriptor() const { return descriptor_; }
  // Created with the ordinary mode of a new file, in a folder no other user can enter.
  bool ordinary() const { return ordinary_; }
  bool Unnamed() const override { return unnamed_; }
  // Made without a name in the folder of its destination (see CreateUnnamedBeside).
  bool beside() const { return beside_; }
  // Bytes written through this object: the size of a file created new and only written since.
  uint64_t written() const { return written_; }

  ErrorCode Close() override {
    if (descriptor_ < 0) return kErrorSuccess;
    int result = close(descriptor_);
    descriptor_ = -1;
    return result == 0 ? kErrorSuccess : LastErrno();
  }

 private:
  int descriptor_;
  bool ordinary_;
  bool unnamed_;
  bool beside_;
  uint64_t written_ = 0;
  std::optional<uint64_t> openedSize_;
};

// The folder a host path names its file in.
std::string ContainingFolder(const std::string& path) {
  size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// Whether moving `file`, made by CreateNewOrdinary in a folder that gives its files nothing of
// its own (mode from the umask, the creator's group, no ACL), to `to` gives the file a copy
// would: a new file of the destination's folder is such a file too when that folder has no
// default ACL and gives its files the creator's group, and nothing else is attached to the
// file (a security label) that would go with it. A move to another file system fails by
// itself, and the file is copied then.
bool MovesAsCopied(int file, const std::string& to) {
  ssize_t attributes = flistxattr(file, nullptr, 0);
  if (attributes > 0 || (attributes < 0 && errno != ENOTSUP)) return false;
  std::string folder = ContainingFolder(to);
  struct stat destination;
  if (stat(folder.c_str(), &destination) != 0 || !S_ISDIR(destination.st_mode)) return false;
  if ((destination.st_mode & S_ISGID) != 0 && destination.st_gid != getegid()) return false;
  return !GivesDefaultAcl(folder);
}

// Whether the open file is on the file system `device` (as stat gives it).
bool OnFileSystem(int descriptor, uint64_t device) {
  struct stat status;
  return fstat(descriptor, &status) == 0 && static_cast<uint64_t>(status.st_dev) == device;
}

// A name beside `path` that nobody uses yet, for building a file before it takes its place.
std::string SiblingTempName(const std::string& path) {
  static std::mt19937_64 generator{std::random_device{}()};
  static constexpr char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
  std::string suffix = ".part-";
  for (int i = 0; i < 12; ++i) suffix += kDigits[generator() % 36];
  return path + suffix;
}

class LinuxFileSystem final : public FileSystem {
 public:
  std::unique_ptr<File> OpenForReading(const std::string& path, ErrorCode* error) override {
    return OpenFileForReading(path, error);
  }

  // A folder cannot be opened as a file.
  static std::unique_ptr<PosixFile> OpenFileForReading(const std::string& path, ErrorCode* error) {
    int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status;
    bool measured = descriptor >= 0 && fstat(descriptor, &status) == 0;
    if (measured && S_ISDIR(status.st_mode)) {
      close(descriptor);
      descriptor = -1;
      errno = EISDIR;
    }
    auto file = Adopt(descriptor, error);
    if (file && measured) file->NoteOpenedSize(static_cast<uint64_t>(status.st_size));
    return file;
  }

  // Opened for reading too, so that CloseAndCopy can copy from it without opening it again.
  std::unique_ptr<File> CreateNew(const std::string& path, ErrorCode* error) override {
    return Open(path, O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600, error);
  }

  std::unique_ptr<File> CreateNewOrdinary(const std::string& path, ErrorCode* error) override {
    return Adopt(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666),
                 error, true);
  }

  std::unique_ptr<File> CreateUnnamed(const std::string& path, ErrorCode* error) override {
    // What is at the path goes first, as before every save; what cannot go fails the call.
    if (unlink(path.c_str()) != 0 && errno != ENOENT) return Adopt(-1, error);
    int descriptor = open(ContainingFolder(path).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    // A file system that cannot hold a file without a name gets a named one.
    if (descriptor < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
      return CreateNewOrdinary(path, error);
    }
    if (descriptor < 0) return Adopt(-1, error);
    *error = kErrorSuccess;
    return std::make_unique<PosixFile>(descriptor, true, true);
  }

  std::unique_ptr<File> CreateUnnamedBeside(const std::string& destination,
                                            uint64_t device) override {
    int descriptor =
        open(ContainingFolder(destination).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (descriptor < 0) return nullptr;
    if (!OnFileSystem(descriptor, device)) {
      close(descriptor);
      return nullptr;
    }
    return std::make_unique<PosixFile>(descriptor, true, true, true);
  }

  std::unique_ptr<File> CreateAtDestination(const std::string& destination,
                                            uint64_t device) override {
    int descriptor =
        open(destination.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (descriptor < 0) return nullptr;
    if (!OnFileSystem(descriptor, device)) {
      close(descriptor);
      unlink(destination.c_str());
      return nullptr;
    }
    return std::make_unique<PosixFile>(descriptor);
  }

  ErrorCode Copy(const std::string& from, const std::string& to) override {
    ErrorCode error = kErrorSuccess;
    auto source = OpenFileForReading(from, &error);
    if (!source) return error;
    std::string temporary;
    error = CopyToSibling(*source, std::nullopt, to, &temporary);
    if (error == kErrorSuccess) error = MoveSibling(temporary, to);
    return error;
  }

  ErrorCode CloseAndCopy(File& source, const std::string& sourcePath, const std::string& to,
                         bool* moved) override {
    *moved = false;
    auto* created = dynamic_cast<PosixFile*>(&source);
    if (created == nullptr || created->descriptor() < 0) {
      return FileSystem::CloseAndCopy(source, sourcePath, to, moved);
    }
    if (created->Unnamed()) return NameOrCopy(*created, to, moved);
    // A move creates no second file, which on a busy file system costs more than the copy.
    if (created->ordinary() && MovesAsCopied(created->descriptor(), to)) {
      if (ErrorCode closed = created->Close(); closed != kErrorSuccess) return closed;
      if (rename(sourcePath.c_str(), to.c_str()) == 0) {
        *moved = true;
        return kErrorSuccess;
      }
      // Whatever stopped the move (a folder at the destination, a folder not writable) stops
      // the copy too, which answers as it always has.
      return Copy(sourcePath, to);
    }
    return CloseAndCopyContent(*created, to);
  }

  ErrorCode Rename(const std::string& from, const std::string& to) override {
    return rename(from.c_str(), to.c_str()) == 0 ? kErrorSuccess : LastErrno();
  }

  ErrorCode Remove(const std::string& path) override {
    return unlink(path.c_str()) == 0 ? kErrorSuccess : LastErrno();
  }

  bool Exists(const std::string& path) override {
    struct stat status;
    return lstat(path.c_str(), &status) == 0;
  }

  std::optional<FileStatus> Status(const std::string& path) override {
    struct statx status;
    if (statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) {
      return std::nullopt;
    }
    return StatusOf(status);
  }

  ErrorCode MakeFolders(const std::string& path, bool privateToUser) override {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
      std::string parent = path.substr(0, slash);
      if (mkdir(parent.c_str(), 0755) != 0 && errno != EEXIST) return LastErrno();
    }
    if (mkdir(path.c_str(), privateToUser ? 0700 : 0755) != 0 && errno != EEXIST) {
      return LastErrno();
    }
    return kErrorSuccess;
  }

 private:
  // Copies the file, still open, beside `to`, closes it and puts the copy in `to`'s place.
  ErrorCode CloseAndCopyContent(PosixFile& created, const std::string& to) {
    std::string temporary;
    ErrorCode copied = CopyToSibling(created, created.written(), to, &temporary);
    // A disk that fills up may say so only when the file is closed; that error comes first.
    if (ErrorCode closed = created.Close(); closed != kErrorSuccess) {
      if (copied == kErrorSuccess) unlink(temporary.c_str());
      return closed;
    }
    if (copied != kErrorSuccess) return copied;
    return MoveSibling(temporary, to);
  }

  // Gives the file made by CreateUnnamed the name `to` where that gives the file a copy would
  // (see MovesAsCopied; a file made beside `to` is such a file), else copies it there; either way
  // the file is closed after. An existing destination is replaced in one step: the file is named
  // beside it first.
  ErrorCode NameOrCopy(PosixFile& created, const std::string& to, bool* moved) {
    if (!created.beside() && !MovesAsCopied(created.descriptor(), to)) {
      return CloseAndCopyContent(created, to);
    }
    int linked = LinkDescriptor(created.descriptor(), to);
    if (linked == 0) {
      *moved = true;
      // Only a file system that reports write errors when the file is closed could fail
      // here; the destination, new a moment ago, goes again then.
      if (ErrorCode closed = created.Close(); closed != kErrorSuccess) {
        unlink(to.c_str());
        return closed;
      }
      return kErrorSuccess;
    }
    std::string sibling;
    for (int attempt = 0; attempt < 8 && linked == EEXIST; ++attempt) {
      sibling = SiblingTempName(to);
      linked = LinkDescriptor(created.descriptor(), sibling);
    }
    // Another file system, or no way to name the file: it is copied.
    if (linked != 0) return CloseAndCopyContent(created, to);
    *moved = true;
    if (ErrorCode closed = created.Close(); closed != kErrorSuccess) {
      unlink(sibling.c_str());
      return closed;
    }
    return MoveSibling(sibling, to);
  }

  // Links the open file without a name to `to`: by its descriptor where this process may, else
  // through the descriptor's name under /proc. 0, or the errno of the failure.
  static int LinkDescriptor(int descriptor, const std::string& to) {
    static std::atomic<bool> byDescriptor{true};
    if (byDescriptor.load(std::memory_order_relaxed)) {
      if (linkat(descriptor, "", AT_FDCWD, to.c_str(), AT_EMPTY_PATH) == 0) return 0;
      // Without the right to (CAP_DAC_READ_SEARCH) the call says ENOENT.
      if (errno != ENOENT) return errno;
    }
    std::string name = "/proc/self/fd/" + std::to_string(descriptor);
    if (linkat(AT_FDCWD, name.c_str(), AT_FDCWD, to.c_str(), AT_SYMLINK_FOLLOW) != 0) return errno;
    byDescriptor.store(false, std::memory_order_relaxed);
    return 0;
  }

  static std::unique_ptr<PosixFile> Open(const std::string& path, int flags, mode_t mode,
                                         ErrorCode* error) {
    return Adopt(open(path.c_str(), flags, mode), error);
  }

  static std::unique_ptr<PosixFile> Adopt(int descriptor, ErrorCode* error, bool ordinary = false) {
    if (descriptor < 0) {
      *error = LastErrno();
      return nullptr;
    }
    *error = kErrorSuccess;
    return std::make_unique<PosixFile>(descriptor, ordinary);
  }

  // Copies the whole of `source` (`size` bytes when known) into a new file beside `to`, named
  // in `*temporary`. On failure the new file is gone again.
  static ErrorCode CopyToSibling(PosixFile& source, std::optional<uint64_t> size,
                                 const std::string& to, std::string* temporary) {
    ErrorCode error = kErrorSuccess;
    std::unique_ptr<PosixFile> target;
    for (int attempt = 0; attempt < 8 && !target; ++attempt) {
      *temporary = SiblingTempName(to);
      // A copy gets the ordinary mode of a new file (the user's umask applies).
      target = Open(*temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666, &error);
      if (!target && error != kErrorFileExists) return error;
    }
    if (!target) return error;
    error = CopyContent(source, size, *target);
    if (ErrorCode closed = target->Close(); error == kErrorSuccess) error = closed;
    if (error != kErrorSuccess) unlink(temporary->c_str());
    return error;
  }

  // Puts the finished copy in the destination's place.
  ErrorCode MoveSibling(const std::string& temporary, const std::string& to) {
    ErrorCode error = Rename(temporary, to);
    if (error != kErrorSuccess) unlink(temporary.c_str());
    return error;
  }

  // The kernel copies from file to file without the bytes passing through this process (and
  // shares the blocks where the file system can). Where it cannot copy between the two, the
  // rest goes through a buffer. The source is read from its start whatever its position; a
  // known size spares the call that would only find the end.
  static ErrorCode CopyContent(PosixFile& source, std::optional<uint64_t> size, PosixFile& target) {
    constexpr uint64_t kKernelCopyBytes = uint64_t{1} << 30;
    off_t offset = 0;
    auto left = [&] { return *size - static_cast<uint64_t>(offset); };
    while (!size || left() > 0) {
      size_t want =
          static_cast<size_t>(size ? std::min(left(), kKernelCopyBytes) : kKernelCopyBytes);
      ssize_t copied =
          copy_file_range(source.descriptor(), &offset, target.descriptor(), nullptr, want, 0);
      if (copied > 0) continue;
      if (copied == 0) return kErrorSuccess;
      if (errno == EINTR) continue;
      if (errno != EXDEV && errno != ENOSYS && errno != EOPNOTSUPP && errno != EINVAL) {
        return LastErrno();
      }
      break;
    }
    if (size && left() == 0) return kErrorSuccess;
    std::array<char, 1 << 16> block;
    while (true) {
      ssize_t got = pread(source.descriptor(), block.data(), block.size(), offset);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) return LastErrno();
      if (got == 0) return kErrorSuccess;
      offset += got;
      if (ErrorCode error = target.Write(block.data(), static_cast<size_t>(got))) return error;
    }
  }
};

FileSystem* g_replacement = nullptr;

}  // namespace

FileSystem& Files() {
  static LinuxFileSystem host;
  return g_replacement != nullptr ? *g_replacement : host;
}

ScopedFileSystem::ScopedFileSystem(FileSystem& replacement) : previous_(g_replacement) {
  g_replacement = &replacement;
}

ScopedFileSystem::~ScopedFileSystem() { g_replacement = previous_; }

std::optional<std::string> ReadWholeFile(const std::string& path) {
  ErrorCode error = kErrorSuccess;
  auto file = Files().OpenForReading(path, &error);
  if (!file) return std::nullopt;
  return ReadRest(*file);
}

std::optional<std::string> ReadRest(File& file) {
  std::string content;
  std::array<char, 1 << 16> block;
  // A read that fills less than the block has met the end of the file.
  for (size_t got = block.size(); got == block.size();) {
    if (file.Read(block.data(), block.size(), &got) != kErrorSuccess) return std::nullopt;
    content.append(block.data(), got);
  }
  return content;
}

std::string FolderOf(const std::string& path) {
  size_t slash = path.find_last_of("/\\");
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

}  // namespace mailslice::platform
