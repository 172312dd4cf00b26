// Loading a message file for a command, with a clear account of why a load failed.
#ifndef MAILSLICE_TOOLS_MESSAGE_LOADING_H
#define MAILSLICE_TOOLS_MESSAGE_LOADING_H

#include <string>

namespace mailslice::tools {

// Loads the message into the library's message buffer. On failure returns false and sets
// `problem` to a short phrase naming what is wrong with the file.
bool LoadMessage(const std::string& path, std::string& problem);

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_MESSAGE_LOADING_H
