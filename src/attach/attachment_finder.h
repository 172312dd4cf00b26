// Finding the attachments of a message by the names the attachment list reported, with their
// bodies ready to be saved.
#ifndef MAILSLICE_ATTACH_ATTACHMENT_FINDER_H
#define MAILSLICE_ATTACH_ATTACHMENT_FINDER_H

#include <mailslice/cstring.h>

#include <string>
#include <string_view>
#include <vector>

#include "attach/attachment_listing.h"

namespace mailslice::attach {

struct AttachmentPart {
  CString name;              // as the attachment list shows it
  CString transferEncoding;  // as written in the part
  std::string_view body;     // the encoded body, without the line end before the delimiter
};

// The attachments of a message, in list order. The message is cut, marked and named by the very
// walk that lists attachments, so each name is exactly the one the list reported, whatever
// spelling the sender used for it (quoted, bare, RFC 2231, continued, encoded words).
class MessageAttachments {
 public:
  // `fallbackBoundary` is used only when the message declares no boundary of its own. The
  // bodies point into the message text, which must stay as it is while the object lives (or
  // into the object's own repaired copy of a message cut off before its closing delimiter).
  MessageAttachments(mime::WalkedText message, const CString& fallbackBoundary);
  MessageAttachments(const MessageAttachments&) = delete;
  MessageAttachments& operator=(const MessageAttachments&) = delete;

  const std::vector<AttachmentPart>& parts() const { return parts_; }
  bool hasMarkers() const { return hasMarkers_; }  // any attachment marker at all
  // The message names its own boundary: the fallback boundary played no part.
  bool declaresBoundary() const { return declaresBoundary_; }
  bool walked() const { return walked_; }  // the parts were cut; false when they could not be
  // The first attachment listed as `name`, else the first listed as `altName`; null when
  // neither is listed.
  const AttachmentPart* Find(const CString& name, const CString& altName) const;

 private:
  std::string repaired_;
  std::vector<AttachmentPart> parts_;
  bool hasMarkers_ = false;
  bool declaresBoundary_ = false;
  bool walked_ = false;
};

// Lists the attachments of the message text into `list` (emptied first). Returns 0 when the
// text has no attachment marker or cannot be walked, else 1 (also for a message that has markers
// but no boundary, which lists nothing). `names` is emptied and `*count` set to 0; the names
// are read back from the list. The caller's text is never written: a missing closing
// delimiter is repaired on a private copy.
int ListAttachments(mime::WalkedText message, CString& names, int* count, AttachmentList& list);

// The same listing from the attachments found in a message with no fallback boundary: the
// walk that finds them is the listing's.
int ListFound(const MessageAttachments& found, CString& names, int* count, AttachmentList& list);

// The body of a part text: behind its header's first CR LF CR LF (else LF LF) up to its end,
// without the line end that belongs to the next delimiter. Empty for a part without an empty
// line: it is all header.
std::string_view PartBody(const char* partText);

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_ATTACHMENT_FINDER_H
