#include "save_command.h"

#include <mailslice/mailslice.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "attach/attachment_finder.h"
#include "attach/attachment_saver.h"
#include "message_loading.h"
#include "platform/file_system.h"

namespace mailslice::tools {
namespace {

constexpr char kUsage[] = "usage: mailslice save FILE [NAME...] [-o DIR]\n";
// Room for the "(n)" that a free name may need, within the 255 bytes a Linux name may have.
constexpr size_t kLongestName = 200;
constexpr size_t kLongestExtension = 16;
constexpr int kReservationAttempts = 100;

struct SaveRequest {
  std::string file;
  std::vector<std::string> names;
  std::string folder = ".";
};

std::optional<SaveRequest> ParseArguments(const std::vector<std::string>& arguments) {
  SaveRequest request;
  bool haveFile = false;
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "-o") {
      if (++i == arguments.size()) return std::nullopt;
      request.folder = arguments[i];
    } else if (!haveFile) {
      request.file = arguments[i];
      haveFile = true;
    } else {
      request.names.push_back(arguments[i]);
    }
  }
  if (!haveFile || request.folder.empty()) return std::nullopt;
  while (request.folder.size() > 1 && request.folder.back() == '/') request.folder.pop_back();
  return request;
}

int Fail(const std::string& file, const std::string& problem) {
  std::fprintf(stderr, "mailslice: %s: %s\n", file.c_str(), problem.c_str());
  return 1;
}

// Cuts an over-long name, keeping a short extension and whole UTF-8 characters.
std::string Shortened(std::string name) {
  if (name.size() <= kLongestName) return name;
  size_t dot = name.rfind('.');
  std::string extension =
      dot != std::string::npos && name.size() - dot <= kLongestExtension ? name.substr(dot) : "";
  size_t keep = kLongestName - extension.size();
  while (keep > 0 && (static_cast<unsigned char>(name[keep]) & 0xC0) == 0x80) --keep;
  return name.substr(0, keep) + extension;
}

// The listed names are bare file names already; whatever a message holds, this keeps them so:
// no folder separators, no control characters, never "." or "..", never too long.
std::string SafeFileName(const CString& listed) {
  std::u16string safe;
  for (char16_t ch : listed.Str()) {
    if (ch == u'/' || ch == u'\\') {
      safe += u'_';
    } else if (ch >= 0x20 && ch != 0x7F) {
      safe += ch;
    }
  }
  std::string name = Shortened(CString(std::move(safe)).ToUtf8());
  if (name.empty() || name == "." || name == "..") name = "noname";
  return name;
}

// Picks the free name and claims it with an empty file of our own, so that a file that
// appears in the meantime is never overwritten.
std::optional<std::string> ReserveFreePath(const std::string& wanted) {
  for (int attempt = 0; attempt < kReservationAttempts; ++attempt) {
    CString path = CString::FromUtf8(wanted);
    IsFile(0, path);
    std::string chosen = path.ToUtf8();
    platform::ErrorCode error = platform::kErrorSuccess;
    if (platform::Files().CreateNew(chosen, &error) != nullptr) return chosen;
    if (error != platform::kErrorFileExists) return std::nullopt;
  }
  return std::nullopt;
}

std::string Problem(int result) {
  if (result == attach::kSaveImpossible) {
    return "cannot be saved (no temporary file, or out of memory)";
  }
  if (result == static_cast<int>(platform::kErrorDiskFull)) return "cannot be saved: disk full";
  return "cannot be saved (error " + std::to_string(result) + ")";
}

// The attachments to save: all of them, or those listed under one of the names.
std::optional<std::vector<const attach::AttachmentPart*>> Chosen(
    const attach::MessageAttachments& attachments, const SaveRequest& request) {
  std::vector<const attach::AttachmentPart*> chosen;
  std::vector<CString> names;
  for (const std::string& name : request.names) names.push_back(CString::FromUtf8(name));
  for (const CString& name : names) {
    if (attachments.Find(name, CString()) == nullptr) {
      Fail(request.file, "has no attachment named '" + name.ToUtf8() + "'");
      return std::nullopt;
    }
  }
  for (const attach::AttachmentPart& part : attachments.parts()) {
    if (names.empty() || std::find(names.begin(), names.end(), part.name) != names.end()) {
      chosen.push_back(&part);
    }
  }
  return chosen;
}

int SaveChosen(const std::vector<const attach::AttachmentPart*>& parts, const std::string& folder) {
  for (const attach::AttachmentPart* part : parts) {
    std::string wanted = folder + "/" + SafeFileName(part->name);
    std::optional<std::string> path = ReserveFreePath(wanted);
    if (!path) return Fail(wanted, "cannot be created");
    int result = attach::SaveBodyByEncoding(part->body, part->transferEncoding, *path);
    if (result != attach::kSaveSucceeded) {
      platform::Files().Remove(*path);
      return Fail(*path, Problem(result));
    }
    std::printf("%s\n", path->c_str());
  }
  return 0;
}

}  // namespace

int SaveAttachments(const std::vector<std::string>& arguments) {
  std::optional<SaveRequest> request = ParseArguments(arguments);
  if (!request) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  std::error_code error;
  if (!std::filesystem::is_directory(request->folder, error)) {
    return Fail(request->folder, "is not a folder");
  }
  std::string problem;
  if (!LoadMessage(request->file, problem)) return Fail(request->file, problem);
  attach::MessageAttachments attachments(GetMessageText(), CString());
  auto chosen = Chosen(attachments, *request);
  int status = chosen ? SaveChosen(*chosen, request->folder) : 1;
  MessageMemoryFree();
  return status;
}

}  // namespace mailslice::tools
