#include "api/message_buffer.h"

#include <mailslice/device.h>

#include <cstdlib>
#include <cstring>

#include "header/field_lookup.h"
#include "platform/file_system.h"
#include "platform/large_pages.h"

namespace mailslice::api {
namespace {

// GetFileSize's failure value; a file this large (or larger) cannot be loaded.
constexpr uint64_t kInvalidFileSize = 0xFFFFFFFF;

}  // namespace

std::optional<uint64_t> MessageSizeLimit(int deviceType) {
  if (deviceType >= 8 && deviceType <= 11) return kMaxMessageBytesTypes8To11;
  if (deviceType == 3) return kMaxMessageBytesType3;
  if (deviceType >= 4 && deviceType <= 7) return kMaxMessageBytesTypes4To7;
  return std::nullopt;
}

MessageBufferHolder::~MessageBufferHolder() { Free(); }

int MessageBufferHolder::Load(const CString& path) {
  platform::ErrorCode error = platform::kErrorSuccess;
  auto file = platform::Files().OpenForReading(path.ToUtf8(), &error);
  if (!file) return 0;
  uint64_t size = file->Size().value_or(kInvalidFileSize);
  // The device type is asked once: the control library gives the same answer every time.
  auto limit = MessageSizeLimit(CVelEdit().GetCurrentDeviceType());
  if (limit && size > *limit) return 0;
  if (size == 0 || size >= kInvalidFileSize) return 0;
  Free();  // from here on the previous message is given up
  text_ = static_cast<char*>(platform::AllocateLarge(static_cast<size_t>(size) + 1));
  if (text_ == nullptr) return 0;
  ++generation_;
  // A short read leaves zeros behind what arrived; the load still succeeds.
  size_t got = 0;
  file->Read(text_, static_cast<size_t>(size), &got);
  std::memset(text_ + got, 0, static_cast<size_t>(size) + 1 - got);
  memo_ = std::make_unique<mime::TextMemo>(text_, std::strlen(text_), mime::TextMemo::Standing{});
  return 1;
}

void MessageBufferHolder::Free() {
  memo_.reset();
  std::free(text_);
  text_ = nullptr;
  ++generation_;
}

CString MessageBufferHolder::Field(const char16_t* name) const {
  return header::LookupField(text_, name);
}

CString MessageBufferHolder::GetFrom() const { return Field(u"From"); }
CString MessageBufferHolder::GetTo() const { return Field(u"To"); }
CString MessageBufferHolder::GetCc() const { return Field(u"CC"); }
CString MessageBufferHolder::GetBcc() const { return Field(u"BCC"); }
CString MessageBufferHolder::GetDate() const { return Field(u"Date"); }
CString MessageBufferHolder::GetSubject() const { return Field(u"Subject"); }
CString MessageBufferHolder::GetDelivered1() const { return Field(u"Delivered-To"); }
CString MessageBufferHolder::GetDelivered2() const { return Field(u"X-Apparently-To"); }
CString MessageBufferHolder::GetDelivered3() const { return Field(u"Envelope-to"); }

CString MessageBufferHolder::GetReplyTo() const {
  for (const char16_t* name : {u"Reply-To", u"From", u"Sender"}) {
    if (CString value = Field(name); !value.IsEmpty()) return value;
  }
  return Field(u"Return-Path");
}

}  // namespace mailslice::api
