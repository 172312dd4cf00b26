#include "platform/device_settings.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/environment_pass.h"

namespace mailslice::platform {
namespace {

constexpr std::array<std::string_view, static_cast<size_t>(Setting::kCount)> kVariableNames = {
    "MAILSLICE_DEVICE_TYPE",
    "MAILSLICE_LANGUAGE",
    "MAILSLICE_CODEPAGE",
    "MAILSLICE_MESSAGES",
    "MAILSLICE_REGISTRY",
    "MAILSLICE_TEMP",
    "XDG_CONFIG_HOME",
    "HOME",
    "TMPDIR"};
static_assert(kVariableNames.size() <= EnvironmentNames::kMaxNames);
constexpr EnvironmentNames kNames(kVariableNames);

thread_local SettingsScope* g_scope = nullptr;

constexpr uint32_t BitOf(size_t index) { return uint32_t{1} << index; }
constexpr uint32_t kLanguageBit = BitOf(static_cast<size_t>(Setting::kLanguage));
constexpr uint32_t kCodePageBit = BitOf(static_cast<size_t>(Setting::kCodePage));

// What this thread last read of the settings, kept from call to call: every export call asks
// for settings, and they seldom change between calls.
struct KeptSettings {
  // The last pass over the environment. It is used again only while the environment holds the
  // same entries (see EnvironmentPass::Unchanged); the values are read from those entries anew
  // at every call, so a value changed in place is seen too.
  EnvironmentPass pass;
  // The value of each setting as last read (empty when unset), and a bit per setting that was
  // set. A value read again is compared with the kept one and copied only when it differs.
  std::array<std::string, kVariableNames.size()> values;
  uint32_t present = 0;
  // Worked out from the kept values; dropped when a value they come from changes.
  std::optional<int> languageCode;
  bool codePageNameKnown = false;
  std::string codePageName;  // never destroyed before the thread ends: it is lent out

  // Forgets what was worked out from the settings of `changed` (bits).
  void Changed(uint32_t changed) {
    if ((changed & kLanguageBit) != 0) languageCode.reset();
    if ((changed & (kLanguageBit | kCodePageBit)) != 0) codePageNameKnown = false;
  }
};

thread_local KeptSettings g_kept;

// Whether the NUL-terminated `value` reads `kept`; strncmp stops at the value's NUL, and
// `kept` holds none before its own.
bool SameValue(const std::string& kept, const char* value) {
  return std::strncmp(value, kept.c_str(), kept.size() + 1) == 0;
}

// Runs `read` in the open scope, or in a scope of its own for a reading outside any.
template <typename Read>
decltype(auto) InScope(Read read) {
  if (g_scope != nullptr) return read(*g_scope);
  SettingsScope scope{SettingsScope::Alone{}};
  return read(scope);
}

std::optional<std::string> Variable(Setting setting) {
  return InScope([setting](SettingsScope& scope) -> std::optional<std::string> {
    if (const std::string* value = scope.Variable(setting)) return *value;
    return std::nullopt;
  });
}

// A setting that is not a whole number falls back to its default.
int IntegerVariable(SettingsScope& scope, Setting setting, int fallback) {
  const std::string* text = scope.Variable(setting);
  if (text == nullptr) return fallback;
  errno = 0;
  char* end = nullptr;
  long value = std::strtol(text->c_str(), &end, 10);
  if (errno != 0 || end == text->c_str() || *end != '\0' || value < -2147483647L - 1 ||
      value > 2147483647L) {
    return fallback;
  }
  return static_cast<int>(value);
}

// The language, its code page and the message files are asked for together: text is
// converted, and words are shown, in the language of the device.
void KeepLanguageSettings(SettingsScope& scope) {
  scope.Keep({Setting::kLanguage, Setting::kCodePage, Setting::kMessages});
}

std::optional<std::string> HomeFolder() {
  if (auto home = Variable(Setting::kHome)) return home;
  if (const passwd* entry = getpwuid(getuid()); entry != nullptr && entry->pw_dir != nullptr) {
    return std::string(entry->pw_dir);
  }
  return std::nullopt;
}

}  // namespace

SettingsScope::SettingsScope() : outermost_(g_scope == nullptr) {
  if (outermost_) g_scope = this;
}

SettingsScope::~SettingsScope() {
  if (outermost_) g_scope = nullptr;
}

const std::string* SettingsScope::Variable(Setting setting) {
  if ((kept_ & Bit(setting)) == 0) Read(Bit(setting));
  auto index = static_cast<size_t>(setting);
  return (g_kept.present & BitOf(index)) != 0 ? &g_kept.values[index] : nullptr;
}

void SettingsScope::Read(uint32_t settings) {
  KeptSettings& kept = g_kept;
  if (!kept.pass.Unchanged(environ)) kept.pass.Read(kNames, environ);
  // A setting neither set before nor found now is still unset: most are.
  for (uint32_t left = settings & (kept.present | kept.pass.Found()); left != 0; left &= left - 1) {
    auto index = static_cast<size_t>(std::countr_zero(left));
    const char* value = kept.pass.Value(index);
    bool set = value != nullptr && *value != '\0';
    bool wasSet = (kept.present & BitOf(index)) != 0;
    if (set ? wasSet && SameValue(kept.values[index], value) : !wasSet) continue;
    kept.Changed(BitOf(index));
    kept.present &= ~BitOf(index);
    if (set) {
      kept.values[index].assign(value);
      kept.present |= BitOf(index);
    }
  }
  kept_ |= settings;
}

int DeviceType() {
  return InScope(
      [](SettingsScope& scope) { return IntegerVariable(scope, Setting::kDeviceType, 0); });
}

int LanguageCode() {
  // Asked at every conversion: once worked out in this call, it is taken straight from the
  // scope.
  if (g_scope != nullptr && g_scope->languageCode_) return *g_scope->languageCode_;
  return InScope(SettingsScope::WorkOutLanguageCode);
}

int SettingsScope::WorkOutLanguageCode(SettingsScope& scope) {
  KeepLanguageSettings(scope);
  KeptSettings& kept = g_kept;
  if (!kept.languageCode) kept.languageCode = IntegerVariable(scope, Setting::kLanguage, 1);
  scope.languageCode_ = kept.languageCode;
  return *kept.languageCode;
}

std::string CodePageNameForLanguage(int languageCode) {
  switch (languageCode) {
    case 81:
      return "CP932";  // Japanese
    case 82:
      return "CP949";  // Korean
    case 7:
      return "CP1251";  // Russian
    case 48:
      return "CP1250";  // Central European
    case 966:
      return "CP1256";  // Arabic
    default:
      return "CP1252";  // Western
  }
}

const std::string& AnsiCodePageName() {
  if (g_scope != nullptr && g_scope->codePageName_ != nullptr) return *g_scope->codePageName_;
  return InScope(SettingsScope::WorkOutCodePageName);
}

const std::string& SettingsScope::WorkOutCodePageName(SettingsScope& scope) {
  KeepLanguageSettings(scope);
  KeptSettings& kept = g_kept;
  if (!kept.codePageNameKnown) {
    const std::string* name = scope.Variable(Setting::kCodePage);
    kept.codePageName = name != nullptr ? *name : CodePageNameForLanguage(LanguageCode());
    kept.codePageNameKnown = true;
  }
  scope.codePageName_ = &kept.codePageName;
  return kept.codePageName;
}

std::optional<std::string> MessagesFolder() {
  return InScope([](SettingsScope& scope) {
    KeepLanguageSettings(scope);
    const std::string* folder = scope.Variable(Setting::kMessages);
    return folder != nullptr ? std::optional<std::string>(*folder) : std::nullopt;
  });
}

std::optional<std::string> RegistryPath() {
  return InScope([](SettingsScope& scope) -> std::optional<std::string> {
    scope.Keep({Setting::kRegistry, Setting::kConfigHome, Setting::kHome});
    if (const std::string* path = scope.Variable(Setting::kRegistry)) return *path;
    if (const std::string* config = scope.Variable(Setting::kConfigHome)) {
      return *config + "/mailslice/registry.reg";
    }
    if (auto home = HomeFolder()) return *home + "/.config/mailslice/registry.reg";
    return std::nullopt;
  });
}

std::optional<std::string> TempFolderSetting() { return Variable(Setting::kTemp); }

std::string HostTempRoot() { return Variable(Setting::kTempRoot).value_or("/tmp"); }

}  // namespace mailslice::platform
