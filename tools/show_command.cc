// mailslice show [--json] FILE: the message as the reader shows it.
#include <cstdio>
#include <memory>

#include "attachment_sizes.h"
#include "exit_status.h"
#include "json_output.h"
#include "message_fields.h"
#include "message_loading.h"
#include "program.h"

namespace mailslice::tools {
namespace {

struct ShowOptions {
  std::string file;
  bool json = false;
};

std::string Joined(const std::vector<std::string>& parts) {
  std::string joined;
  for (const std::string& part : parts) joined += (joined.empty() ? "" : ", ") + part;
  return joined;
}

std::string SizeText(const SizedAttachment& attachment) {
  if (!attachment.size) return "size unknown";
  return std::to_string(*attachment.size) + (*attachment.size == 1 ? " byte" : " bytes");
}

// The reader's header block (a Cc line only when there is a Cc, an Attachment line for each
// attachment), an empty line and the body.
void PrintText() {
  std::printf("From: %s\n", GetMailFrom(GetFrom()).ToUtf8().c_str());
  std::printf("To: %s\n", GetMailTo(GetTo()).ToUtf8().c_str());
  std::vector<std::string> cc = CcAddresses(GetCc());
  if (!cc.empty()) std::printf("Cc: %s\n", Joined(cc).c_str());
  std::printf("Subject: %s\n", GetParsingSubject(GetSubject()).ToUtf8().c_str());
  std::printf("Date: %s\n", LocalDate().c_str());
  for (const SizedAttachment& attachment : SizedAttachments()) {
    std::printf("Attachment: %s (%s)\n", attachment.name.c_str(), SizeText(attachment).c_str());
  }
  std::string body = ReadableBody();
  std::printf("\n");
  std::fwrite(body.data(), 1, body.size(), stdout);
  if (!body.ends_with('\n')) std::printf("\n");
}

Json JsonOf(const std::string& file) {
  CString from = GetFrom();
  return {
      {"file", file},
      {"from", GetMailFrom(from).ToUtf8()},
      {"from_address", GetMailFromAddress(from).ToUtf8()},
      {"to", GetMailTo(GetTo()).ToUtf8()},
      {"cc", CcAddresses(GetCc())},
      {"subject", GetParsingSubject(GetSubject()).ToUtf8()},
      {"date", GetDate().ToUtf8()},
      {"local_date", LocalDate()},
      {"body", ReadableBody()},
      {"attachments", AttachmentsJson(SizedAttachments())},
  };
}

int Show(const ShowOptions& options) {
  if (auto problem = LoadMessage(options.file)) return Fail(options.file, *problem);
  LoadedMessage loaded;
  if (options.json) {
    PrintJsonLine(JsonOf(options.file));
  } else {
    PrintText();
  }
  return kStatusDone;
}

}  // namespace

void AddShowCommand(Program& program) {
  auto options = std::make_shared<ShowOptions>();
  CLI::App& command = program.AddCommand(
      "show", "print the message as the reader shows it",
      "Prints From, To, Cc, Subject and the Date in local time, one line for each attachment\n"
      "with its size once decoded, an empty line and the readable body.",
      [options] { return Show(*options); });
  command.add_option("FILE", options->file, "the message file")->required()->type_name("");
  command.add_flag("--json", options->json, "print one JSON object (see README.md)");
}

}  // namespace mailslice::tools
