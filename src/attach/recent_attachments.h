// The attachments of the message most recently searched, kept for the next search. A mail
// application saves the attachments of a message one by one, handing over the whole message
// each time; cutting and naming every part again for each of them would make saving all the
// attachments of a message quadratic in its size.
#ifndef MAILSLICE_ATTACH_RECENT_ATTACHMENTS_H
#define MAILSLICE_ATTACH_RECENT_ATTACHMENTS_H

#include <mailslice/cstring.h>

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
  const MessageAttachments& Of(const char* text, const CString& fallbackBoundary);

 private:
  struct Key {
    std::string text;  // a copy: the caller may load another message into the same buffer
    CString fallbackBoundary;
    int language = 0;
    std::string codePage;
  };
  static Key KeyOf(const char* text, const CString& fallbackBoundary);

  std::optional<Key> key_;
  std::unique_ptr<MessageAttachments> attachments_;
};

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_RECENT_ATTACHMENTS_H
