#include "attach/recent_attachments.h"

#include <cstring>

#include "platform/device_settings.h"

namespace mailslice::attach {

bool RecentAttachments::IsPrevious(const char* text, const CString& fallbackBoundary,
                                   std::optional<uint64_t> loadedMessage) const {
  // A message that names its own boundary is cut at it whatever the fallback boundary is.
  bool sameBoundary = key_ && (key_->fallbackBoundary == fallbackBoundary ||
                               (attachments_ && attachments_->declaresBoundary()));
  if (!key_ || text == nullptr || !sameBoundary || key_->language != platform::LanguageCode() ||
      key_->codePage != platform::AnsiCodePageName()) {
    return false;
  }
  if (loadedMessage || key_->loadedMessage) {
    return key_->loadedMessage == loadedMessage && key_->address == text;
  }
  // One pass, never past the text's end.
  return std::strncmp(text, key_->copy.c_str(), key_->copy.size()) == 0 &&
         text[key_->copy.size()] == '\0';
}

const MessageAttachments& RecentAttachments::Of(const char* text, const CString& fallbackBoundary,
                                                std::optional<uint64_t> loadedMessage) {
  if (!IsPrevious(text, fallbackBoundary, loadedMessage)) {
    // The old listing goes first, so that two listings never take memory at once.
    attachments_.reset();
    key_.reset();
    if (text == nullptr) {
      attachments_ = std::make_unique<MessageAttachments>(mime::WalkedText(), fallbackBoundary);
      return *attachments_;
    }
    key_.emplace(Key{loadedMessage, text, std::string(), fallbackBoundary, platform::LanguageCode(),
                     platform::AnsiCodePageName()});
    if (!loadedMessage) {
      key_->copy = text;
      text = key_->copy.c_str();
    }
    // Either text is the library's own: the loaded message, or the copy.
    attachments_ =
        std::make_unique<MessageAttachments>(mime::WalkedText(text, true), fallbackBoundary);
  }
  return *attachments_;
}

}  // namespace mailslice::attach
