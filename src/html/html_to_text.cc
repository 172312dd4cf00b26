// HTML bodies as plain text: the host's engine when there is one, else the library's own reader
// followed by the entity decoder.
#include "html/html_to_text.h"

#include <string>
#include <string_view>

#include "html/html_document.h"
#include "platform/code_page.h"
#include "platform/spare_buffers.h"

namespace mailslice::html {
namespace {

// Buffers up to this many units are handed over with the text they hold (the C library's heap
// serves them again at once); larger ones are kept by the thread for the next body.
constexpr size_t kLargestHandedOverUnits = size_t{64} << 10;

// The 8-bit copy of the body has room for two bytes per wide character, as on the device.
constexpr size_t kNarrowBytesPerCharacter = 2;

// The body in the device ANSI code page, as the C library's wcstombs gives it, written into
// `narrow`: the copy stops at the first character the code page cannot hold, and at the last
// whole character that fits in the room.
void NarrowForReading(std::u16string_view html, std::string& narrow) {
  const size_t room = html.size() * kNarrowBytesPerCharacter;
  narrow.clear();
  platform::WideToMultiByteUntilFailure(html, narrow);
  if (narrow.size() <= room) return;
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
}

// The text is collected into the body's own buffer once the body is narrowed, and handed back
// in a string of its own length.
CString TextFromOwnReader(std::u16string&& html, std::string&& narrow) {
  if (narrow.empty()) {
    narrow = platform::TakeSpareBytes(html.size() + 1);
    NarrowForReading(html, narrow);
  } else if (html.capacity() < narrow.size()) {
    html = platform::TakeSpareWide(narrow.size());  // a body given as its page alone
  }
  HtmlDocument::ReadDecodedBodyTextInto(narrow.c_str(), html);
  platform::KeepSpare(std::move(narrow));
  // A small buffer becomes the text itself; a large one is kept for the next body, and the text
  // gets a string of its own length.
  if (html.capacity() <= kLargestHandedOverUnits) return CString(std::move(html));
  CString text{std::u16string(html)};
  platform::KeepSpare(std::move(html));
  return text;
}

std::u16string SpareCopy(std::u16string_view html) {
  std::u16string copy = platform::TakeSpareWide(html.size());
  copy.assign(html);
  return copy;
}

}  // namespace

CString ConvertHtmlToText(const CString& html) {
  return ConvertHtmlToText(SpareCopy(html.Str()), std::string(), platform::HostHtmlEngine());
}

CString ConvertHtmlToText(const CString& html, platform::HtmlEngine& engine) {
  return ConvertHtmlToText(SpareCopy(html.Str()), std::string(), engine);
}

bool ReadsWideText() { return platform::HostHtmlEngine().MakesDocuments(); }

CString ConvertHtmlToText(std::u16string&& html, std::string&& page) {
  return ConvertHtmlToText(std::move(html), std::move(page), platform::HostHtmlEngine());
}

CString ConvertHtmlToText(std::u16string&& html, std::string&& page, platform::HtmlEngine& engine) {
  if (std::optional<std::u16string> bodyText = engine.BodyText(html)) {
    platform::KeepSpare(std::move(html));
    platform::KeepSpare(std::move(page));
    return CString(std::move(*bodyText));
  }
  return TextFromOwnReader(std::move(html), std::move(page));
}

}  // namespace mailslice::html
