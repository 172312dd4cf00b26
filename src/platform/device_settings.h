// The device settings as the Linux host stands in for them: each is read from the environment
// every time it is asked for, so a caller may change a setting between two calls. Within one
// call of the library the settings cannot change, and a SettingsScope keeps them meanwhile.
#ifndef MAILSLICE_PLATFORM_DEVICE_SETTINGS_H
#define MAILSLICE_PLATFORM_DEVICE_SETTINGS_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace mailslice::platform {

// While one lives (on this thread), each setting is read from the environment once: a call
// that converts text asks for the code page at every conversion, and the environment is
// searched from its start each time. Scopes nest; the outermost keeps the settings.
class SettingsScope {
 public:
  SettingsScope();
  ~SettingsScope();
  SettingsScope(const SettingsScope&) = delete;
  SettingsScope& operator=(const SettingsScope&) = delete;

 private:
  friend std::optional<std::string> KeptVariable(const char* name);
  friend int LanguageCode();
  friend std::string AnsiCodePageName();
  bool outermost_;
  std::vector<std::pair<const char*, std::optional<std::string>>> read_;  // names are constants
  // The two settings every conversion asks for, as worked out from the variables.
  std::optional<int> languageCode_;
  std::optional<std::string> codePageName_;
};

// The environment variable `name` (a constant), empty counting as unset; kept while a
// SettingsScope lives.
std::optional<std::string> KeptVariable(const char* name);

// MAILSLICE_DEVICE_TYPE, default 0 (no size limit).
int DeviceType();
// MAILSLICE_LANGUAGE, default 1.
int LanguageCode();
// MAILSLICE_CODEPAGE, else the iconv name that goes with the language code.
std::string AnsiCodePageName();
// The iconv name of the ANSI code page of a language code.
std::string CodePageNameForLanguage(int languageCode);
// MAILSLICE_MESSAGES; nothing when unset (the built-in catalogs serve).
std::optional<std::string> MessagesFolder();
// MAILSLICE_REGISTRY, else $XDG_CONFIG_HOME/mailslice/registry.reg, else
// ~/.config/mailslice/registry.reg; nothing when no home can be found.
std::optional<std::string> RegistryPath();
// MAILSLICE_TEMP when set; else nothing (the temporary folder picks its own place).
std::optional<std::string> TempFolderSetting();
// $TMPDIR when set and not empty, else /tmp.
std::string HostTempRoot();

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_DEVICE_SETTINGS_H
