// The device settings as options of every command: --language, --device-type, --codepage and
// --messages set the library's MAILSLICE_* variables for the run; --12h and --24h choose the
// clock of the times shown.
#ifndef MAILSLICE_TOOLS_DEVICE_OPTIONS_H
#define MAILSLICE_TOOLS_DEVICE_OPTIONS_H

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "private_folder.h"

namespace mailslice::tools {

class DeviceOptions {
 public:
  // Adds the options to a command, in a group of their own in its --help.
  void AddTo(CLI::App& command);

  // Puts the chosen settings in place for the library; the problem, when one cannot be.
  std::optional<std::string> Apply();

 private:
  std::optional<std::string> ApplyClock();

  std::string language_;
  std::string deviceType_;
  std::string codepage_;
  std::string messages_;
  bool twelveHour_ = false;
  bool twentyFourHour_ = false;
  // Holds the registry file of this run's clock setting while the program runs.
  std::optional<PrivateFolder> clockFolder_;
};

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_DEVICE_OPTIONS_H
