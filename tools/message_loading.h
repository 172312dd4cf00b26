// Loading a message file for a command, with a clear account of why a file cannot be used.
#ifndef MAILSLICE_TOOLS_MESSAGE_LOADING_H
#define MAILSLICE_TOOLS_MESSAGE_LOADING_H

#include <optional>
#include <string>

namespace mailslice::tools {

// Why a file cannot be used as a message: a short phrase for the error line and the exit
// status that goes with it (exit_status.h).
struct LoadProblem {
  int status;
  std::string why;
};

// Loads the message into the library's message buffer; nothing on success. A file that the
// library loads but that is no message (its first line is not a header field) is refused too.
std::optional<LoadProblem> LoadMessage(const std::string& path);

// Frees the library's message buffer when the command is done with it.
class LoadedMessage {
 public:
  LoadedMessage() = default;
  ~LoadedMessage();
  LoadedMessage(const LoadedMessage&) = delete;
  LoadedMessage& operator=(const LoadedMessage&) = delete;
};

// Prints "mailslice: FILE: PROBLEM" on standard error and returns `status`.
int Fail(const std::string& file, const std::string& problem, int status);
int Fail(const std::string& file, const LoadProblem& problem);

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_MESSAGE_LOADING_H
