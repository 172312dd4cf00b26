// The user's clock setting, 12- or 24-hour, kept in the device registry.
#ifndef MAILSLICE_DATETIME_TIME_FORMAT_SETTING_H
#define MAILSLICE_DATETIME_TIME_FORMAT_SETTING_H

namespace mailslice::datetime {

inline constexpr int kTwentyFourHourClock = 0;
inline constexpr int kTwelveHourClock = 1;

// kTwelveHourClock when "TimeFormat" under HKEY_LOCAL_MACHINE\SOFTWARE\Corvane\TimeSet is 1
// or missing, kTwentyFourHourClock for any other value. The key is created when missing;
// when it cannot be opened, the key is written again with the value 0 and 24-hour results.
int LoadTimeFormat();

}  // namespace mailslice::datetime

#endif  // MAILSLICE_DATETIME_TIME_FORMAT_SETTING_H
