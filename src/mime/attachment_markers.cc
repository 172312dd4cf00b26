#include "mime/attachment_markers.h"

#include <cstring>
#include <string_view>

#include "codec/substring_search.h"
#include "mime/text_memo.h"

namespace mailslice::mime {
namespace {

constexpr const char* kCountedMarkers[] = {"attachment", "attach;",
                                           "filename=", "filename*0*=", "name="};
constexpr const char* kDispositionFields[] = {
    "Content-Disposition:", "Content-disposition:", "Content-description:"};
// "name=" is part of "filename=", so the last spelling accepts a file named in any of them.
constexpr const char* kFileNameSpellings[] = {
    "filename=", "Filename=", "filename*0*=", "filename*0=", "filename*1=", "filename*=", "name="};

int CountOccurrences(std::string_view text, std::string_view marker) {
  int count = 0;
  for (size_t at = codec::FindSubstring(text, marker); at != std::string_view::npos;
       at = codec::FindSubstring(text, marker, at + 1)) {
    ++count;
  }
  return count;
}

bool ContainsAny(const char* text, const auto& spellings) {
  for (const char* spelling : spellings) {
    if (TextMemo::Find(text, spelling) != nullptr) return true;
  }
  return false;
}

}  // namespace

int CountAttachmentMarkers(const char* text) {
  if (text == nullptr) return 0;
  int count = 0;
  for (const char* marker : kCountedMarkers) {
    count = CountOccurrences(std::string_view(text, TextMemo::Length(text)), marker);
    if (count > 0) break;
  }
  return count;
}

int IsAttachmentHeader(const char* text) {
  if (text == nullptr || !ContainsAny(text, kDispositionFields)) return 0;
  return ContainsAny(text, kFileNameSpellings) ? 1 : 0;
}

}  // namespace mailslice::mime
