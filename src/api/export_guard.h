// Keeps C++ exceptions inside the library: an export that meets one (memory running out, in
// practice) returns its failure value instead: 0, null, or an empty string. The device
// settings are read once per export call.
#ifndef MAILSLICE_API_EXPORT_GUARD_H
#define MAILSLICE_API_EXPORT_GUARD_H

#include <type_traits>

#include "platform/device_settings.h"

namespace mailslice::api {

template <typename Call>
auto Guarded(Call call) noexcept -> decltype(call()) {
  using Result = decltype(call());
  try {
    platform::SettingsScope settings;
    return call();
  } catch (...) {
    if constexpr (!std::is_void_v<Result>) return Result{};
  }
}

}  // namespace mailslice::api

#endif  // MAILSLICE_API_EXPORT_GUARD_H
