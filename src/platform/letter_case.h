// Letter case of ASCII and Latin-1 letters, the folding that every case-ignoring comparison of
// the library uses.
#ifndef MAILSLICE_PLATFORM_LETTER_CASE_H
#define MAILSLICE_PLATFORM_LETTER_CASE_H

#include <cstddef>
#include <string_view>

namespace mailslice::platform {

// A-Z and the Latin-1 capitals U+00C0..U+00DE (but U+00D7, the multiplication sign).
constexpr char16_t ToLowerLetter(char16_t ch) {
  if (ch >= u'A' && ch <= u'Z') return static_cast<char16_t>(ch + 0x20);
  if (ch >= 0xC0 && ch <= 0xDE && ch != 0xD7) return static_cast<char16_t>(ch + 0x20);
  return ch;
}

// a-z and the Latin-1 small letters U+00E0..U+00FE (but U+00F7, the division sign); U+00DF
// and U+00FF have no Latin-1 capital and stay.
constexpr char16_t ToUpperLetter(char16_t ch) {
  if (ch >= u'a' && ch <= u'z') return static_cast<char16_t>(ch - 0x20);
  if (ch >= 0xE0 && ch <= 0xFE && ch != 0xF7) return static_cast<char16_t>(ch - 0x20);
  return ch;
}

// The sign of comparing `a` with `b` unit by unit, letters folded to lower case on both sides,
// a shorter text first where one starts the other: CString's CompareNoCase, without copies.
constexpr int CompareNoCase(std::u16string_view a, std::u16string_view b) {
  size_t common = a.size() < b.size() ? a.size() : b.size();
  for (size_t at = 0; at < common; ++at) {
    char16_t left = ToLowerLetter(a[at]), right = ToLowerLetter(b[at]);
    if (left != right) return left < right ? -1 : 1;
  }
  return (a.size() > b.size()) - (a.size() < b.size());
}

constexpr bool EqualsNoCase(std::u16string_view a, std::u16string_view b) {
  return a.size() == b.size() && CompareNoCase(a, b) == 0;
}

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_LETTER_CASE_H
