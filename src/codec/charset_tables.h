// The single-byte Cyrillic charsets of Russian mail (KOI8-R and windows-1251) as tables from
// byte to UTF-16, and the narrowing of wide text back into the device's 8-bit text.
#ifndef MAILSLICE_CODEC_CHARSET_TABLES_H
#define MAILSLICE_CODEC_CHARSET_TABLES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace mailslice::codec {

// What a table lookup gives for a byte the charset leaves undefined or a value above 255.
inline constexpr char16_t kUnmappedByte = 0xFFFF;
// The device language whose narrowing keeps the low byte of each UTF-16 code unit.
inline constexpr int kLowByteLanguage = 33;

// KOI8-R: bytes 0x00 to 0x7F are ASCII, the upper half is box drawing and Cyrillic.
char16_t Koi8rToUtf16(unsigned value);
// windows-1251: bytes 0x00 to 0x7F are ASCII; 0x98, which the code page leaves undefined,
// gives kUnmappedByte.
char16_t Windows1251ToUtf16(unsigned value);

// The C library's wcstombs in the device code page into a buffer of `capacity` bytes: the
// conversion stops at NUL, at the first character the code page cannot hold, and before the
// first character that no longer fits whole.
std::string NarrowLikeWcstombs(std::u16string_view text, size_t capacity);
// The same, appended to `narrow`.
void NarrowLikeWcstombs(std::u16string_view text, size_t capacity, std::string& narrow);

// Wide text to the device's 8-bit text, at most twice as many bytes as code units. Under
// kLowByteLanguage each code unit keeps its low byte; elsewhere NarrowLikeWcstombs. The result
// ends where the device's NUL-terminated buffer would: at the first zero byte.
std::string NarrowForDevice(std::u16string_view text);

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_CHARSET_TABLES_H
