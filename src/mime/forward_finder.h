// Repeated forward searches in one text, each starting at or after the last: the answer of the
// previous search is kept, so a walk over the whole text scans it once instead of once per
// step. The text's end is known, so no search has to measure the rest of the text again.
#ifndef MAILSLICE_MIME_FORWARD_FINDER_H
#define MAILSLICE_MIME_FORWARD_FINDER_H

#include <functional>
#include <string>
#include <string_view>

#include "codec/substring_search.h"

namespace mailslice::mime {

class ForwardFinder {
 public:
  // Occurrences of `needle` in `text` for which `accept` (given the occurrence) is true.
  ForwardFinder(std::string_view text, std::string needle,
                std::function<bool(const char*)> accept = nullptr)
      : text_(text), needle_(std::move(needle)), accept_(std::move(accept)) {}

  // The first accepted occurrence at or after `from` (a position in the text), or null.
  const char* Next(const char* from) {
    if (from < lastFrom_) return Search(from);  // not a forward step: search afresh
    lastFrom_ = from;
    if (exhausted_) return nullptr;
    if (found_ != nullptr && found_ >= from) return found_;
    found_ = Search(from);
    exhausted_ = found_ == nullptr;
    return found_;
  }

  const std::string& needle() const { return needle_; }

 private:
  const char* Search(const char* from) const {
    size_t start = static_cast<size_t>(from - text_.data());
    for (size_t at = codec::FindSubstring(text_, needle_, start); at != std::string_view::npos;
         at = codec::FindSubstring(text_, needle_, at + 1)) {
      if (!accept_ || accept_(text_.data() + at)) return text_.data() + at;
    }
    return nullptr;
  }

  std::string_view text_;
  std::string needle_;
  std::function<bool(const char*)> accept_;
  const char* lastFrom_ = nullptr;
  const char* found_ = nullptr;
  bool exhausted_ = false;
};

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_FORWARD_FINDER_H
