#include "message_walk.h"

#include <algorithm>
#include <filesystem>

namespace mailslice::tools {
namespace {

namespace fs = std::filesystem;

bool IsFolder(const fs::path& path) {
  std::error_code error;
  return fs::is_directory(fs::status(path, error));
}

bool IsMaildir(const fs::path& folder) {
  return IsFolder(folder / "cur") && IsFolder(folder / "new");
}

// The entries of a folder in name order; a folder that cannot be listed is noted in `files`.
std::vector<fs::path> SortedEntries(const fs::path& folder, std::vector<WalkEntry>& files) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    entries.push_back(it->path());
  }
  if (error) files.push_back({folder.string(), "cannot list the folder: " + error.message()});
  std::sort(entries.begin(), entries.end());
  return entries;
}

void AddMaildirPart(const fs::path& part, std::vector<WalkEntry>& files) {
  for (const fs::path& entry : SortedEntries(part, files)) {
    if (!IsFolder(entry)) files.push_back({entry.string(), std::nullopt});
  }
}

void AddFolder(const fs::path& folder, std::vector<WalkEntry>& files) {
  if (IsMaildir(folder)) {
    AddMaildirPart(folder / "cur", files);
    AddMaildirPart(folder / "new", files);
    return;
  }
  for (const fs::path& entry : SortedEntries(folder, files)) {
    if (entry.filename().string().starts_with(".")) continue;
    std::error_code error;
    fs::file_status own = fs::symlink_status(entry, error);
    if (fs::is_directory(own)) {
      AddFolder(entry, files);
    } else if (!IsFolder(entry)) {
      files.push_back({entry.string(), std::nullopt});
    }
  }
}

}  // namespace

std::vector<WalkEntry> MessageFiles(const std::vector<std::string>& paths) {
  std::vector<WalkEntry> files;
  for (const std::string& path : paths) {
    if (IsFolder(path)) {
      AddFolder(path, files);
    } else {
      files.push_back({path, std::nullopt});
    }
  }
  return files;
}

}  // namespace mailslice::tools
