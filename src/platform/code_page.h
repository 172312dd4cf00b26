// Code-page conversions between 8-bit text and UTF-16, with the semantics the mail logic relies
// on. Code page 0 is the device ANSI code page (an iconv name, see device_settings.h); 65000 is
// UTF-7 and 65001 is UTF-8; any other number is the Windows code page of that number.
#ifndef MAILSLICE_PLATFORM_CODE_PAGE_H
#define MAILSLICE_PLATFORM_CODE_PAGE_H

#include <optional>
#include <string>
#include <string_view>

#include "platform/code_page_fast.h"

namespace mailslice::platform {

inline constexpr unsigned kAnsiCodePage = 0;
inline constexpr unsigned kUtf7CodePage = 65000;
inline constexpr unsigned kUtf8CodePage = 65001;

// 8-bit to UTF-16, like MultiByteToWideChar without MB_ERR_INVALID_CHARS: a byte that cannot
// start a character of the code page becomes U+FFFD and the conversion goes on with the next
// byte; an incomplete character at the end becomes one U+FFFD.
std::u16string MultiByteToWide(unsigned codePage, std::string_view bytes);

// UTF-16 to 8-bit, like WideCharToMultiByte with no default character given: a character that
// the code page cannot hold (and an unpaired surrogate) becomes '?'.
std::string WideToMultiByte(unsigned codePage, std::u16string_view text);
// The same, appended to `narrow` (whose room is used).
void WideToMultiByte(unsigned codePage, std::u16string_view text, std::string& narrow);

// UTF-16 to the device ANSI code page, like the C library's wcstombs: the conversion stops at
// the first NUL or at the first character that the code page cannot hold, and what was
// converted before it is the result (so such a character leaves the text short).
std::string WideToMultiByteUntilFailure(std::u16string_view text);
// The same, appended to `narrow` (whose room is used).
void WideToMultiByteUntilFailure(std::u16string_view text, std::string& narrow);

// Text in a charset that a message names ("utf-8", "ISO-2022-JP", "ks_c_5601-1987", ...), read
// as MultiByteToWide reads a code page; nothing when the charset is unknown. Names are taken in
// any letter case, and the names mail programs use for the Windows code pages read as those
// (Shift_JIS as CP932, EUC-KR and ks_c_5601-1987 as CP949, ISO-8859-1 and US-ASCII as CP1252).
std::optional<std::u16string> CharsetToWide(std::string_view charset, std::string_view bytes);

// MultiByteToWide, WideToMultiByte and WideToMultiByteUntilFailure done by iconv alone, without the
// fast paths for UTF-8 and single-byte code pages: the reference those are checked against.
std::u16string MultiByteToWideThroughIconv(unsigned codePage, std::string_view bytes);
std::string WideToMultiByteThroughIconv(unsigned codePage, std::u16string_view text);
std::string WideToMultiByteUntilFailureThroughIconv(std::u16string_view text);

// `text` narrowed to the device ANSI code page (as WideToMultiByte narrows it, or with
// `untilFailure` as WideToMultiByteUntilFailure does) and widened back up to the first NUL:
// what a device that keeps text in its code page shows of it.
std::u16string WideThroughAnsi(std::u16string text, bool untilFailure);

// UTF-8 text read as MultiByteToWide reads it, then passed through WideThroughAnsi.
std::u16string Utf8ThroughAnsi(std::string_view utf8, bool untilFailure);
// The same, appended to `shown` (whose room is used).
void Utf8ThroughAnsi(std::string_view utf8, bool untilFailure, std::u16string& shown);
// The same, also writing at `narrowed` what the appended text narrows to by
// WideToMultiByteUntilFailure, when that comes out of the same pass, and returning the bytes
// written; else npos (and the caller narrows the text itself, if it needs it). `narrowed` has
// room for utf8.size() bytes; it may be utf8's own bytes or lie before them in the same buffer,
// as each byte is written behind the bytes it came from.
size_t Utf8ThroughAnsi(std::string_view utf8, bool untilFailure, std::u16string& shown,
                       char* narrowed);

// What the text Utf8ThroughAnsi makes of a start of `utf8` narrows to by
// WideToMultiByteUntilFailure, without the text itself: written at `page` (room and placing as
// for `narrowed` above), with *written set; returns the bytes of utf8 taken. AnsiToWide of the
// bytes written gives that text back exactly, and Utf8ThroughAnsi of the rest of utf8 goes on
// from it.
size_t Utf8ThroughAnsiPage(std::string_view utf8, bool untilFailure, char* page, size_t* written);

// Shorthands for the device ANSI code page.
std::u16string AnsiToWide(std::string_view bytes);

// Reads many short texts as AnsiToWide does, looking the device code page up once (for a text
// made of thousands of pieces, such as the runs of an HTML page), on the thread that made it.
class AnsiReader {
 public:
  AnsiReader();
  std::u16string Widen(std::string_view bytes) const;
  // Appends Widen(bytes) to `wide`.
  void AppendWidened(std::string_view bytes, std::u16string& wide) const;
  // The iconv name of the code page it reads.
  const std::string& name() const { return name_; }
  // See FastWidener::WidensEachByteAlone.
  bool WidensEachByteAlone() const { return fast_.WidensEachByteAlone(); }

 private:
  std::string name_;
  FastWidener fast_;
};
// The reader of the device code page as the settings name it now, kept by the thread while the
// page stays the same; valid until the next call on the thread.
const AnsiReader& DeviceAnsiReader();
std::string WideToAnsi(std::u16string_view text);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_CODE_PAGE_H
