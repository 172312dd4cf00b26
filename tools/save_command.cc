// mailslice save FILE [NAME...] [-o DIR]: saves attachments of a message into a folder.
#include <mailslice/mailslice.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>

#include "attach/attachment_finder.h"
#include "attach/attachment_saver.h"
#include "exit_status.h"
#include "message_loading.h"
#include "platform/file_system.h"
#include "program.h"

namespace mailslice::tools {
namespace {

// Room for the "(n)" that a free name may need, within the 255 bytes a Linux name may have.
constexpr size_t kLongestName = 200;
constexpr size_t kLongestExtension = 16;
constexpr int kReservationAttempts = 100;

struct SaveRequest {
  std::string file;
  std::vector<std::string> names;
  std::string folder = ".";
};

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
      Fail(request.file, "has no attachment named '" + name.ToUtf8() + "'", kStatusNotFound);
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
    if (!path) return Fail(wanted, "cannot be created", kStatusWriteFailed);
    int result = attach::SaveBodyByEncoding(part->body, part->transferEncoding, *path);
    if (result != attach::kSaveSucceeded) {
      platform::Files().Remove(*path);
      return Fail(*path, Problem(result), kStatusWriteFailed);
    }
    std::printf("%s\n", path->c_str());
  }
  return kStatusDone;
}

int SaveAttachments(SaveRequest& request) {
  while (request.folder.size() > 1 && request.folder.back() == '/') request.folder.pop_back();
  std::error_code error;
  if (!std::filesystem::is_directory(request.folder, error)) {
    return Fail(request.folder, "is not a folder", kStatusNotFound);
  }
  if (auto problem = LoadMessage(request.file)) return Fail(request.file, *problem);
  LoadedMessage loaded;
  // The loaded message: the library reads its parts in place.
  attach::MessageAttachments attachments(mime::WalkedText(GetMessageText(), true), CString());
  auto chosen = Chosen(attachments, request);
  return chosen ? SaveChosen(*chosen, request.folder) : kStatusNotFound;
}

}  // namespace

void AddSaveCommand(Program& program) {
  auto request = std::make_shared<SaveRequest>();
  CLI::App& command = program.AddCommand(
      "save", "save attachments to files",
      "Saves the attachments listed under the NAMEs (every attachment without NAMEs) into DIR,\n"
      "decoding Base64 and quoted-printable, and prints each saved path. An existing file is\n"
      "never overwritten: the name gets the first free number, report(0).pdf, report(1).pdf...",
      [request] { return SaveAttachments(*request); });
  command.add_option("FILE", request->file, "the message file")->required()->type_name("");
  command
      .add_option("NAME", request->names, "attachment names as 'mailslice attachments' lists them")
      ->type_name("");
  command.add_option("-o,--output", request->folder, "the folder to save into (default: .)")
      ->type_name("DIR")
      ->check(CLI::Validator(
          [](std::string& folder) { return folder.empty() ? "an empty folder name" : ""; }, ""));
}

}  // namespace mailslice::tools
