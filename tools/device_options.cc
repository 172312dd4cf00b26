#include "device_options.h"

#include <cstdlib>
#include <fstream>

#include "platform/code_page.h"

namespace mailslice::tools {
namespace {

constexpr char kGroup[] = "Device settings (default: the MAILSLICE_* variables)";
constexpr size_t kLongestNumber = 9;  // fits an int
constexpr char kRegistryFileName[] = "registry.reg";
// The clock setting as the device registry holds it; 1 is the 12-hour clock, 0 the 24-hour one.
constexpr char kClockRegistry[] =
    "Windows Registry Editor Version 5.00\n"
    "\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvane\\TimeSet]\n"
    "\"TimeFormat\"=dword:0000000";

CLI::Validator WholeNumber() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        bool digits = !text.empty() && text.size() <= kLongestNumber &&
                      text.find_first_not_of("0123456789") == std::string::npos;
        return digits ? "" : "'" + text + "' is not a whole number";
      },
      "");
}

CLI::Validator KnownCodePage() {
  return CLI::Validator(
      [](std::string& name) -> std::string {
        // Any name that iconv converts from will do.
        if (platform::CharsetToWide(name, "")) return "";
        return "unknown code page '" + name + "'";
      },
      "");
}

void SetIfChosen(const char* variable, const std::string& value) {
  if (!value.empty()) setenv(variable, value.c_str(), 1);
}

}  // namespace

void DeviceOptions::AddTo(CLI::App& command) {
  command.add_option("--language", language_, "interface language: 1 English, 81 Japanese, ...")
      ->type_name("CODE")
      ->check(WholeNumber())
      ->group(kGroup);
  command.add_option("--device-type", deviceType_, "device type: bounds the message size")
      ->type_name("N")
      ->check(WholeNumber())
      ->group(kGroup);
  command.add_option("--codepage", codepage_, "device ANSI code page, an iconv name (CP932, ...)")
      ->type_name("NAME")
      ->check(KnownCodePage())
      ->group(kGroup);
  command.add_option("--messages", messages_, "folder of message files (localised words)")
      ->type_name("DIR")
      ->check(CLI::ExistingDirectory.description(""))
      ->group(kGroup);
  auto* twelve = command.add_flag("--12h", twelveHour_, "show times on the 12-hour clock");
  auto* twentyFour = command.add_flag("--24h", twentyFourHour_, "show times on the 24-hour clock");
  twelve->group(kGroup)->excludes(twentyFour);
  twentyFour->group(kGroup);
}

std::optional<std::string> DeviceOptions::Apply() {
  SetIfChosen("MAILSLICE_LANGUAGE", language_);
  SetIfChosen("MAILSLICE_DEVICE_TYPE", deviceType_);
  SetIfChosen("MAILSLICE_CODEPAGE", codepage_);
  SetIfChosen("MAILSLICE_MESSAGES", messages_);
  return ApplyClock();
}

// The library reads the clock setting from the registry store each time it shows a time. A
// chosen clock is written to a registry file of this run's own, never to the user's.
std::optional<std::string> DeviceOptions::ApplyClock() {
  if (!twelveHour_ && !twentyFourHour_) return std::nullopt;
  clockFolder_ = PrivateFolder::Make();
  if (!clockFolder_) return "cannot make a temporary folder for the clock setting";
  std::string path = clockFolder_->Path(kRegistryFileName);
  std::ofstream registry(path, std::ios::binary);
  registry << kClockRegistry << (twelveHour_ ? '1' : '0') << "\n";
  registry.close();
  if (!registry) return "cannot write the clock setting to " + path;
  setenv("MAILSLICE_REGISTRY", path.c_str(), 1);
  return std::nullopt;
}

}  // namespace mailslice::tools
