// The device registry, kept in a text file in the format of an exported registry file:
//
//   Windows Registry Editor Version 5.00
//
//   [HKEY_LOCAL_MACHINE\SOFTWARE\Corvane\TimeSet]
//   "TimeFormat"=dword:00000001
//
// Key paths and value names are compared without regard to ASCII letter case, as the registry
// does. Lines may end in LF or CR LF; the file is written with LF, replaced atomically.
#ifndef MAILSLICE_PLATFORM_REGISTRY_STORE_H
#define MAILSLICE_PLATFORM_REGISTRY_STORE_H

#include <cstdint>
#include <optional>
#include <string>

namespace mailslice::platform::registry {

// Opens the key (for example "HKEY_LOCAL_MACHINE\SOFTWARE\Corvane\TimeSet"), writing its empty
// section when it is missing. False when the store cannot be read, created or written.
bool CreateOrOpenKey(const std::string& keyPath);

// The DWORD value of the key; nothing when the store, the key or the value is missing or the
// value is not a DWORD.
std::optional<uint32_t> QueryDword(const std::string& keyPath, const std::string& valueName);

struct KeyQuery {
  bool opened = false;            // what CreateOrOpenKey answers
  std::optional<uint32_t> value;  // what QueryDword then answers
};

// CreateOrOpenKey and then QueryDword, reading the store once.
KeyQuery CreateOrOpenKeyAndQueryDword(const std::string& keyPath, const std::string& valueName);

// Sets the DWORD value, creating the key when missing. False when the store cannot be written.
bool SetDword(const std::string& keyPath, const std::string& valueName, uint32_t value);

}  // namespace mailslice::platform::registry

#endif  // MAILSLICE_PLATFORM_REGISTRY_STORE_H
