#include "attach/recent_attachments.h"

#include <cstring>

#include "platform/device_settings.h"

namespace mailslice::attach {

RecentAttachments::Key RecentAttachments::KeyOf(const char* text, const CString& fallbackBoundary) {
  return Key{text == nullptr ? std::string() : std::string(text), fallbackBoundary,
             platform::LanguageCode(), platform::AnsiCodePageName()};
}

const MessageAttachments& RecentAttachments::Of(const char* text, const CString& fallbackBoundary) {
  bool same = key_ && text != nullptr && key_->fallbackBoundary == fallbackBoundary &&
              key_->language == platform::LanguageCode() &&
              key_->codePage == platform::AnsiCodePageName() &&
              std::strncmp(text, key_->text.c_str(), key_->text.size()) == 0 &&
              text[key_->text.size()] == '\0';  // one pass, never past the text's end
  if (!same) {
    // The old listing goes first, so that two listings never take memory at once.
    key_.reset();
    attachments_.reset();
    attachments_ = std::make_unique<MessageAttachments>(text, fallbackBoundary);
    if (text != nullptr) key_ = KeyOf(text, fallbackBoundary);
  }
  return *attachments_;
}

}  // namespace mailslice::attach
