// HTML bodies as plain text: the host's engine when there is one, else the library's own reader
// followed by the entity decoder.
#include "html/html_to_text.h"

#include <string>
#include <string_view>

#include "html/entity_decoder.h"
#include "html/html_document.h"
#include "platform/code_page.h"

namespace mailslice::html {
namespace {

// The 8-bit copy of the body has room for two bytes per wide character, as on the device.
constexpr size_t kNarrowBytesPerCharacter = 2;

// The body in the device ANSI code page, as the C library's wcstombs gives it: the copy stops
// at the first character the code page cannot hold, and at the last whole character that
// fits in the room.
std::string NarrowForReading(std::u16string_view html) {
  const size_t room = html.size() * kNarrowBytesPerCharacter;
  std::string narrow = platform::WideToMultiByteUntilFailure(html);
  if (narrow.size() <= room) return narrow;
  // Only code pages with characters of three bytes or more get here: find the longest start of
  // the body whose conversion fits (conversions of longer starts are never shorter).
  size_t fits = 0;
  size_t tooLong = html.size();
  while (tooLong - fits > 1) {
    size_t middle = fits + (tooLong - fits) / 2;
    std::string part = platform::WideToMultiByteUntilFailure(html.substr(0, middle));
    if (part.size() <= room) {
      fits = middle;
      narrow = std::move(part);
    } else {
      tooLong = middle;
    }
  }
  if (fits == 0) narrow.clear();
  return narrow;
}

CString TextFromOwnReader(const CString& html) {
  std::string narrow = NarrowForReading(html.Str());
  return HtmlEntityDecoder().Decode(HtmlDocument::ReadBodyText(narrow.c_str()));
}

}  // namespace

CString ConvertHtmlToText(const CString& html) {
  return ConvertHtmlToText(html, platform::HostHtmlEngine());
}

CString ConvertHtmlToText(const CString& html, platform::HtmlEngine& engine) {
  if (std::optional<std::u16string> bodyText = engine.BodyText(html.Str())) {
    return CString(std::move(*bodyText));
  }
  return TextFromOwnReader(html);
}

}  // namespace mailslice::html
