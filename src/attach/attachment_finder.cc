#include "attach/attachment_finder.h"

#include <utility>

#include "attach/attachment_listing.h"
#include "mime/attachment_markers.h"
#include "mime/header_parameters.h"
#include "mime/text_memo.h"

namespace mailslice::attach {
namespace {

constexpr char kAttachment = 'A';
constexpr std::string_view kEmptyLine = "\r\n\r\n";
constexpr std::string_view kBareEmptyLine = "\n\n";

const AttachmentPart* FindByName(const std::vector<AttachmentPart>& parts, const CString& name) {
  if (name.IsEmpty()) return nullptr;
  for (const AttachmentPart& part : parts) {
    if (part.name == name) return &part;
  }
  return nullptr;
}

}  // namespace

MessageAttachments::MessageAttachments(mime::WalkedText message, const CString& fallbackBoundary) {
  const char* text = message.text;
  mime::TextMemo memo(text);  // the message is searched from its start again and again
  // A message without any attachment marker lists nothing, so it has nothing to find either.
  if (text == nullptr || mime::CountAttachmentMarkers(text) <= 0) return;
  hasMarkers_ = true;
  CString boundary;
  // A boundary the message declares cuts it even when it reads as empty, as for the listing.
  declaresBoundary_ = mime::GetBoundary(text, boundary, nullptr) == 1;
  if (!declaresBoundary_) boundary = fallbackBoundary;
  if (!declaresBoundary_ && boundary.IsEmpty()) return;
  walked_ = VisitMarkedParts(
      message, boundary, repaired_, [&](PartRecord& record, const mime::Piece& piece) {
        if (record.kind != kAttachment) return;
        // The body as found in the record's copy, at the same place in the text.
        std::string_view body = PartBody(record.partText);
        std::string_view inText;
        if (!body.empty()) {
          inText = std::string_view(piece.begin + (body.data() - record.partText), body.size());
        }
        parts_.push_back({std::move(record.fileName), std::move(record.transferEncoding), inText});
      });
}

int ListFound(const MessageAttachments& found, CString& names, int* count, AttachmentList& list) {
  list.RemoveAll();
  if (!found.hasMarkers()) return 0;
  names.Empty();
  if (!found.declaresBoundary()) return 1;
  if (count != nullptr) *count = 0;
  for (const AttachmentPart& part : found.parts()) list.Add(part.name);
  return found.walked() ? 1 : 0;
}

int ListAttachments(mime::WalkedText message, CString& names, int* count, AttachmentList& list) {
  return ListFound(MessageAttachments(message, CString()), names, count, list);
}

const AttachmentPart* MessageAttachments::Find(const CString& name, const CString& altName) const {
  const AttachmentPart* found = FindByName(parts_, name);
  return found != nullptr ? found : FindByName(parts_, altName);
}

std::string_view PartBody(const char* partText) {
  if (partText == nullptr) return {};
  std::string_view part(partText, mime::TextMemo::Length(partText));
  size_t start = part.find(kEmptyLine);
  if (start != std::string_view::npos) {
    start += kEmptyLine.size();
  } else if ((start = part.find(kBareEmptyLine)) != std::string_view::npos) {
    start += kBareEmptyLine.size();
  } else {
    return {};
  }
  // The line end in front of a delimiter belongs to the delimiter; in a message whose lines end
  // in a lone LF that is the LF alone.
  size_t end = part.size();
  if (part.ends_with("\r\n")) {
    end -= 2;
  } else if (part.ends_with('\n')) {
    end -= 1;
  }
  return end > start ? part.substr(start, end - start) : std::string_view();
}

}  // namespace mailslice::attach
