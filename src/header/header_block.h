// The header block of a message: everything before its first empty line.
#ifndef MAILSLICE_HEADER_HEADER_BLOCK_H
#define MAILSLICE_HEADER_HEADER_BLOCK_H

#include <optional>
#include <string>
#include <string_view>

namespace mailslice::header {

// The header block as wide text, widened through the device ANSI code page (header bytes are
// not read in any declared charset here). Empty when the text is null or has no empty line,
// that is neither "\r\n\r\n" nor "\n\n".
std::u16string HeaderBlock(const char* message);

// The bytes that HeaderBlock widens; nothing when it would be empty for want of an empty line.
std::optional<std::string_view> HeaderBytes(const char* message);

// Just past the first "\r\n\r\n" or, when there is none, past the first "\n\n"; null when the
// text is null or has neither.
const char* BodyStart(const char* message);

}  // namespace mailslice::header

#endif  // MAILSLICE_HEADER_HEADER_BLOCK_H
