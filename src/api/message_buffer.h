// The message buffer holder: the one loaded message, as a NUL-terminated 8-bit copy of its
// file, and the header exports that read it.
#ifndef MAILSLICE_API_MESSAGE_BUFFER_H
#define MAILSLICE_API_MESSAGE_BUFFER_H

#include <mailslice/cstring.h>

#include <cstdint>
#include <memory>
#include <optional>

#include "mime/text_memo.h"

namespace mailslice::api {

inline constexpr uint64_t kMaxMessageBytesType3 = 4'500'000;
inline constexpr uint64_t kMaxMessageBytesTypes4To7 = 6'500'000;
inline constexpr uint64_t kMaxMessageBytesTypes8To11 = 9'900'000;

// The largest message file a device type may load (inclusive); nothing for no limit.
std::optional<uint64_t> MessageSizeLimit(int deviceType);

class MessageBufferHolder {
 public:
  MessageBufferHolder() = default;
  ~MessageBufferHolder();
  MessageBufferHolder(const MessageBufferHolder&) = delete;
  MessageBufferHolder& operator=(const MessageBufferHolder&) = delete;

  // 1 when the file is loaded, 0 otherwise. Every failure before the read starts (missing,
  // empty or too large a file) keeps the previous message.
  int Load(const CString& path);
  void Free();

  CString GetFrom() const;
  CString GetTo() const;
  CString GetCc() const;
  CString GetBcc() const;
  CString GetDate() const;
  CString GetSubject() const;
  CString GetReplyTo() const;
  CString GetDelivered1() const;
  CString GetDelivered2() const;
  CString GetDelivered3() const;
  // The buffer itself, owned by the holder; null when no message is loaded.
  char* GetMessageText() const { return text_; }
  // Whether `text` is the loaded message itself, which the library may end in place for a
  // while (a caller's text is never written).
  bool Holds(const char* text) const { return text != nullptr && text == text_; }
  // Changes with every load and free, so that what was learnt of one message is never taken
  // for the next one loaded at the same address.
  uint64_t generation() const { return generation_; }

 private:
  CString Field(const char16_t* name) const;

  char* text_ = nullptr;  // malloc'd, file size + 1 bytes, always NUL-terminated
  // What the part readers learn of the message, kept from its load to the next load or free:
  // the message is the library's and does not change meanwhile, so a body read and an
  // attachment listing of one message search it once between them.
  std::unique_ptr<mime::TextMemo> memo_;
  uint64_t generation_ = 0;
};

}  // namespace mailslice::api

#endif  // MAILSLICE_API_MESSAGE_BUFFER_H
