// The white space that CString's Trim removes, for code that trims wide text in place.
#ifndef MAILSLICE_PLATFORM_WHITE_SPACE_H
#define MAILSLICE_PLATFORM_WHITE_SPACE_H

#include <algorithm>
#include <string>

namespace mailslice::platform {

// Space, tab, CR, LF, vertical tab and form feed.
constexpr bool IsTrimmedSpace(char16_t ch) {
  return ch == u' ' || ch == u'\t' || ch == u'\r' || ch == u'\n' || ch == u'\v' || ch == u'\f';
}

// What CString's Trim leaves of `text`, done in place.
inline void TrimSpaces(std::u16string& text) {
  text.erase(std::find_if_not(text.rbegin(), text.rend(), IsTrimmedSpace).base(), text.end());
  text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), IsTrimmedSpace));
}

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_WHITE_SPACE_H
