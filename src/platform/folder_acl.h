// Whether a folder hands its new files a default ACL, asked once per folder while the folder
// stays as it was: every save asks it of the temporary folder and of the destination's folder.
#ifndef MAILSLICE_PLATFORM_FOLDER_ACL_H
#define MAILSLICE_PLATFORM_FOLDER_ACL_H

#include <sys/stat.h>

#include <string>

namespace mailslice::platform {

// Whether new files in `folder` (whose status is `status`, taken just now) get their access
// from the folder's default ACL rather than from the umask. A file system without ACLs has
// none. Setting or removing an ACL moves the folder's change time, so the answer is kept while
// the folder's identity and change time are those of the last asking and that change lies
// well before it.
bool GivesDefaultAcl(const std::string& folder, const struct stat& status);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_FOLDER_ACL_H
