#include "attach/disposition.h"

#include <cstring>
#include <string_view>

#include "mime/text_memo.h"
#include "platform/code_page.h"
#include "platform/white_space.h"

namespace mailslice::attach {

CString ReadDisposition(const char* partText) {
  if (partText == nullptr) return CString();
  for (mime::PartWord spelling :
       {mime::PartWord::kDisposition, mime::PartWord::kDispositionLower}) {
    const char* at = mime::TextMemo::Find(partText, spelling);
    if (at == nullptr) continue;
    const char* value = at + mime::SpellingOf(spelling).size();
    size_t length = std::strcspn(value, ";\r\n");
    std::u16string disposition = platform::AnsiToWide(std::string_view(value, length));
    platform::TrimSpaces(disposition);
    return CString(std::move(disposition));
  }
  return CString();
}

}  // namespace mailslice::attach
