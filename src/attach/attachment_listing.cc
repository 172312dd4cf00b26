#include "attach/attachment_listing.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "attach/disposition.h"
#include "attach/embedded_message_name.h"
#include "attach/file_name_reader.h"
#include "mime/attachment_markers.h"
#include "mime/content_type_rules.h"
#include "mime/header_parameters.h"
#include "mime/multipart_walker.h"
#include "mime/text_memo.h"
#include "platform/code_page.h"
#include "platform/letter_case.h"

namespace mailslice::attach {
namespace {

constexpr char kAttachment = 'A';

constexpr std::string_view kEmbeddedMessage = "Message/RFC822";

void MarkAttachment(PartRecord& record) {
  const char* part = record.partText;
  // The content type is widened only for a part that keeps it.
  mime::TextSpan type = mime::ContentTypeSpan(part, 0);
  auto contentType = [&] {
    return type.begin == nullptr ? CString() : mime::ContentTypeValue(type.begin, type.end);
  };
  if (mime::ContentTypeValueIs(type.begin, type.end, kEmbeddedMessage)) {
    record.kind = kAttachment;
    record.charset = mime::GetCharSet(part);
    record.contentType = contentType();
    record.transferEncoding = mime::GetTransEncode(part);
    record.fileName = EmbeddedMessageName(part);
  } else if (mime::IsAttachmentHeader(part) == 1) {
    record.kind = kAttachment;
    record.disposition = ReadDisposition(part);
    record.charset = mime::GetCharSet(part);
    record.contentType = contentType();
    record.transferEncoding = mime::GetTransEncode(part);
    record.fileName = ListedFileName(ReadFileNameParameter(part), record.contentType);
  }
}

// What MarkAttachment wrote, taken back.
void ClearMarks(PartRecord& record) {
  record.kind = 0;
  record.disposition.Empty();
  record.charset.Empty();
  record.contentType.Empty();
  record.transferEncoding.Empty();
  record.fileName.Empty();
}

// A message cut off before its closing delimiter gets "\r\n", the boundary and "--" at its
// end, on a copy.
const char* WithClosingDelimiter(const char* text, const CString& boundary, std::string& repaired) {
  std::u16string delimiter;
  delimiter.reserve(boundary.Str().size() + 2);
  delimiter.append(boundary.Str()).append(u"--");
  std::string closing = platform::WideToAnsi(delimiter);
  if (mime::TextMemo::ContainsWord(text, closing)) return text;
  repaired = std::string(text) + "\r\n" + closing;
  return repaired.c_str();
}

}  // namespace

bool VisitMarkedParts(mime::WalkedText message, const CString& boundary, std::string& repaired,
                      platform::FunctionRef<void(PartRecord&, const mime::Piece&)> visit) {
  const char* text = WithClosingDelimiter(message.text, boundary, repaired);
  if (text != message.text) message = mime::WalkedText(text, true);
  mime::PieceTexts pieces(message);
  // One record serves every piece: most pieces are not attachments and leave it as it was.
  PartRecord record;
  int result = mime::WalkMultipart(text, boundary, [&](const mime::Piece& piece) {
    mime::PieceTexts::Lent part = pieces.Of(piece);
    // The record reads the piece where it lies; the text is not the record's to free.
    record.partText = const_cast<char*>(part.text());
    struct Returned {
      PartRecord& record;
      ~Returned() {
        record.partText = nullptr;
        if (record.kind != 0) ClearMarks(record);
      }
    } returned{record};
    MarkAttachment(record);
    visit(record, piece);
    return true;
  });
  return result != mime::kWalkNoDelimiterBuffers;
}

int FillAttachmentRecords(PartRecord** records, int count, AttachmentList& list) {
  if (records == nullptr) return 0;
  for (int i = 0; i < count; ++i) {
    if (records[i] != nullptr) MarkAttachment(*records[i]);
  }
  list.RemoveAll();
  for (int i = 0; i < std::max(count, 1); ++i) {
    if (records[i] != nullptr && records[i]->kind == kAttachment) list.Add(records[i]->fileName);
  }
  return list.Count();
}

void DeleteRecords(PartRecord** records, int count) {
  if (records == nullptr) return;
  for (int i = 0; i < count; ++i) {
    if (records[i] == nullptr) continue;
    std::free(records[i]->partText);
    std::free(records[i]->secondText);
    records[i]->partText = records[i]->secondText = nullptr;
    delete records[i];
    records[i] = nullptr;
  }
}

}  // namespace mailslice::attach
