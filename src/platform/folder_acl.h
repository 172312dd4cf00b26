// Whether a folder hands its new files a default ACL.
#ifndef MAILSLICE_PLATFORM_FOLDER_ACL_H
#define MAILSLICE_PLATFORM_FOLDER_ACL_H

#include <string>

namespace mailslice::platform {

// Whether new files in `folder` get their access from the folder's default ACL rather than
// from the umask. A file system without ACLs has none. (A folder's change time cannot tell
// whether this answer still holds: it moves with every file made or removed in the folder.)
bool GivesDefaultAcl(const std::string& folder);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_FOLDER_ACL_H
