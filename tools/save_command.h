// mailslice save FILE [NAME...] [-o DIR]: saves attachments of a message into a folder.
#ifndef MAILSLICE_TOOLS_SAVE_COMMAND_H
#define MAILSLICE_TOOLS_SAVE_COMMAND_H

#include <string>
#include <vector>

namespace mailslice::tools {

// Saves the attachments listed under the NAMEs (every attachment when no name is given) into
// DIR (default: the current folder) under names that overwrite nothing, printing each saved
// path. Returns the exit status: 0, 1 after a one-line error, 2 for a usage error.
int SaveAttachments(const std::vector<std::string>& arguments);

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_SAVE_COMMAND_H
