#include "message_loading.h"

#include <mailslice/mailslice.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "api/message_buffer.h"

namespace mailslice::tools {
namespace {

// Why the library refused the file, found out after the fact from the file itself.
std::string Diagnose(const std::string& path) {
  std::error_code error;
  auto status = std::filesystem::status(path, error);
  if (error || !std::filesystem::exists(status)) return "no such file";
  if (std::filesystem::is_directory(status)) return "is a folder, not a message file";
  if (!std::ifstream(path)) return std::string("cannot be read: ") + std::strerror(errno);
  auto size = std::filesystem::file_size(path, error);
  if (error) return "cannot be read: " + error.message();
  if (size == 0) return "is empty";
  int deviceType = CVelEdit().GetCurrentDeviceType();
  if (auto limit = api::MessageSizeLimit(deviceType); limit && size > *limit) {
    return "is " + std::to_string(size) + " bytes, over the " + std::to_string(*limit) +
           "-byte limit of device type " + std::to_string(deviceType);
  }
  if (size >= 0xFFFFFFFFu) return "is too large to load (4 GiB or more)";
  return "cannot be loaded (out of memory)";
}

}  // namespace

bool LoadMessage(const std::string& path, std::string& problem) {
  if (MessageFileOpenAndMemoryAlloc(CString::FromUtf8(path)) == 1) return true;
  problem = Diagnose(path);
  return false;
}

}  // namespace mailslice::tools
