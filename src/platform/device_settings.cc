#include "platform/device_settings.h"

#include <pwd.h>
#include <unistd.h>

#include <bit>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
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

// The last pass over the environment on this thread, kept from call to call: every export call
// asks for settings, and the environment seldom changes between calls. It is used again only
// while the environment holds the same entries (see EnvironmentPass::Unchanged); the values
// are read from those entries anew at every call, so a value changed in place is seen too.
thread_local EnvironmentPass g_pass;

// Runs `read` in the open scope, or in a scope of its own for a reading outside any.
template <typename Read>
auto InScope(Read read) {
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
  for (uint32_t left = present_; left != 0; left &= left - 1) {
    slots_[static_cast<size_t>(std::countr_zero(left))].value.~basic_string();
  }
}

void SettingsScope::Read(uint32_t settings) {
  if (!g_pass.Unchanged(environ)) g_pass.Read(kNames, environ);
  for (uint32_t left = settings; left != 0; left &= left - 1) {
    auto index = static_cast<size_t>(std::countr_zero(left));
    const char* value = g_pass.Value(index);
    if (value != nullptr && *value != '\0') {
      new (&slots_[index].value) std::string(value);
      present_ |= uint32_t{1} << index;
    }
  }
  kept_ |= settings;
}

int DeviceType() {
  return InScope(
      [](SettingsScope& scope) { return IntegerVariable(scope, Setting::kDeviceType, 0); });
}

int LanguageCode() {
  // Asked at every conversion: once worked out, it is taken straight from the scope.
  if (g_scope != nullptr && g_scope->languageCode_) return *g_scope->languageCode_;
  return InScope([](SettingsScope& scope) {
    if (!scope.languageCode_) {
      KeepLanguageSettings(scope);
      scope.languageCode_ = IntegerVariable(scope, Setting::kLanguage, 1);
    }
    return *scope.languageCode_;
  });
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

std::string AnsiCodePageName() {
  if (g_scope != nullptr && g_scope->codePageName_) return *g_scope->codePageName_;
  return InScope([](SettingsScope& scope) {
    if (!scope.codePageName_) {
      KeepLanguageSettings(scope);
      const std::string* name = scope.Variable(Setting::kCodePage);
      scope.codePageName_ = name != nullptr ? *name : CodePageNameForLanguage(LanguageCode());
    }
    return *scope.codePageName_;
  });
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
