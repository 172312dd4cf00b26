// Fast paths of the code-page conversions for the common case: well-formed UTF-8 and the
// single-byte Windows code pages the devices use. Each converts the longest start of its input
// that it can convert exactly as iconv does and leaves the rest to iconv, so the result is the
// same to the last unit, replacement characters included.
#ifndef MAILSLICE_PLATFORM_CODE_PAGE_FAST_H
#define MAILSLICE_PLATFORM_CODE_PAGE_FAST_H

#include <cstddef>
#include <string>
#include <string_view>

namespace mailslice::platform {

// The exact (iconv) conversions of a whole text in the code page `iconvName`; the fast paths
// ask them about single characters.
using ExactToWide = std::u16string (*)(const std::string& iconvName, std::string_view bytes);
using ExactToNarrow = std::string (*)(const std::string& iconvName, std::u16string_view text);
struct ExactConversions {
  ExactToWide toWide;
  ExactToNarrow toNarrow;
  ExactToNarrow toNarrowUntilFailure;  // stops at the first character the page cannot hold
};

// Appends to `wide` the conversion of the longest start of `bytes` that the fast path
// converts exactly; returns the number of bytes taken (a character boundary).
size_t FastPrefixToWide(const std::string& iconvName, std::string_view bytes, std::u16string& wide,
                        const ExactConversions& exact);

class SingleBytePage;

// FastPrefixToWide for many texts in one code page, which is looked up once (for the thousands
// of text runs of an HTML page). Used on the thread that made it.
class FastWidener {
 public:
  FastWidener(const std::string& iconvName, const ExactConversions& exact);
  size_t Append(std::string_view bytes, std::u16string& wide) const;
  // Whether each byte widens to one unit of its own, ASCII to itself and no other byte to
  // ASCII (a single-byte page): a text then widens as its pieces do one by one.
  bool WidensEachByteAlone() const;

 private:
  bool utf8_;
  SingleBytePage* page_;  // null for a page without a fast path
};

// Appends to `narrow` the conversion of the longest start of `text` that the fast path
// converts exactly (a character the code page cannot hold becomes what iconv makes of it, or,
// with `untilFailure`, ends the prefix); returns the number of units taken. UTF-8 is written
// up to the first unpaired surrogate.
size_t FastPrefixToNarrow(const std::string& iconvName, std::u16string_view text,
                          std::string& narrow, const ExactConversions& exact,
                          bool untilFailure = false);

// Rewrites the start of `text` in place with what it reads as once narrowed to the page (as by
// FastPrefixToNarrow) and widened back; stops at the first unit it cannot convert exactly, or,
// setting `cut`, at the first that narrows to NUL. Returns the number of units rewritten.
size_t FastRoundTrip(const std::string& iconvName, std::u16string& text, bool untilFailure,
                     bool& cut, const ExactConversions& exact);

// UTF-8 decoded as FastPrefixToWide decodes it and passed through FastRoundTrip in one pass.
// Appends the result of the longest start it converts exactly (one without NUL) to `shown`
// and returns the bytes taken. Given `narrowed` (room for utf8.size() bytes, which may be
// utf8's own or lie before them in the same buffer: each byte is written behind the bytes it
// came from), writes there what that result narrows to, as FastPrefixToNarrow narrows it
// stopping at the first unit the page cannot hold, and sets *narrowedCount to the bytes
// written, or to npos when the whole result does not narrow so.
size_t FastUtf8ThroughPage(const std::string& iconvName, std::string_view utf8, bool untilFailure,
                           std::u16string& shown, const ExactConversions& exact,
                           char* narrowed = nullptr, size_t* narrowedCount = nullptr);

// FastUtf8ThroughPage's result kept only as the bytes it narrows to (as there), for a reader
// of the bytes alone: writes them at `page` (same room and placing as `narrowed` there), sets
// *written, and returns the bytes of utf8 taken. It stops before the first character that would
// end FastUtf8ThroughPage, whose shown unit does not narrow, or whose byte does not read back
// as that unit: the text of the bytes taken is thus exactly the bytes written read back
// through the page.
size_t FastUtf8ToPage(const std::string& iconvName, std::string_view utf8, bool untilFailure,
                      char* page, size_t* written, const ExactConversions& exact);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_CODE_PAGE_FAST_H
