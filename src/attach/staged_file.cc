#include "attach/staged_file.h"

#include "platform/temp_folder.h"

namespace mailslice::attach {
namespace {

// Empty when the temporary folder cannot be had.
std::string TempFilePath() {
  std::optional<std::string> folder = platform::PrivateTempFolder();
  return folder ? *folder + "/" + kTempFileName : std::string();
}

}  // namespace

using platform::ErrorCode;
using platform::Files;

StagedFile::StagedFile() : path_(TempFilePath()) {
  if (path_.empty()) return;
  ErrorCode error = platform::kErrorSuccess;
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
  Files().Remove(path_);
}

ErrorCode StagedFile::Write(std::string_view bytes) {
  if (bytes.empty()) return platform::kErrorSuccess;
  return file_->Write(bytes.data(), bytes.size());
}

ErrorCode StagedFile::CopyTo(const std::string& destination) {
  // A disk that fills up may say so only when the file is closed: that error comes first.
  return Files().CloseAndCopy(*file_, path_, destination);
}

}  // namespace mailslice::attach
