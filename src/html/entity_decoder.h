// The cleaner of text collected from an HTML body: line breaks, character references, and
// whatever still looks like a tag.
#ifndef MAILSLICE_HTML_ENTITY_DECODER_H
#define MAILSLICE_HTML_ENTITY_DECODER_H

#include <mailslice/cstring.h>

#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace mailslice::html {

class HtmlEntityDecoder {
 public:
  // In order: "<br />" becomes CR LF; the references of the tables are decoded, the numeric
  // groups first, then the named ones; every span from a "<" to the next ">" is removed (also
  // one made of decoded "&lt;" and "&gt;"); white space is trimmed at both ends.
  CString Decode(const CString& text) const;
  // The same, done over `text` itself.
  void DecodeInPlace(std::u16string& text) const;
  // The same for the wide text that `bytes` widen to through `reader`, written into `text`
  // (emptied first). Fastest for a reader that widens each byte alone.
  void DecodeWidened(std::string_view bytes, const platform::AnsiReader& reader,
                     std::u16string& text) const;
};

}  // namespace mailslice::html

#endif  // MAILSLICE_HTML_ENTITY_DECODER_H
