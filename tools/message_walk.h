// The message files that scan reads from the paths it is given.
#ifndef MAILSLICE_TOOLS_MESSAGE_WALK_H
#define MAILSLICE_TOOLS_MESSAGE_WALK_H

#include <optional>
#include <string>
#include <vector>

namespace mailslice::tools {

// Every message file under the paths, in the order given, each folder's files in name order:
// - a path that is not a folder is a message file (one that does not exist is kept, so that
//   scan reports it on its line);
// - a Maildir (a folder with cur/ and new/) gives the files of cur/, then those of new/; its
//   tmp/ holds deliveries still under way and is left alone;
// - any other folder gives its files and the messages of its sub-folders; names that start
//   with "." are hidden and skipped, and links to folders are not followed.
// A folder that cannot be listed is an entry of its own, with the reason, so that scan can
// report the messages it could not reach.
struct WalkEntry {
  std::string path;
  std::optional<std::string> unlisted;  // why the folder could not be listed
};
std::vector<WalkEntry> MessageFiles(const std::vector<std::string>& paths);

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_MESSAGE_WALK_H
