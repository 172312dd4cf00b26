// mailslice body FILE: the readable body as the reader shows it.
#include <cstdio>
#include <memory>

#include "exit_status.h"
#include "message_fields.h"
#include "message_loading.h"
#include "program.h"

namespace mailslice::tools {
namespace {

int ShowBody(const std::string& file) {
  if (auto problem = LoadMessage(file)) return Fail(file, *problem);
  LoadedMessage loaded;
  std::string body = ReadableBody();
  std::fwrite(body.data(), 1, body.size(), stdout);
  std::fputc('\n', stdout);
  return kStatusDone;
}

}  // namespace

void AddBodyCommand(Program& program) {
  auto file = std::make_shared<std::string>();
  CLI::App& command = program.AddCommand(
      "body", "print the readable body",
      "Prints the readable body as the reader shows it: the text part, or an HTML part reduced\n"
      "to text, the parts of a mixed message joined, attached messages introduced by a line of\n"
      "their own, attachments, pictures and sound left out.",
      [file] { return ShowBody(*file); });
  command.add_option("FILE", *file, "the message file")->required()->type_name("");
}

}  // namespace mailslice::tools
