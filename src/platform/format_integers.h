// printf-style formatting of integers with a format that comes from outside the program (a
// message catalog): only integer conversions take arguments, so no format can read anything
// but the integers given.
#ifndef MAILSLICE_PLATFORM_FORMAT_INTEGERS_H
#define MAILSLICE_PLATFORM_FORMAT_INTEGERS_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace mailslice::platform {

// %d, %i, %u, %o, %x and %X (with flags, width and precision; "*" takes the next value) use the
// values in order, a missing value reading as 0; "%%" is a percent sign; any other conversion
// is kept as text.
std::u16string FormatIntegers(std::u16string_view format, std::initializer_list<int> values);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_FORMAT_INTEGERS_H
