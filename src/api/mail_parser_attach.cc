// The main parser's attachment listing and its attachment list.
#include "api/instances.h"
#include "api/mail_parser.h"
#include "attach/attachment_finder.h"
#include "attach/attachment_listing.h"
#include "mime/attachment_markers.h"

namespace mailslice::api {

int MailParser::GetAttachNumber(const char* text) const {
  return mime::CountAttachmentMarkers(text);
}

int MailParser::GetAttachFile(const char* text, CString& names, int* count) {
  if (MessageBuffer().Holds(text)) {
    // The loaded message is listed by the walk that finds its attachments for saving, and the
    // saves that follow reuse it.
    const attach::MessageAttachments& found =
        recentAttachments_.Of(text, CString(), MessageBuffer().generation());
    return attach::ListFound(found, names, count, attachments_);
  }
  return attach::ListAttachments(mime::WalkedText(text), names, count, attachments_);
}

int MailParser::GetMultiPartAttachInfo(PartRecord** records, int count) {
  return attach::FillAttachmentRecords(records, count, attachments_);
}

int MailParser::GetAttachArrayCount() const { return attachments_.Count(); }

CString MailParser::GetAttachArrayFile(int index) const { return attachments_.At(index); }

void MailParser::AttachArrayRemoveall() { attachments_.RemoveAll(); }

void MailParser::OnDeleteMailMessage(PartRecord** records, int count) const {
  attach::DeleteRecords(records, count);
}

}  // namespace mailslice::api
