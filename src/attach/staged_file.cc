#include "attach/staged_file.h"

#include "platform/temp_folder.h"

namespace mailslice::attach {

using platform::ErrorCode;
using platform::Files;

StagedFile::StagedFile(const std::string& destination) : destination_(destination) {
  platform::TempFolderLook look;
  std::optional<std::string> folder = platform::PrivateTempFolder(&look);
  if (!folder) return;
  path_ = *folder + "/" + kTempFileName;
  ErrorCode error = platform::kErrorSuccess;
  // In a folder no other user can enter, the file is private however it is made: it gets the
  // ordinary mode of a new file, so that it can become the saved file as it is. It needs no
  // name there (the path is freed first all the same), so nothing can be left behind.
  if (look.movable) {
    if (ErrorCode removed = Files().Remove(path_);
        removed != platform::kErrorSuccess && removed != platform::kErrorFileNotFound) {
      return;
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
  if (!moved_ && !unnamed_) Files().Remove(path_);
}

ErrorCode StagedFile::Write(std::string_view bytes) {
  if (bytes.empty()) return platform::kErrorSuccess;
  return file_->Write(bytes.data(), bytes.size());
}

ErrorCode StagedFile::CopyToDestination() {
  // A disk that fills up may say so only when the file is closed: that error comes first.
  return Files().CloseAndCopy(*file_, path_, destination_, &moved_);
}

}  // namespace mailslice::attach
