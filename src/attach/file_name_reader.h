// Reading the file name that the sender's mail program gave an attachment part.
#ifndef MAILSLICE_ATTACH_FILE_NAME_READER_H
#define MAILSLICE_ATTACH_FILE_NAME_READER_H

#include <mailslice/cstring.h>

namespace mailslice::attach {

// The decoded file name in a part's text (its header and body as the walker cut them); empty
// when the part names no file. The spellings are tried in the order "filename=", "Filename=",
// "name=", "filename*0*=", "filename*1=", "filename*=", the first found wins; "<meta name="
// names an HTML meta element, not a file, and is passed over.
CString ReadFileNameParameter(const char* partText);

// The name as the attachment list shows it: a doubled extension ("report.pdf.pdf") said once,
// made safe as a file name on Linux and on the device (no folder separators, no control
// characters, not "." or ".."), and "noname" with an extension that suits the content type
// when nothing is left.
CString ListedFileName(const CString& name, const CString& contentType);

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_FILE_NAME_READER_H
