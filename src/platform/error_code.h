// The Windows error codes that the library reports, and how host errors map onto them.
#ifndef MAILSLICE_PLATFORM_ERROR_CODE_H
#define MAILSLICE_PLATFORM_ERROR_CODE_H

#include <cstdint>

namespace mailslice::platform {

using ErrorCode = uint32_t;

inline constexpr ErrorCode kErrorSuccess = 0;
inline constexpr ErrorCode kErrorFileNotFound = 2;
inline constexpr ErrorCode kErrorPathNotFound = 3;
inline constexpr ErrorCode kErrorTooManyOpenFiles = 4;
inline constexpr ErrorCode kErrorAccessDenied = 5;
inline constexpr ErrorCode kErrorNotEnoughMemory = 8;
inline constexpr ErrorCode kErrorWriteFault = 29;
inline constexpr ErrorCode kErrorReadFault = 30;
inline constexpr ErrorCode kErrorGenFailure = 31;
inline constexpr ErrorCode kErrorSharingViolation = 32;
inline constexpr ErrorCode kErrorFileExists = 80;
inline constexpr ErrorCode kErrorInvalidParameter = 87;
inline constexpr ErrorCode kErrorDiskFull = 112;  // the code callers test for
inline constexpr ErrorCode kErrorFilenameTooLong = 206;
inline constexpr ErrorCode kErrorFileTooLarge = 223;

// errno to Windows error code:
//   ENOSPC, EDQUOT                   112 ERROR_DISK_FULL
//   ENOENT                           2   ERROR_FILE_NOT_FOUND
//   ENOTDIR                          3   ERROR_PATH_NOT_FOUND
//   EMFILE, ENFILE                   4   ERROR_TOO_MANY_OPEN_FILES
//   EACCES, EPERM, EROFS, EISDIR     5   ERROR_ACCESS_DENIED
//   ENOMEM                           8   ERROR_NOT_ENOUGH_MEMORY
//   EIO                              29  ERROR_WRITE_FAULT
//   EBUSY, ETXTBSY                   32  ERROR_SHARING_VIOLATION
//   EEXIST                           80  ERROR_FILE_EXISTS
//   EINVAL                           87  ERROR_INVALID_PARAMETER
//   ENAMETOOLONG                     206 ERROR_FILENAME_EXCED_RANGE
//   EFBIG                            223 ERROR_FILE_TOO_LARGE
//   anything else                    31  ERROR_GEN_FAILURE
ErrorCode ErrorCodeFromErrno(int error);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_ERROR_CODE_H
