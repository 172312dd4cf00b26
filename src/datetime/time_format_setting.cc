#include "datetime/time_format_setting.h"

#include <cstdint>
#include <string>

#include "platform/registry_store.h"

namespace mailslice::datetime {
namespace {

const std::string kTimeSetKey = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvane\\TimeSet";
const std::string kTimeFormatValue = "TimeFormat";
constexpr uint32_t kTwelveHourValue = 1;

}  // namespace

int LoadTimeFormat() {
  auto [opened, value] =
      platform::registry::CreateOrOpenKeyAndQueryDword(kTimeSetKey, kTimeFormatValue);
  if (!opened) {
    // A device whose settings key is unusable gets a fresh one that says 24-hour.
    platform::registry::SetDword(kTimeSetKey, kTimeFormatValue, kTwentyFourHourClock);
    return kTwentyFourHourClock;
  }
  // A device that has never been set up has no value; it shows the 12-hour clock.
  if (!value) return kTwelveHourClock;
  return *value == kTwelveHourValue ? kTwelveHourClock : kTwentyFourHourClock;
}

}  // namespace mailslice::datetime
