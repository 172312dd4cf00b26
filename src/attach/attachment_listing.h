// Listing the attachments of a message: cutting it into part records, marking and naming the
// attachments, and rebuilding the attachment list from them.
#ifndef MAILSLICE_ATTACH_ATTACHMENT_LISTING_H
#define MAILSLICE_ATTACH_ATTACHMENT_LISTING_H

#include <mailslice/cstring.h>
#include <mailslice/part_record.h>

#include <string>

#include "attach/attachment_list.h"
#include "mime/multipart_walker.h"
#include "mime/piece_text.h"
#include "platform/function_ref.h"

namespace mailslice::attach {

// Cuts the message text at `boundary` exactly as a listing does and hands each piece, with its
// record marked and named, to `visit` in order. A message cut off before its closing delimiter
// is repaired into `repaired` first, and its pieces then lie there. Only the piece at hand is
// lent (ended in place in a text the library owns, else copied), so a listing never holds a
// second copy of the whole message. The record is lent too: `visit` may take its strings. False
// when the text cannot be walked.
bool VisitMarkedParts(mime::WalkedText message, const CString& boundary, std::string& repaired,
                      platform::FunctionRef<void(PartRecord&, const mime::Piece&)> visit);

// Marks and names the attachments among records 0 .. count - 1 and rebuilds `list` from them
// (record 0 is looked at even when count is 0). Returns the number of names listed.
int FillAttachmentRecords(PartRecord** records, int count, AttachmentList& list);

// Frees the texts of records 0 .. count - 1 and deletes them, leaving null pointers behind.
void DeleteRecords(PartRecord** records, int count);

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_ATTACHMENT_LISTING_H
