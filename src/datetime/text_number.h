// Whole numbers read out of date text the way the device's C library reads them.
#ifndef MAILSLICE_DATETIME_TEXT_NUMBER_H
#define MAILSLICE_DATETIME_TEXT_NUMBER_H

#include <string_view>

namespace mailslice::datetime {

// The integer at the start of `text`: leading white space and one sign are skipped and the
// digits read up to the first character that is not one; 0 when there are no digits. Values
// beyond the range of int are held at its limits.
int LeadingInteger(std::u16string_view text);

}  // namespace mailslice::datetime

#endif  // MAILSLICE_DATETIME_TEXT_NUMBER_H
