// The content type of a text from a position on, as GetContentType(position, 1) reads it, for
// positions that only move forward: each search resumes where the last one stopped, so walking
// a message part by part scans it once.
#ifndef MAILSLICE_MIME_CONTENT_TYPE_READER_H
#define MAILSLICE_MIME_CONTENT_TYPE_READER_H

#include <mailslice/cstring.h>

#include <optional>
#include <string>
#include <string_view>

#include "mime/forward_finder.h"

namespace mailslice::mime {

class ContentTypeReader {
 public:
  explicit ContentTypeReader(std::string_view text);
  // The whole-text content type of the text that starts at `position` (a position in `text`).
  const CString& At(const char* position);

 private:
  CString ValueOf(const char* field);

  ForwardFinder unguarded_;
  ForwardFinder lowerCase_;
  ForwardFinder any_;
  ForwardFinder crlf_;
  ForwardFinder lf_;
  const char* cachedField_ = nullptr;
  std::optional<CString> cached_;
};

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_CONTENT_TYPE_READER_H
