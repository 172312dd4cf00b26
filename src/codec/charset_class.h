// Sorting the charset name of an encoded word (or a raw ISO-2022-JP escape) into the classes
// that pick its converter.
#ifndef MAILSLICE_CODEC_CHARSET_CLASS_H
#define MAILSLICE_CODEC_CHARSET_CLASS_H

#include <cstddef>

namespace mailslice::codec {

inline constexpr int kCharsetOther = 0;        // bytes kept as they are
inline constexpr int kCharsetJapanese = 1;     // ISO-2022-JP and Shift_JIS
inline constexpr int kCharsetEucJp = 2;        // EUC-JP
inline constexpr int kCharsetEucKr = 3;        // EUC-KR, bytes kept as they are
inline constexpr int kCharsetUtf8 = 4;         // UTF-8
inline constexpr int kCharsetUtf7 = 5;         // UTF-7, bytes kept as they are
inline constexpr int kCharsetKsc5601 = 6;      // ks_c_5601-1987, through the JIS converter
inline constexpr int kCharsetKoi8r = 7;        // KOI8-R
inline constexpr int kCharsetWindows1251 = 8;  // windows-1251

// The class of the charset name that starts at `at` (NUL-terminated 8-bit text, just after
// "=?" or at an escape). Each name is a prefix test of its own length with the spellings mail
// programs use, so "utf-8x" is UTF-8 while "Utf-8" is kCharsetOther.
int ClassifyCharset(const char* at);

// The length of the kCharsetJapanese charset name at `at` ("shift_jis" 9, "iso-2022-jp" 11
// in any of their accepted spellings); 0 for an ISO-2022-JP escape or any other text.
size_t JapaneseCharsetNameLength(const char* at);

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_CHARSET_CLASS_H
