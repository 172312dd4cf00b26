// Letter case of ASCII and Latin-1 letters, the folding that every case-ignoring comparison of
// the library uses.
#ifndef MAILSLICE_PLATFORM_LETTER_CASE_H
#define MAILSLICE_PLATFORM_LETTER_CASE_H

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

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_LETTER_CASE_H
