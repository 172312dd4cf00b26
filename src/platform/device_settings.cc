#include "platform/device_settings.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace mailslice::platform {
namespace {

thread_local SettingsScope* g_scope = nullptr;

std::optional<std::string> ReadVariable(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return std::nullopt;
  return std::string(value);
}

std::optional<std::string> Variable(const char* name) { return KeptVariable(name); }

// A setting that is not a whole number falls back to its default.
int IntegerVariable(const char* name, int fallback) {
  auto text = Variable(name);
  if (!text) return fallback;
  errno = 0;
  char* end = nullptr;
  long value = std::strtol(text->c_str(), &end, 10);
  if (errno != 0 || end == text->c_str() || *end != '\0' || value < -2147483647L - 1 ||
      value > 2147483647L) {
    return fallback;
  }
  return static_cast<int>(value);
}

std::optional<std::string> HomeFolder() {
  if (auto home = Variable("HOME")) return home;
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

std::optional<std::string> KeptVariable(const char* name) {
  if (g_scope == nullptr) return ReadVariable(name);
  for (const auto& [known, value] : g_scope->read_) {
    if (std::strcmp(known, name) == 0) return value;
  }
  return g_scope->read_.emplace_back(name, ReadVariable(name)).second;
}

int DeviceType() { return IntegerVariable("MAILSLICE_DEVICE_TYPE", 0); }

int LanguageCode() {
  if (g_scope == nullptr) return IntegerVariable("MAILSLICE_LANGUAGE", 1);
  if (!g_scope->languageCode_) g_scope->languageCode_ = IntegerVariable("MAILSLICE_LANGUAGE", 1);
  return *g_scope->languageCode_;
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
  auto workOut = [] {
    if (auto name = Variable("MAILSLICE_CODEPAGE")) return *name;
    return CodePageNameForLanguage(LanguageCode());
  };
  if (g_scope == nullptr) return workOut();
  if (!g_scope->codePageName_) g_scope->codePageName_ = workOut();
  return *g_scope->codePageName_;
}

std::optional<std::string> MessagesFolder() { return Variable("MAILSLICE_MESSAGES"); }

std::optional<std::string> RegistryPath() {
  if (auto path = Variable("MAILSLICE_REGISTRY")) return path;
  if (auto config = Variable("XDG_CONFIG_HOME")) return *config + "/mailslice/registry.reg";
  if (auto home = HomeFolder()) return *home + "/.config/mailslice/registry.reg";
  return std::nullopt;
}

std::optional<std::string> TempFolderSetting() { return Variable("MAILSLICE_TEMP"); }

std::string HostTempRoot() { return Variable("TMPDIR").value_or("/tmp"); }

}  // namespace mailslice::platform
