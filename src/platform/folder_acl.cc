#include "platform/folder_acl.h"

#include <errno.h>
#include <sys/xattr.h>

namespace mailslice::platform {

bool GivesDefaultAcl(const std::string& folder) {
  if (getxattr(folder.c_str(), "system.posix_acl_default", nullptr, 0) >= 0) return true;
  return errno != ENODATA && errno != ENOTSUP;
}

}  // namespace mailslice::platform
