// A folder of the program's own for one run, removed with everything in it when the run ends.
#ifndef MAILSLICE_TOOLS_PRIVATE_FOLDER_H
#define MAILSLICE_TOOLS_PRIVATE_FOLDER_H

#include <optional>
#include <string>

namespace mailslice::tools {

class PrivateFolder {
 public:
  // Makes a new folder that only this user may enter, under $TMPDIR (else /tmp); nothing when
  // none can be made.
  static std::optional<PrivateFolder> Make();
  ~PrivateFolder();
  PrivateFolder(PrivateFolder&& other) noexcept;
  // The folder given up by a move-assignment goes with the object it moved into.
  PrivateFolder& operator=(PrivateFolder&& other) noexcept {
    path_.swap(other.path_);
    return *this;
  }
  PrivateFolder(const PrivateFolder&) = delete;

  std::string Path(const std::string& name) const { return path_ + "/" + name; }

 private:
  explicit PrivateFolder(std::string path) : path_(std::move(path)) {}
  std::string path_;  // empty once moved from
};

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_PRIVATE_FOLDER_H
