// The program's exit statuses, one for each kind of failure, so that a script can tell them
// apart; `mailslice --help` lists them.
#ifndef MAILSLICE_TOOLS_EXIT_STATUS_H
#define MAILSLICE_TOOLS_EXIT_STATUS_H

namespace mailslice::tools {

inline constexpr int kStatusDone = 0;
// The file, or the attachment named, does not exist.
inline constexpr int kStatusNotFound = 1;
// The command line is wrong: an unknown command or option, a missing or bad argument.
inline constexpr int kStatusUsage = 2;
// The file exists but cannot be read: a folder, no permission, a read error.
inline constexpr int kStatusUnreadable = 3;
// The file is over the size limit of the device type.
inline constexpr int kStatusTooLarge = 4;
// The file is empty, or its first line is not a header field.
inline constexpr int kStatusNotMessage = 5;
// An attachment or a temporary file could not be written.
inline constexpr int kStatusWriteFailed = 6;
// scan: at least one message could not be read (each is reported on its own line).
inline constexpr int kStatusSomeUnread = 7;

inline constexpr char kExitStatusHelp[] =
    "Exit status:\n"
    "  0  done\n"
    "  1  no such file, or no attachment of that name\n"
    "  2  wrong command line (unknown command or option, missing or bad argument)\n"
    "  3  the file cannot be read (a folder, no permission, a read error)\n"
    "  4  the file is over the size limit of the device type (--device-type)\n"
    "  5  the file is not a message (empty, or its first line is not a header field)\n"
    "  6  a file could not be written (save: disk full, folder not writable)\n"
    "  7  scan: some messages could not be read (each is reported on its line)\n"
    "A failure prints one line on standard error, 'mailslice: FILE: what is wrong' (scan prints\n"
    "it on the message's own line of output and goes on).";

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_EXIT_STATUS_H
