// The name under which an attached message (message/rfc822) is listed: its subject, made a
// file name, with ".eml".
#ifndef MAILSLICE_ATTACH_EMBEDDED_MESSAGE_NAME_H
#define MAILSLICE_ATTACH_EMBEDDED_MESSAGE_NAME_H

#include <mailslice/cstring.h>

namespace mailslice::attach {

// The subject of the message that follows the part's header, decoded and without the
// characters a file name cannot hold, plus ".eml"; "noname.eml" when it has no subject.
CString EmbeddedMessageName(const char* partText);

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_EMBEDDED_MESSAGE_NAME_H
