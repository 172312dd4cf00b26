// Buffers of megabytes that one body after another passes through on its way to text (its
// decoded bytes, its wide text, the page the HTML reader reads) are kept by each thread for the
// next body: a fresh buffer costs a page fault for every 4 KB first written, which takes longer
// than the work done in it, and the C library hands large freed buffers back to the host.
#ifndef MAILSLICE_PLATFORM_SPARE_BUFFERS_H
#define MAILSLICE_PLATFORM_SPARE_BUFFERS_H

#include <cstddef>
#include <string>

namespace mailslice::platform {

// An empty string: a kept one that has room for `size` characters and no more than twice that
// (so a short text never holds on to a large buffer), else a new one with room for `size`.
std::string TakeSpareBytes(size_t size);
std::u16string TakeSpareWide(size_t size);

// A string of `size` characters that the caller writes before it reads them, and keeps again
// after use: a kept one (as TakeSpareBytes chooses it, or any of up to 64 KB) holds what it
// held, as clearing a large buffer costs as much as writing it; only characters beyond what it
// held are cleared.
std::string TakeSpareRoom(size_t size);

// Keeps `buffer` for a later Take, in place of the kept one of its kind with the least room,
// when it has more room than that one, up to a limit: the buffers of a rare body of many
// megabytes go back to the host. Two of each kind are kept.
void KeepSpare(std::string buffer);
void KeepSpare(std::u16string buffer);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_SPARE_BUFFERS_H
