#include "mime/attachment_markers.h"

#include "mime/text_memo.h"

namespace mailslice::mime {
namespace {

// In order of preference: only the first marker that occurs is counted.
constexpr PartWord kCountedMarkers[] = {PartWord::kAttachment, PartWord::kAttachSemicolon,
                                        PartWord::kFileName, PartWord::kFileNameFirstEncoded,
                                        PartWord::kName};
constexpr PartWord kDispositionFields[] = {PartWord::kDisposition, PartWord::kDispositionLower,
                                           PartWord::kDescription};
// "name=" is part of "filename=", so the last spelling accepts a file named in any of them.
constexpr PartWord kFileNameSpellings[] = {
    PartWord::kFileName,      PartWord::kFileNameCapital, PartWord::kFileNameFirstEncoded,
    PartWord::kFileNameFirst, PartWord::kFileNameSecond,  PartWord::kFileNameEncoded,
    PartWord::kName};

// Whether any of `spellings` stands in the text at `text` before `end` (null: its NUL).
bool ContainsAny(const char* text, const char* end, const auto& spellings) {
  for (PartWord spelling : spellings) {
    WordPlaces places = TextMemo::Places(text, spelling);
    if ((end != nullptr ? places.Before(end) : places).First() != nullptr) return true;
  }
  return false;
}

}  // namespace

int CountAttachmentMarkers(const char* text) {
  if (text == nullptr) return 0;
  // Five markers are counted: one pass finds them all.
  HeldText held(text);
  for (PartWord marker : kCountedMarkers) {
    if (size_t count = TextMemo::Places(text, marker).Count(); count > 0) {
      return static_cast<int>(count);
    }
  }
  return 0;
}

int IsAttachmentHeader(const char* text) { return IsAttachmentHeader(text, nullptr); }

int IsAttachmentHeader(const char* text, const char* end) {
  if (text == nullptr || !ContainsAny(text, end, kDispositionFields)) return 0;
  return ContainsAny(text, end, kFileNameSpellings) ? 1 : 0;
}

}  // namespace mailslice::mime
