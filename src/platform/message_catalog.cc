#include "platform/message_catalog.h"

#include <charconv>
#include <vector>

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

// A catalog is built from its name, its language and the content of the message file found
// (none when the built-in catalogs serve alone): the same three give the same catalog.
struct CatalogSource {
  std::u16string name;
  int language = 0;
  std::optional<std::string> file;
};

// Dates are shown several times per message, each time asking for the same catalogs; the ones
// built last are kept and handed out again while their sources stay the same. The files are
// still read on every call, so a changed file is seen at once.
class CatalogCache {
 public:
  std::shared_ptr<const MessageCatalog> Find(std::u16string_view name, int language,
                                             const std::optional<std::string>& file) const {
    for (const Entry& entry : entries_) {
      const CatalogSource& source = entry.source;
      if (source.language == language && source.name == name && source.file == file) {
        return entry.catalog;
      }
    }
    return nullptr;
  }

  void Add(CatalogSource source, std::shared_ptr<const MessageCatalog> catalog) {
    if (entries_.size() == kMaxEntries) entries_.erase(entries_.begin());
    entries_.push_back({std::move(source), std::move(catalog)});
  }

 private:
  struct Entry {
    CatalogSource source;
    std::shared_ptr<const MessageCatalog> catalog;
  };
  static constexpr size_t kMaxEntries = 8;
  std::vector<Entry> entries_;
};

std::shared_ptr<const MessageCatalog> Build(const CatalogSource& source) {
  std::optional<MessageCatalog> catalog;
  if (source.file) catalog = MessageCatalog::Parse(*source.file);
  auto own = BuiltinCatalog(source.name, source.language);
  auto english = BuiltinCatalog(source.name, kEnglishLanguage);
  if (!catalog && own.empty() && english.empty()) return nullptr;
  if (!catalog) catalog.emplace();
  catalog->FillFrom(own);
  catalog->FillFrom(english);
  return std::make_shared<const MessageCatalog>(std::move(*catalog));
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
  std::optional<std::string> file;
  if (auto folder = MessagesFolder()) {
    std::string fileName = WideToMultiByte(kUtf8CodePage, name);
    file = ReadWholeFile(*folder + "/" + std::to_string(language) + "/" + fileName);
    if (!file) file = ReadWholeFile(*folder + "/" + fileName);
  }
  thread_local CatalogCache cache;
  if (auto catalog = cache.Find(name, language, file)) return catalog;
  CatalogSource source{std::u16string(name), language, std::move(file)};
  auto catalog = Build(source);
  // A missing catalog costs nothing to find again.
  if (catalog) cache.Add(std::move(source), catalog);
  return catalog;
}

}  // namespace mailslice::platform
