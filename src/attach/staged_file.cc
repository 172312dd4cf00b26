#include "attach/staged_file.h"

#include "platform/kept_file.h"
#include "platform/temp_folder.h"

namespace mailslice::attach {

using platform::ErrorCode;
using platform::Files;

bool FreeTempPath::Known(const std::string& path, const platform::TempFolderLook& look) const {
  return !path_.empty() && path == path_ && look.device == look_.device &&
         look.inode == look_.inode && look.changeTime == look_.changeTime;
}

void FreeTempPath::Note(const std::string& path, const platform::TempFolderLook& look) {
  if (!platform::SettledWhenLooked(look.changeTime, look.lookedAt)) {
    Forget();
    return;
  }
  path_ = path;
  look_ = look;
}

namespace {

// Frees the temporary path for a new file; false when what is there cannot go.
bool FreePath(const std::string& path, const platform::TempFolderLook& look) {
  thread_local FreeTempPath known;
  if (known.Known(path, look)) return true;
  ErrorCode removed = Files().Remove(path);
  if (removed == platform::kErrorFileNotFound) {
    known.Note(path, look);
    return true;
  }
  known.Forget();
  return removed == platform::kErrorSuccess;
}

}  // namespace

StagedFile::StagedFile(const std::string& destination, size_t mostBytes)
    : destination_(destination) {
  platform::TempFolderLook look;
  std::optional<std::string> folder = platform::PrivateTempFolder(&look);
  if (!folder) return;
  path_ = *folder + "/" + kTempFileName;
  ErrorCode error = platform::kErrorSuccess;
  // In a folder no other user can enter, the file is private however it is made: it gets the
  // ordinary mode of a new file, so that it can become the saved file as it is. It needs no
  // name there (the path is freed first all the same), so nothing can be left behind.
  if (look.movable) {
    if (!FreePath(path_, look)) return;
    if (mostBytes <= kWrittenAtOnceBytes) {
      file_ = Files().CreateAtDestination(destination, look.device);
      atDestination_ = unnamed_ = file_ != nullptr;
      if (atDestination_) return;
    }
    file_ = Files().CreateUnnamedBeside(destination, look.device);
    if (file_ == nullptr) file_ = Files().CreateUnnamed(path_, &error);
    unnamed_ = file_ != nullptr && file_->Unnamed();
    return;
  }
  file_ = Files().CreateNew(path_, &error);
  // Usually the path is free; only something left there (or planted) has to go first.
  if (file_ == nullptr && error == platform::kErrorFileExists) {
    Files().Remove(path_);
    file_ = Files().CreateNew(path_, &error);
  }
}

StagedFile::~StagedFile() {
  if (file_ == nullptr) return;
  file_.reset();
  if (moved_) return;
  if (atDestination_) {
    Files().Remove(destination_);
  } else if (!unnamed_) {
    Files().Remove(path_);
  }
}

ErrorCode StagedFile::Write(std::string_view bytes) {
  if (bytes.empty()) return platform::kErrorSuccess;
  return file_->Write(bytes.data(), bytes.size());
}

ErrorCode StagedFile::CopyToDestination() {
  if (atDestination_) {
    // The data is where it belongs once the file is closed; a close that fails leaves it to go.
    ErrorCode closed = file_->Close();
    moved_ = closed == platform::kErrorSuccess;
    return closed;
  }
  // A disk that fills up may say so only when the file is closed: that error comes first.
  return Files().CloseAndCopy(*file_, path_, destination_, &moved_);
}

}  // namespace mailslice::attach
