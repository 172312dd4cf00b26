// The device settings as the Linux host stands in for them: each is read from the environment
// every time it is asked for, so a caller may change a setting between two calls. Within one
// call of the library the settings cannot change, and a SettingsScope keeps them meanwhile.
#ifndef MAILSLICE_PLATFORM_DEVICE_SETTINGS_H
#define MAILSLICE_PLATFORM_DEVICE_SETTINGS_H

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>

namespace mailslice::platform {

// The environment variables the library reads (the names are in device_settings.cc).
enum class Setting : uint8_t {
  kDeviceType,
  kLanguage,
  kCodePage,
  kMessages,
  kRegistry,
  kTemp,
  kConfigHome,
  kHome,
  kTempRoot,
  kCount
};

// While one lives (on this thread), each setting is read from the environment once, when it
// is first asked for, and kept: a call that converts text asks for the code page at every
// conversion. The first setting asked for reads every variable of the library in one pass over
// the environment; a setting first asked for later, in this call or a later one, takes its
// value from that pass while the environment holds the same entries. Scopes nest; the
// outermost keeps the settings.
//
// The values read, and the language code and code page worked out from them, are kept by the
// thread from call to call and used again while each value reads the same: a call mostly finds
// the settings as the call before left them.
class SettingsScope {
 public:
  SettingsScope();
  // A scope that keeps settings for one reading alone, shared with no other: a setting asked
  // for outside any call is read from the environment on its own.
  struct Alone {};
  explicit SettingsScope(Alone) : outermost_(false) {}
  ~SettingsScope();
  SettingsScope(const SettingsScope&) = delete;
  SettingsScope& operator=(const SettingsScope&) = delete;

  // The variable of `setting` as the environment gave it when it was first asked for in this
  // scope; null when it was unset or empty. It stays as it is until the scope ends.
  const std::string* Variable(Setting setting);
  // Asks for the variables of several settings at once, as a setting worked out from them
  // does.
  void Keep(std::initializer_list<Setting> settings) {
    uint32_t wanted = 0;
    for (Setting setting : settings) wanted |= Bit(setting);
    if ((wanted & ~kept_) != 0) Read(wanted & ~kept_);
  }

 private:
  friend int LanguageCode();
  friend const std::string& AnsiCodePageName();
  static constexpr uint32_t Bit(Setting setting) {
    return uint32_t{1} << static_cast<unsigned>(setting);
  }

  // Reads the variables of `settings` (bits), none of them read in this scope yet, into the
  // values the thread keeps.
  void Read(uint32_t settings);
  // The language code and code page name in `scope`, worked out once it has asked for their
  // variables (or taken from the thread while those read as before).
  static int WorkOutLanguageCode(SettingsScope& scope);
  static const std::string& WorkOutCodePageName(SettingsScope& scope);

  bool outermost_;
  uint32_t kept_ = 0;  // a bit per setting whose variable has been read in this scope
  // The two settings every conversion asks for, once worked out in this scope.
  std::optional<int> languageCode_;
  const std::string* codePageName_ = nullptr;
};

// MAILSLICE_DEVICE_TYPE, default 0 (no size limit).
int DeviceType();
// MAILSLICE_LANGUAGE, default 1.
int LanguageCode();
// MAILSLICE_CODEPAGE, else the iconv name that goes with the language code. The name is kept
// by the thread and stays as it is until the call ends (outside any call, until the settings
// are next asked for).
const std::string& AnsiCodePageName();
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
