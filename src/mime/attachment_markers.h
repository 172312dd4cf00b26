// Telling attachments apart: the estimate of how many a message carries, and the test of one
// part's header.
#ifndef MAILSLICE_MIME_ATTACHMENT_MARKERS_H
#define MAILSLICE_MIME_ATTACHMENT_MARKERS_H

namespace mailslice::mime {

// Occurrences (overlapping ones too) of the first marker of "attachment", "attach;",
// "filename=", "filename*0*=" and "name=" that occurs at all; the count of "name=" when none
// does (so 0). An estimate: callers only tell zero from non-zero.
int CountAttachmentMarkers(const char* text);

// 1 when the text has a Content-Disposition (or Content-description) field and names a file in
// any spelling anywhere, else 0 (also for a null text).
int IsAttachmentHeader(const char* text);
// The same for the stretch of the text in front of `end` (a place in it).
int IsAttachmentHeader(const char* text, const char* end);

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_ATTACHMENT_MARKERS_H
