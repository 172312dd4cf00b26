// A fast search for one UTF-16 unit in long wide texts (bodies of megabytes), with the result
// of std::u16string_view::find.
#ifndef MAILSLICE_PLATFORM_WIDE_SEARCH_H
#define MAILSLICE_PLATFORM_WIDE_SEARCH_H

#include <cstddef>
#include <string_view>

namespace mailslice::platform {

// The index of the first `unit` at or after `from` in `text`, or npos.
size_t FindUnit(std::u16string_view text, char16_t unit, size_t from = 0);

// The index of the first unit at or after `from` in `text` that is one of `units` (one to
// three of them), or npos.
size_t FindAnyUnit(std::u16string_view text, std::u16string_view units, size_t from = 0);

// The index of the first `needle` (not empty) at or after `from` in `text`, or npos.
size_t FindUnits(std::u16string_view text, std::u16string_view needle, size_t from = 0);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_WIDE_SEARCH_H
