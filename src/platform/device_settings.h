// The device settings as the Linux host stands in for them: each is read from the environment
// every time it is asked for, so a caller may change a setting between two calls. Within one
// call of the library the settings cannot change, and a SettingsScope keeps them meanwhile.
#ifndef MAILSLICE_PLATFORM_DEVICE_SETTINGS_H
#define MAILSLICE_PLATFORM_DEVICE_SETTINGS_H

#include <array>
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
  // scope; null when it was unset or empty.
  const std::string* Variable(Setting setting) {
    if ((kept_ & Bit(setting)) == 0) Read(Bit(setting));
    return (present_ & Bit(setting)) != 0 ? &slots_[static_cast<size_t>(setting)].value : nullptr;
  }
  // Asks for the variables of several settings at once, as a setting worked out from them
  // does.
  void Keep(std::initializer_list<Setting> settings) {
    uint32_t wanted = 0;
    for (Setting setting : settings) wanted |= Bit(setting);
    if ((wanted & ~kept_) != 0) Read(wanted & ~kept_);
  }

 private:
  friend int LanguageCode();
  friend std::string AnsiCodePageName();
  static constexpr size_t kSettingCount = static_cast<size_t>(Setting::kCount);
  static constexpr uint32_t Bit(Setting setting) {
    return uint32_t{1} << static_cast<unsigned>(setting);
  }

  // Reads and keeps the variables of `settings` (bits), none of them kept yet.
  void Read(uint32_t settings);

  // A variable's value, made only when the variable is set: most are never asked for.
  union Slot {
    Slot() {}
    ~Slot() {}
    std::string value;
  };

  bool outermost_;
  uint32_t kept_ = 0;     // a bit per setting whose variable has been read
  uint32_t present_ = 0;  // a bit per setting whose variable was set, its value in slots_
  std::array<Slot, kSettingCount> slots_;
  // The two settings every conversion asks for, as worked out from the variables.
  std::optional<int> languageCode_;
  std::optional<std::string> codePageName_;
};

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
