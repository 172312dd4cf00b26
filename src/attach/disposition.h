// The disposition of a part: "attachment", "inline", ... as its Content-Disposition says.
#ifndef MAILSLICE_ATTACH_DISPOSITION_H
#define MAILSLICE_ATTACH_DISPOSITION_H

#include <mailslice/cstring.h>

namespace mailslice::attach {

// The disposition type of the part's Content-Disposition field (up to its first ";" or the
// line end), trimmed; empty when the part has none.
CString ReadDisposition(const char* partText);

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_DISPOSITION_H
