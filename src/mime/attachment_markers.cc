#include "mime/attachment_markers.h"

#include <array>
#include <cstring>
#include <string_view>

#include "codec/substring_search.h"
#include "mime/text_memo.h"

namespace mailslice::mime {
namespace {

struct CountedMarker {
  std::string_view text;
  std::string_view stem;  // the stem of kMarkerStems that the marker holds
  size_t stemAt;          // where in the marker the stem starts
};
constexpr std::string_view kMarkerStems[] = {"attach", "name"};
// In order of preference: only the first marker that occurs is counted.
constexpr CountedMarker kCountedMarkers[] = {{"attachment", "attach", 0},
                                             {"attach;", "attach", 0},
                                             {"filename=", "name", 4},
                                             {"filename*0*=", "name", 4},
                                             {"name=", "name", 0}};
constexpr const char* kDispositionFields[] = {
    "Content-Disposition:", "Content-disposition:", "Content-description:"};
// "name=" is part of "filename=", so the last spelling accepts a file named in any of them.
constexpr const char* kFileNameSpellings[] = {
    "filename=", "Filename=", "filename*0*=", "filename*0=", "filename*1=", "filename*=", "name="};

bool ContainsAny(const char* text, const auto& spellings) {
  for (const char* spelling : spellings) {
    if (TextMemo::Find(text, spelling) != nullptr) return true;
  }
  return false;
}

}  // namespace

int CountAttachmentMarkers(const char* text) {
  if (text == nullptr) return 0;
  std::string_view whole(text, TextMemo::Length(text));
  // The first marker in kCountedMarkers that occurs is counted, overlaps included. The markers
  // share two stems, so two scans count what five searches would: those of the stem "attach"
  // and, when no marker holding it occurs, those of the stem "name".
  std::array<int, std::size(kCountedMarkers)> counts{};
  for (std::string_view stem : kMarkerStems) {
    for (size_t at = codec::FindSubstring(whole, stem); at != std::string_view::npos;
         at = codec::FindSubstring(whole, stem, at + 1)) {
      for (size_t marker = 0; marker < counts.size(); ++marker) {
        const CountedMarker& counted = kCountedMarkers[marker];
        if (counted.stem == stem && at >= counted.stemAt &&
            whole.substr(at - counted.stemAt).starts_with(counted.text)) {
          ++counts[marker];
        }
      }
    }
    for (int count : counts) {
      if (count > 0) return count;
    }
  }
  return 0;
}

int IsAttachmentHeader(const char* text) {
  if (text == nullptr || !ContainsAny(text, kDispositionFields)) return 0;
  return ContainsAny(text, kFileNameSpellings) ? 1 : 0;
}

}  // namespace mailslice::mime
