// Body extraction: which parts of a message make up its readable body, and their decoded text
// joined into one wide string for the reader.
#ifndef MAILSLICE_MIME_BODY_EXTRACTION_H
#define MAILSLICE_MIME_BODY_EXTRACTION_H

#include <mailslice/cstring.h>

#include "mime/html_body.h"
#include "mime/piece_text.h"

namespace mailslice::mime {

// The readable body of a whole message text. `alternative` (may be null) receives the
// alternative flag as the walk leaves it. A caller's text is never written; the library's own
// loaded message may have its parts ended in place while they are read.
CString GetReadingBody(WalkedText message, int* alternative, const HtmlArguments& html);

// The readable body of a text without a boundary.
CString GetBodyFromNoBoundary(const char* text, const HtmlArguments& html);

// The readable body of a multipart text cut at `boundary`; `alternative` (may be null) is the
// flag carried through the walk. The caller's text is never written: a missing closing
// delimiter is repaired on a private copy.
CString GetBodyFromIsBoundary(WalkedText message, const CString& boundary, int* alternative,
                              const HtmlArguments& html);

// The text behind the first empty line, in a new malloc'd buffer; null without an empty line.
char* GetSinglePartBody(const char* text);

// The body of one part with its trailing line ends removed, in a new malloc'd buffer of its
// length plus two zero bytes; null when the part has no body of at least two characters.
char* GetMultiPartFirstBody(const char* partText);

// The section between "--BODY--:" and "--ATTACHMENT--:" of a text the application composed.
CString GetRemainBody(const CString& text);

// 1 when the header of the part names it an attachment, else 0.
int IsAttachmentPart(const char* partText);

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_BODY_EXTRACTION_H
