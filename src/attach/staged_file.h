// The one temporary file through which every attachment save goes: the data is written there
// first and reaches the destination only once all of it is written.
#ifndef MAILSLICE_ATTACH_STAGED_FILE_H
#define MAILSLICE_ATTACH_STAGED_FILE_H

#include <memory>
#include <string>
#include <string_view>

#include "platform/file_system.h"
#include "platform/temp_folder.h"

namespace mailslice::attach {

// The temporary file's name in the private temporary folder (the device's "\temp\").
inline constexpr char kTempFileName[] = "AttachTempfile~.txt";

// What a save learnt of the temporary path: that it was free at a look at the temporary
// folder. Anything put in the folder moves the folder's change time, so while a later look
// finds the same folder with the same change time, the path is still free and need not be
// freed again. A look within a timestamp tick of the folder's last change could miss a change
// made right after it, so only a look well after that change is kept.
class FreeTempPath {
 public:
  bool Known(const std::string& path, const platform::TempFolderLook& look) const;
  void Note(const std::string& path, const platform::TempFolderLook& look);
  void Forget() { path_.clear(); }

 private:
  std::string path_;
  platform::TempFolderLook look_;
};

// Creates the file anew at the temporary path, deleting first whatever an earlier save left
// there, readable by its owner only (by its mode, or by the folder it is in) and never through
// a link someone else planted there. Where the host can, the file gets no name at all: it is
// made in the temporary folder or, better, in the destination's folder when that is on the
// same file system (the file then becomes the saved file where it is, and the folder gives it
// what it gives a copy). The file is deleted again when the object goes, whatever happened in
// between, so no call leaves it behind. Only one save may run at a time: they all share the
// one path.
//
// A small save (at most kWrittenAtOnceBytes to write, which every saver writes in one go) is
// written straight into a new destination instead, when the host can make it there on the
// temporary folder's file system: staging buys nothing for a single write, and naming a staged
// file costs a small save about as much as writing it. A failed write or close removes the new
// file again, so a failed save still leaves nothing under the destination name. An existing
// destination is always replaced through a staged file, in one step.
class StagedFile {
 public:
  static constexpr size_t kWrittenAtOnceBytes = 131'072;

  // `mostBytes`: no more than this is written.
  StagedFile(const std::string& destination, size_t mostBytes);
  ~StagedFile();
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;

  // False when the temporary file could not be created; nothing else may be called then.
  bool created() const { return file_ != nullptr; }
  platform::ErrorCode Write(std::string_view bytes);
  // Closes the file and copies it over the destination (or moves it there, where that gives
  // the same file); the destination is replaced in one step, so a failed copy leaves nothing
  // half-written under the destination name.
  platform::ErrorCode CopyToDestination();

 private:
  const std::string& destination_;
  std::string path_;
  std::unique_ptr<platform::File> file_;  // kept, closed, after CopyTo
  bool moved_ = false;                    // CopyTo moved the file: its path is free
  bool unnamed_ = false;                  // the file never had the path
  bool atDestination_ = false;            // made as the destination itself
};

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_STAGED_FILE_H
