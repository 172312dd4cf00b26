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
#include "mime/header_parameters.h"
#include "mime/multipart_walker.h"
#include "mime/text_memo.h"
#include "platform/code_page.h"
#include "platform/letter_case.h"

namespace mailslice::attach {
namespace {

constexpr char kAttachment = 'A';

void MarkAttachment(PartRecord& record) {
  const char* part = record.partText;
  CString contentType = mime::GetContentType(part, 0);
  if (platform::EqualsNoCase(contentType.Str(), u"Message/RFC822")) {
    record.kind = kAttachment;
    record.charset = mime::GetCharSet(part);
    record.contentType = contentType;
    record.transferEncoding = mime::GetTransEncode(part);
    record.fileName = EmbeddedMessageName(part);
  } else if (mime::IsAttachmentHeader(part) == 1) {
    record.kind = kAttachment;
    record.disposition = ReadDisposition(part);
    record.charset = mime::GetCharSet(part);
    record.contentType = contentType;
    record.transferEncoding = mime::GetTransEncode(part);
    record.fileName = ListedFileName(ReadFileNameParameter(part), contentType);
  }
}

// A message cut off before its closing delimiter gets "\r\n", the boundary and "--" at its
// end, on a copy.
const char* WithClosingDelimiter(const char* text, const CString& boundary, std::string& repaired) {
  std::string closing = platform::WideToAnsi((boundary + u"--").Str());
  if (mime::TextMemo::ContainsWord(text, closing)) return text;
  repaired = std::string(text) + "\r\n" + closing;
  return repaired.c_str();
}

}  // namespace

bool VisitMarkedParts(mime::WalkedText message, const CString& boundary, std::string& repaired,
                      platform::FunctionRef<void(const PartRecord&, const mime::Piece&)> visit) {
  const char* text = WithClosingDelimiter(message.text, boundary, repaired);
  if (text != message.text) message = mime::WalkedText(text, true);
  mime::PieceTexts pieces(message);
  int result = mime::WalkMultipart(text, boundary, [&](const mime::Piece& piece) {
    mime::PieceTexts::Lent part = pieces.Of(piece);
    PartRecord record;
    // The record reads the piece where it lies; the text is not the record's to free.
    record.partText = const_cast<char*>(part.text());
    struct Returned {
      PartRecord& record;
      ~Returned() { record.partText = nullptr; }
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
