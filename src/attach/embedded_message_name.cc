#include "attach/embedded_message_name.h"

#include <mailslice/device.h>

#include <cstring>
#include <string>

#include "header/address_subject.h"
#include "header/field_lookup.h"

namespace mailslice::attach {
namespace {

constexpr int kJapaneseLanguage = 81;
// The characters a file name cannot hold on the device, and on Japanese devices their
// full-width forms, which can stand in for them and keep the subject readable.
constexpr char16_t kForbidden[] = u"|<>?:*\"\\/";
constexpr char16_t kFullWidth[] = u"｜＜＞？：＊＂＼／";
constexpr size_t kSeparatorSkip = 4;

std::u16string FileNameFromSubject(const std::u16string& subject, bool fullWidth) {
  std::u16string name;
  for (char16_t ch : subject) {
    const char16_t* forbidden = std::char_traits<char16_t>::find(kForbidden, 9, ch);
    if (forbidden == nullptr) {
      if (ch >= 0x20) name += ch;
    } else if (fullWidth) {
      name += kFullWidth[forbidden - kForbidden];
    }
  }
  return name;
}

}  // namespace

CString EmbeddedMessageName(const char* partText) {
  if (partText == nullptr) return CString(u"noname.eml");
  // The message starts behind the part header's empty line; when there is none, four bytes
  // behind the first line break all the same.
  const char* separator = std::strstr(partText, "\r\n\r\n");
  if (separator == nullptr) separator = std::strstr(partText, "\r\n");
  const char* message = partText + std::strlen(partText);
  if (separator != nullptr) message = separator + std::min(kSeparatorSkip, std::strlen(separator));
  CString subject = header::ParsingSubject(header::LookupField(message, u"Subject"));
  bool fullWidth = CVelEdit().GetCurrentLanguageCode() == kJapaneseLanguage;
  CString name(FileNameFromSubject(subject.Str(), fullWidth));
  name.Trim();
  if (name.IsEmpty()) name = u"noname";
  return name + u".eml";
}

}  // namespace mailslice::attach
