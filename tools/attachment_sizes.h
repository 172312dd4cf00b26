// The attachments of the loaded message with their sizes once decoded, as show lists them.
#ifndef MAILSLICE_TOOLS_ATTACHMENT_SIZES_H
#define MAILSLICE_TOOLS_ATTACHMENT_SIZES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mailslice::tools {

struct SizedAttachment {
  std::string name;              // as the attachment list shows it
  std::optional<uint64_t> size;  // in bytes once decoded; nothing when it could not be decoded
};

// Each attachment's size is the size of the file that 'mailslice save' writes for it: the
// body is saved, through the library's own saving, into a private temporary folder and
// measured there, so the figure holds every quirk of decoding and is never computed twice.
std::vector<SizedAttachment> SizedAttachments();

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_ATTACHMENT_SIZES_H
