// The program's frame: its commands, their options and --help, and the exit status.
#ifndef MAILSLICE_TOOLS_PROGRAM_H
#define MAILSLICE_TOOLS_PROGRAM_H

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

#include "device_options.h"

namespace mailslice::tools {

class Program {
 public:
  Program();

  // Adds a command that takes the device options: `summary` is its line in the list of
  // commands, `details` follow in its own --help; `run` does its work once the command line is
  // read and the settings are in place, and gives the exit status.
  CLI::App& AddCommand(const std::string& name, const std::string& summary,
                       const std::string& details, std::function<int()> run);

  int Run(int argc, char** argv);

 private:
  struct Command {
    CLI::App* app;
    std::function<int()> run;
  };

  bool IsCommand(const std::string& name) const;

  CLI::App app_;
  DeviceOptions device_;
  std::vector<Command> commands_;
};

// Each command adds itself to the program (one file per command).
void AddShowCommand(Program& program);
void AddHeadersCommand(Program& program);
void AddBodyCommand(Program& program);
void AddAttachmentsCommand(Program& program);
void AddSaveCommand(Program& program);
void AddScanCommand(Program& program);

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_PROGRAM_H
