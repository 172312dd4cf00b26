// The attachments of the message most recently searched, kept for the next search. A mail
// application saves the attachments of a message one by one, handing over the whole message
// each time; cutting and naming every part again for each of them would make saving all the
// attachments of a message quadratic in its size.
#ifndef MAILSLICE_ATTACH_RECENT_ATTACHMENTS_H
#define MAILSLICE_ATTACH_RECENT_ATTACHMENTS_H

#include <mailslice/cstring.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "attach/attachment_finder.h"

namespace mailslice::attach {

class RecentAttachments {
 public:
  // The attachments of `text`, as MessageAttachments(text, fallbackBoundary) finds them. They
  // are made again unless the text, the fallback boundary and the device settings that name
  // attachments (language and code page) are those of the previous call; the result stays
  // valid until the next call.
  //
  // `loadedMessage` identifies the library's own loaded message when `text` is that buffer
  // (a number that changes with every load and free): the library's buffer is only read, so
  // while it holds the same message its listing is reused without reading it again. Any other
  // text is compared with a private copy of the previous one.
  const MessageAttachments& Of(const char* text, const CString& fallbackBoundary,
                               std::optional<uint64_t> loadedMessage = std::nullopt);

 private:
  struct Key {
    std::optional<uint64_t> loadedMessage;
    const char* address = nullptr;
    // A copy of a text the caller owns: the caller may load another message into the same
    // buffer. The attachments found point into it.
    std::string copy;
    CString fallbackBoundary;
    int language = 0;
    std::string codePage;
  };
  bool IsPrevious(const char* text, const CString& fallbackBoundary,
                  std::optional<uint64_t> loadedMessage) const;

  std::optional<Key> key_;
  std::unique_ptr<MessageAttachments> attachments_;
};

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_RECENT_ATTACHMENTS_H
