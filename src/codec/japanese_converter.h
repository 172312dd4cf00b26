// The Japanese converter: ISO-2022-JP and EUC-JP to Shift_JIS, Shift_JIS back to ISO-2022-JP
// for outgoing text, and UTF-8 and UTF-7 to the device code page. It holds no state; the
// library keeps one for the exports, and header decoding may make its own.
#ifndef MAILSLICE_CODEC_JAPANESE_CONVERTER_H
#define MAILSLICE_CODEC_JAPANESE_CONVERTER_H

#include <string>
#include <string_view>

namespace mailslice::codec {

// The device language whose narrowing goes through the C library's wcstombs.
inline constexpr int kWcstombsLanguage = 82;

class JapaneseConverter {
 public:
  // euc2sjs: converts the NUL-terminated EUC-JP `text` to Shift_JIS in place; returns 0.
  int EucToShiftJis(char* text) const;
  // jis2sjs: writes the NUL-terminated Shift_JIS form of the ISO-2022-JP `source` into `dest`
  // (which the caller sizes: twice the source length plus one always suffices) and returns it.
  char* JisToShiftJis(char* dest, const char* source) const;
  // SJIStoJIS: writes the ISO-2022-JP form of the Shift_JIS `source` into `dest`, without a
  // NUL of its own: the caller passes a zero-filled buffer with room for the escapes too.
  void ShiftJisToJis(char* dest, const char* source) const;
  // utf82sjs: the UTF-8 `text` in the device code page, in a new malloc'd buffer that the
  // caller frees (null for a null text).
  char* Utf8ToDevice(const char* text) const;
  // The text Utf8ToDevice hands over for `utf8` (which holds no NUL), appended to `out`.
  void AppendUtf8AsDevice(std::string_view utf8, std::string& out) const;
  // utf72sjs: takes the malloc'd UTF-7 `heapText` and frees it; the converted text is not
  // handed back, so callers keep UTF-7 text as it was.
  void Utf7ToDevice(char* heapText) const;
};

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_JAPANESE_CONVERTER_H
