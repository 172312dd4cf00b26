// Repeated forward searches in one NUL-terminated text, each starting at or after the last:
// the answer of the previous search is kept, so a walk over the whole text scans it once
// instead of once per step.
#ifndef MAILSLICE_MIME_FORWARD_FINDER_H
#define MAILSLICE_MIME_FORWARD_FINDER_H

#include <cstring>
#include <functional>
#include <string>

namespace mailslice::mime {

class ForwardFinder {
 public:
  // Occurrences of `needle` for which `accept` (given the occurrence) is true.
  explicit ForwardFinder(std::string needle, std::function<bool(const char*)> accept = nullptr)
      : needle_(std::move(needle)), accept_(std::move(accept)) {}

  // The first accepted occurrence at or after `from`, or null.
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
    for (const char* at = std::strstr(from, needle_.c_str()); at != nullptr;
         at = std::strstr(at + 1, needle_.c_str())) {
      if (!accept_ || accept_(at)) return at;
    }
    return nullptr;
  }

  std::string needle_;
  std::function<bool(const char*)> accept_;
  const char* lastFrom_ = nullptr;
  const char* found_ = nullptr;
  bool exhausted_ = false;
};

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_FORWARD_FINDER_H
