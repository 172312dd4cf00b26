#include "private_folder.h"

#include <cstdlib>
#include <filesystem>
#include <utility>

namespace mailslice::tools {

std::optional<PrivateFolder> PrivateFolder::Make() {
  std::error_code error;
  std::filesystem::path root = std::filesystem::temp_directory_path(error);
  if (error) root = "/tmp";
  // mkdtemp makes the folder with mode 0700 and never reuses one that is there.
  std::string pattern = (root / "mailslice-run-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) return std::nullopt;
  return PrivateFolder(std::move(pattern));
}

PrivateFolder::PrivateFolder(PrivateFolder&& other) noexcept
    : path_(std::exchange(other.path_, std::string())) {}

PrivateFolder::~PrivateFolder() {
  if (path_.empty()) return;
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

}  // namespace mailslice::tools
