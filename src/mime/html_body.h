// HTML bodies on their way to the reader: the conversion to text, and the optional saving of
// the HTML source for a viewer that can show it as a page.
#ifndef MAILSLICE_MIME_HTML_BODY_H
#define MAILSLICE_MIME_HTML_BODY_H

#include <mailslice/cstring.h>

#include <string>

namespace mailslice::mime {

// The HTML arguments that the body exports pass through to the HTML conversion:
// - `fileName`: the name of the file in the temporary folder that receives the HTML source
//   (see HtmlSourcePath); empty means "body.html".
// - `save`: non-zero asks for the HTML source of each HTML body to be saved there (as UTF-8,
//   replacing the file) before it is reduced to text.
// - `reserved2`, `reserved3`: reserved, pass 0.
struct HtmlArguments {
  CString fileName;
  int save = 0;
  int reserved2 = 0;
  int reserved3 = 0;
};

// The path where the HTML source is saved for `fileName`: the private temporary folder, the
// name with folder separators made "_" ("body.html" when empty) and ".html" added when it has
// no extension. Empty when the temporary folder cannot be had.
CString HtmlSourcePath(const CString& fileName);

// The readable text of an HTML body, after saving its source when asked; `page` is the body
// narrowed for the HTML reader when the decoding gave it (see DecodeBodyWide), else empty.
CString HtmlBodyToText(std::u16string html, std::string page, const HtmlArguments& arguments);

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_HTML_BODY_H
