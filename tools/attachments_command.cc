// mailslice attachments [--json] FILE: the names of the attachments as the list holds them.
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

struct AttachmentsOptions {
  std::string file;
  bool json = false;
};

int ListAttachments(const AttachmentsOptions& options) {
  if (auto problem = LoadMessage(options.file)) return Fail(options.file, *problem);
  LoadedMessage loaded;
  if (options.json) {
    PrintJsonLine({{"file", options.file}, {"attachments", AttachmentsJson(SizedAttachments())}});
    return kStatusDone;
  }
  for (const std::string& name : AttachmentNames()) std::printf("%s\n", name.c_str());
  return kStatusDone;
}

}  // namespace

void AddAttachmentsCommand(Program& program) {
  auto options = std::make_shared<AttachmentsOptions>();
  CLI::App& command = program.AddCommand(
      "attachments", "list the attachment names",
      "Lists the names of the message's attachments, one a line, as the attachment list holds\n"
      "them: decoded, a doubled extension said once, made safe as file names, an attached\n"
      "message named after its subject with .eml. --json adds each one's decoded size.",
      [options] { return ListAttachments(*options); });
  command.add_option("FILE", options->file, "the message file")->required()->type_name("");
  command.add_flag("--json", options->json, "print one JSON object (see README.md)");
}

}  // namespace mailslice::tools
