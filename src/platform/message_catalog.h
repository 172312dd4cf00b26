// Message catalogs: the device's localised words, looked up by message number.
#ifndef MAILSLICE_PLATFORM_MESSAGE_CATALOG_H
#define MAILSLICE_PLATFORM_MESSAGE_CATALOG_H

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace mailslice::platform {

inline constexpr int kEnglishLanguage = 1;

struct BuiltinMessage {
  int number;
  const char16_t* text;
};

class MessageCatalog {
 public:
  // Reads a message file: UTF-8 text, one message a line, the number, one tab, the text.
  // Blank lines, lines that begin with '#' and lines without a number and a tab are skipped;
  // in the text \t, \r, \n and \\ stand for tab, CR, LF and backslash.
  static MessageCatalog Parse(std::string_view content);

  std::optional<std::u16string> Find(int number) const;
  // Adds the messages of `messages` that this catalog lacks.
  void FillFrom(std::span<const BuiltinMessage> messages);
  bool IsEmpty() const { return messages_.empty(); }

 private:
  std::map<int, std::u16string> messages_;
};

// The catalog `name` (for example u"Email") of a language, as the device finds it: the first of
// $MAILSLICE_MESSAGES/<language>/<name>, $MAILSLICE_MESSAGES/<name> and the built-in catalog of
// the language, with what it lacks taken from the built-in catalog of the language and then from
// the built-in English one. Nothing when neither a file nor a built-in catalog exists.
std::shared_ptr<const MessageCatalog> LoadCatalog(std::u16string_view name, int language);

// The built-in catalog `name` of a language; empty when the library has none.
std::span<const BuiltinMessage> BuiltinCatalog(std::u16string_view name, int language);

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_MESSAGE_CATALOG_H
