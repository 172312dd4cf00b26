// Choosing a file name for a saved attachment that overwrites nothing.
#ifndef MAILSLICE_ATTACH_FREE_FILE_NAME_H
#define MAILSLICE_ATTACH_FREE_FILE_NAME_H

#include <mailslice/cstring.h>

namespace mailslice::attach {

// `path` itself when nothing is there; otherwise the first of "folder/base(0).ext",
// "folder/base(1).ext", ... at which nothing is. Folders end at the last '/' or '\'; the
// extension is what follows the last dot of the name. A name without a dot (or whose only dot
// starts it, as in ".profile") has no extension and gets the number at its end: "a(0)",
// ".profile(0)". A path without a folder stays without one.
CString FreeFileName(const CString& path);

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_FREE_FILE_NAME_H
