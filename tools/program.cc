#include "program.h"

#include "exit_status.h"
#include "message_loading.h"

namespace mailslice::tools {
namespace {

constexpr char kDescription[] =
    "Reads Internet mail messages stored one per file (RFC 822 / MIME) the way the library\n"
    "hands them to a mail application. Run 'mailslice COMMAND --help' for a command's options.";
constexpr int kHelpColumn = 34;

// Errors of the command line, in the style of the program's other error lines, pointing at the
// help of the command that was given.
std::string UsageFailure(const CLI::App* app, const CLI::Error& error) {
  std::string command;
  for (const CLI::App* given : app->get_subcommands()) command = " " + given->get_name();
  return "mailslice: " + std::string(error.what()) + "\nRun 'mailslice" + command +
         " --help' for more information.\n";
}

}  // namespace

Program::Program() : app_(kDescription, "mailslice") {
  app_.require_subcommand(1);
  app_.footer(kExitStatusHelp);
  app_.failure_message(UsageFailure);
  app_.get_formatter()->column_width(kHelpColumn);
}

CLI::App& Program::AddCommand(const std::string& name, const std::string& summary,
                              const std::string& details, std::function<int()> run) {
  CLI::App* command = app_.add_subcommand(name, summary);
  command->footer(details + "\n\n" + kExitStatusHelp);
  device_.AddTo(*command);
  commands_.push_back({command, std::move(run)});
  return *command;
}

bool Program::IsCommand(const std::string& name) const {
  for (const Command& command : commands_) {
    if (command.app->get_name() == name) return true;
  }
  return false;
}

int Program::Run(int argc, char** argv) {
  if (argc > 1 && argv[1][0] != '-' && !IsCommand(argv[1])) {
    std::string known;
    for (const Command& command : commands_) known += " " + command.app->get_name();
    return Fail(argv[1], "no such command (the commands:" + known + ")", kStatusUsage);
  }
  try {
    app_.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app_.exit(error) == 0 ? kStatusDone : kStatusUsage;
  }
  if (auto problem = device_.Apply()) return Fail("device settings", *problem, kStatusWriteFailed);
  for (const Command& command : commands_) {
    if (command.app->parsed()) return command.run();
  }
  return kStatusUsage;
}

}  // namespace mailslice::tools
