#include "header/header_block.h"

#include <cstring>

#include "platform/code_page.h"

namespace mailslice::header {
namespace {

struct EmptyLine {
  const char* at;        // the separator, or null
  size_t separatorSize;  // 4 for CR LF CR LF, 2 for LF LF
};

EmptyLine FindEmptyLine(const char* message) {
  if (message == nullptr) return {nullptr, 0};
  if (const char* at = std::strstr(message, "\r\n\r\n")) return {at, 4};
  if (const char* at = std::strstr(message, "\n\n")) return {at, 2};
  return {nullptr, 0};
}

}  // namespace

std::u16string HeaderBlock(const char* message) {
  auto bytes = HeaderBytes(message);
  return bytes ? platform::AnsiToWide(*bytes) : std::u16string();
}

std::optional<std::string_view> HeaderBytes(const char* message) {
  EmptyLine line = FindEmptyLine(message);
  if (line.at == nullptr) return std::nullopt;
  return std::string_view(message, static_cast<size_t>(line.at - message));
}

const char* BodyStart(const char* message) {
  EmptyLine line = FindEmptyLine(message);
  return line.at == nullptr ? nullptr : line.at + line.separatorSize;
}

}  // namespace mailslice::header
