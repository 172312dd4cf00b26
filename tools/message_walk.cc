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

// The entries of a folder in name order; an unreadable folder has none.
std::vector<fs::path> SortedEntries(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    entries.push_back(it->path());
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

void AddFolder(const fs::path& folder, std::vector<std::string>& files);

void AddMaildirPart(const fs::path& part, std::vector<std::string>& files) {
  for (const fs::path& entry : SortedEntries(part)) {
    if (!IsFolder(entry)) files.push_back(entry.string());
  }
}

void AddFolder(const fs::path& folder, std::vector<std::string>& files) {
  if (IsMaildir(folder)) {
    AddMaildirPart(folder / "cur", files);
    AddMaildirPart(folder / "new", files);
    return;
  }
  for (const fs::path& entry : SortedEntries(folder)) {
    if (entry.filename().string().starts_with(".")) continue;
    std::error_code error;
    fs::file_status own = fs::symlink_status(entry, error);
    if (fs::is_directory(own)) {
      AddFolder(entry, files);
    } else if (!IsFolder(entry)) {
      files.push_back(entry.string());
    }
  }
}

}  // namespace

std::vector<std::string> MessageFiles(const std::vector<std::string>& paths) {
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    if (IsFolder(path)) {
      AddFolder(path, files);
    } else {
      files.push_back(path);
    }
  }
  return files;
}

}  // namespace mailslice::tools
