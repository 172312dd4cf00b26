// Read-state checks on message files: reading a whole file for the caller, the "being read"
// mark carried in a file's modification time, and same-creation-time tests.
#ifndef MAILSLICE_HEADER_READ_STATE_H
#define MAILSLICE_HEADER_READ_STATE_H

#include <string>

namespace mailslice::header {

// A new malloc'd, NUL-terminated block with the whole file (no size limit), or null.
char* ReadMailFile(const std::string& path);

// 1 when the file was last modified before 1981 in local time (the mail store marks a message
// being read that way), 0 otherwise or when the file is missing.
int IsMarkedAsReading(const std::string& path);

// 1 when both files exist and carry exactly the same creation time, else 0.
int HaveSameCreationTime(const std::string& first, const std::string& second);

}  // namespace mailslice::header

#endif  // MAILSLICE_HEADER_READ_STATE_H
