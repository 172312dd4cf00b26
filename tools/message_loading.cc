#include "message_loading.h"

#include <mailslice/mailslice.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "api/message_buffer.h"
#include "exit_status.h"

namespace mailslice::tools {
namespace {

namespace fs = std::filesystem;

// The names mail programs give header fields: letters, digits and a few marks ("X-Mailer",
// "DKIM-Signature"); the names of other files' first lines ("{\"key\"", "%PDF-1.4") are not.
bool IsHeaderFieldName(std::string_view name) {
  if (name.empty()) return false;
  for (char ch : name) {
    bool letterOrDigit =
        (ch >= 'A' && ch <= 'Z') || (ch >= 'a' && ch <= 'z') || (ch >= '0' && ch <= '9');
    if (!letterOrDigit && ch != '-' && ch != '_' && ch != '.') return false;
  }
  return true;
}

// A message starts with a header field ("Return-Path: ...", "From: ..."); mailbox files of one
// message start with the "From " line of the mbox format instead.
bool LooksLikeMessage(const char* text) {
  std::string_view message(text);
  if (message.starts_with("From ")) return true;
  std::string_view firstLine = message.substr(0, message.find('\n'));
  size_t colon = firstLine.find(':');
  return colon != std::string_view::npos && IsHeaderFieldName(firstLine.substr(0, colon));
}

// What keeps a path from being read at all; nothing for a regular file. A pipe or a device is
// never opened: reading it could wait for ever.
std::optional<LoadProblem> CheckPath(const std::string& path) {
  std::error_code error;
  fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) {
    if (fs::is_symlink(fs::symlink_status(path, error))) {
      return LoadProblem{kStatusNotFound, "no such file (a link to nothing)"};
    }
    return LoadProblem{kStatusNotFound, "no such file"};
  }
  if (fs::is_directory(status)) return LoadProblem{kStatusUnreadable, "is a folder, not a message"};
  if (!fs::is_regular_file(status)) {
    return LoadProblem{kStatusUnreadable, "is not a regular file"};
  }
  return std::nullopt;
}

// Why the library refused a regular file, found out after the fact from the file itself.
LoadProblem Diagnose(const std::string& path) {
  if (!std::ifstream(path)) {
    return {kStatusUnreadable, std::string("cannot be read: ") + std::strerror(errno)};
  }
  std::error_code error;
  auto size = fs::file_size(path, error);
  if (error) return {kStatusUnreadable, "cannot be read: " + error.message()};
  if (size == 0) return {kStatusNotMessage, "is not a message: the file is empty"};
  int deviceType = CVelEdit().GetCurrentDeviceType();
  if (auto limit = api::MessageSizeLimit(deviceType); limit && size > *limit) {
    return {kStatusTooLarge, "is too large: " + std::to_string(size) + " bytes, over the " +
                                 std::to_string(*limit) + "-byte limit of device type " +
                                 std::to_string(deviceType)};
  }
  if (size >= 0xFFFFFFFFu) return {kStatusTooLarge, "is too large to load (4 GiB or more)"};
  return {kStatusUnreadable, "cannot be loaded (out of memory)"};
}

}  // namespace

std::optional<LoadProblem> LoadMessage(const std::string& path) {
  if (auto problem = CheckPath(path)) return problem;
  // The library takes file names as text; a name in another encoding cannot reach the file.
  if (CString::FromUtf8(path).ToUtf8() != path) {
    return LoadProblem{kStatusUnreadable, "cannot be opened: its name is not UTF-8"};
  }
  if (MessageFileOpenAndMemoryAlloc(CString::FromUtf8(path)) != 1) return Diagnose(path);
  if (!LooksLikeMessage(GetMessageText())) {
    MessageMemoryFree();
    return LoadProblem{kStatusNotMessage, "is not a message: its first line is not a header field"};
  }
  return std::nullopt;
}

LoadedMessage::~LoadedMessage() { MessageMemoryFree(); }

int Fail(const std::string& file, const std::string& problem, int status) {
  std::fprintf(stderr, "mailslice: %s: %s\n", file.c_str(), problem.c_str());
  return status;
}

int Fail(const std::string& file, const LoadProblem& problem) {
  return Fail(file, problem.why, problem.status);
}

}  // namespace mailslice::tools
