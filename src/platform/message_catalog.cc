#include "platform/message_catalog.h"

#include <charconv>

#include "platform/code_page.h"
#include "platform/device_settings.h"
#include "platform/file_system.h"

namespace mailslice::platform {
namespace {

std::string Unescape(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      result += text[i];
      continue;
    }
    switch (text[i + 1]) {
      case 't':
        result += '\t';
        break;
      case 'r':
        result += '\r';
        break;
      case 'n':
        result += '\n';
        break;
      case '\\':
        result += '\\';
        break;
      default:
        result += text[i];
        continue;  // not an escape: the backslash stays
    }
    ++i;
  }
  return result;
}

std::optional<MessageCatalog> ReadCatalogFile(const std::string& path) {
  auto content = ReadWholeFile(path);
  if (!content) return std::nullopt;
  return MessageCatalog::Parse(*content);
}

}  // namespace

MessageCatalog MessageCatalog::Parse(std::string_view content) {
  MessageCatalog catalog;
  while (!content.empty()) {
    size_t end = content.find('\n');
    std::string_view line = content.substr(0, end);
    content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.empty() || line.front() == '#') continue;
    int number = 0;
    auto [afterNumber, error] = std::from_chars(line.data(), line.data() + line.size(), number);
    if (error != std::errc() || afterNumber == line.data() + line.size() || *afterNumber != '\t') {
      continue;
    }
    std::string_view text = line.substr(static_cast<size_t>(afterNumber - line.data()) + 1);
    catalog.messages_[number] = MultiByteToWide(kUtf8CodePage, Unescape(text));
  }
  return catalog;
}

std::optional<std::u16string> MessageCatalog::Find(int number) const {
  auto found = messages_.find(number);
  if (found == messages_.end()) return std::nullopt;
  return found->second;
}

void MessageCatalog::FillFrom(std::span<const BuiltinMessage> messages) {
  for (const BuiltinMessage& message : messages) messages_.emplace(message.number, message.text);
}

std::shared_ptr<const MessageCatalog> LoadCatalog(std::u16string_view name, int language) {
  std::optional<MessageCatalog> catalog;
  if (auto folder = MessagesFolder()) {
    std::string fileName = WideToMultiByte(kUtf8CodePage, name);
    catalog = ReadCatalogFile(*folder + "/" + std::to_string(language) + "/" + fileName);
    if (!catalog) catalog = ReadCatalogFile(*folder + "/" + fileName);
  }
  auto own = BuiltinCatalog(name, language);
  auto english = BuiltinCatalog(name, kEnglishLanguage);
  if (!catalog && own.empty() && english.empty()) return nullptr;
  if (!catalog) catalog.emplace();
  catalog->FillFrom(own);
  catalog->FillFrom(english);
  return std::make_shared<const MessageCatalog>(std::move(*catalog));
}

}  // namespace mailslice::platform
