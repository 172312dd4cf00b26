// HTML bodies shown as plain text.
#ifndef MAILSLICE_HTML_HTML_TO_TEXT_H
#define MAILSLICE_HTML_HTML_TO_TEXT_H

#include <mailslice/cstring.h>

#include <string>

#include "platform/html_engine.h"

namespace mailslice::html {

// The readable text of an HTML body. The host's HTML engine is asked first and its text is
// taken as it comes; when it makes no document, the library's own reader collects the text
// runs of the body, one per line, and decodes their character references. Never fails; the
// result may be empty.
CString ConvertHtmlToText(const CString& html);
CString ConvertHtmlToText(const CString& html, platform::HtmlEngine& engine);
// The same for a body the caller is done with: its buffer is worked in and then kept for the
// next body (platform/spare_buffers.h). `page`, when not empty, is the body already narrowed to
// the device code page as the reader narrows it (see NarrowForReading), which is then not done
// again.
CString ConvertHtmlToText(std::u16string&& html, std::string&& page = std::string());
// Whether ConvertHtmlToText reads the body's wide text (for the host's engine) even when given
// its page; when not, a body given with its page may come without its wide text.
bool ReadsWideText();
CString ConvertHtmlToText(std::u16string&& html, std::string&& page, platform::HtmlEngine& engine);

}  // namespace mailslice::html

#endif  // MAILSLICE_HTML_HTML_TO_TEXT_H
