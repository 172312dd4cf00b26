// The Japanese converter's UTF-8 and UTF-7 forms, through the platform's code pages.
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "codec/japanese_converter.h"
#include "platform/code_page.h"
#include "platform/device_settings.h"

namespace mailslice::codec {
namespace {

constexpr std::string_view kUtf8ByteOrderMark = "\xEF\xBB\xBF";

// A zero-filled malloc'd block of at least `capacity` bytes holding `text` and a NUL.
char* HandOver(const std::string& text, size_t capacity) {
  if (capacity < text.size() + 1) capacity = text.size() + 1;
  auto* buffer = static_cast<char*>(std::calloc(capacity, 1));
  if (buffer != nullptr) std::memcpy(buffer, text.data(), text.size());
  return buffer;
}

}  // namespace

char* JapaneseConverter::Utf8ToDevice(const char* text) const {
  if (text == nullptr) return nullptr;
  std::string_view utf8(text);
  size_t length = utf8.size();
  // Text saved by Windows editors starts with a byte order mark; it is left out.
  if (utf8.starts_with(kUtf8ByteOrderMark)) utf8.remove_prefix(kUtf8ByteOrderMark.size());
  std::u16string wide = platform::MultiByteToWide(platform::kUtf8CodePage, utf8);
  if (platform::LanguageCode() != kWcstombsLanguage) {
    return HandOver(platform::WideToMultiByte(platform::kAnsiCodePage, wide), (length + 1) * 2);
  }
  // There the narrowing stops at the first character that the code page cannot hold.
  return HandOver(platform::WideToMultiByteUntilFailure(wide), wide.size() * 2 + 1);
}

void JapaneseConverter::AppendUtf8AsDevice(std::string_view utf8, std::string& out) const {
  if (utf8.starts_with(kUtf8ByteOrderMark)) utf8.remove_prefix(kUtf8ByteOrderMark.size());
  std::u16string wide = platform::MultiByteToWide(platform::kUtf8CodePage, utf8);
  size_t start = out.size();
  if (platform::LanguageCode() != kWcstombsLanguage) {
    platform::WideToMultiByte(platform::kAnsiCodePage, wide, out);
  } else {
    platform::WideToMultiByteUntilFailure(wide, out);
  }
  // The handed-over buffer is read up to its first NUL.
  size_t nul = out.find('\0', start);
  if (nul != std::string::npos) out.resize(nul);
}

void JapaneseConverter::Utf7ToDevice(char* heapText) const {
  if (heapText == nullptr) return;
  std::u16string wide = platform::MultiByteToWide(platform::kUtf7CodePage, heapText);
  std::free(heapText);
  // The narrowed text is made and dropped: callers have never received it.
  platform::WideToMultiByte(platform::kAnsiCodePage, wide);
}

}  // namespace mailslice::codec
