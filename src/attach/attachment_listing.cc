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
#include "platform/code_page.h"

namespace mailslice::attach {
namespace {

constexpr char kAttachment = 'A';

void MarkAttachment(PartRecord& record) {
  const char* part = record.partText;
  CString contentType = mime::GetContentType(part, 0);
  if (contentType.CompareNoCase(u"Message/RFC822") == 0) {
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

}  // namespace

int ListAttachments(const char* text, CString& names, int* count, AttachmentList& list) {
  list.RemoveAll();
  if (mime::CountAttachmentMarkers(text) <= 0) return 0;
  names.Empty();
  CString boundary;
  if (mime::GetBoundary(text, boundary, nullptr) == 0) return 1;
  if (count != nullptr) *count = 0;
  std::optional<mime::PartRecordSet> records = CutMessage(text, boundary);
  if (!records) return 0;
  FillAttachmentRecords(records->data(), records->count(), list);
  return 1;
}

std::optional<mime::PartRecordSet> CutMessage(const char* text, const CString& boundary) {
  // A message cut off before its closing delimiter gets "\r\n", the boundary and "--" at its
  // end, on a copy.
  std::string closing = platform::WideToAnsi((boundary + u"--").Str());
  std::string repaired;
  if (std::strstr(text, closing.c_str()) == nullptr) {
    repaired = std::string(text) + "\r\n" + closing;
    text = repaired.c_str();
  }
  int pieces = 0;
  if (mime::GetMultiPartNoInAttachFile(text, boundary, &pieces) != mime::kWalkDone) {
    return std::nullopt;
  }
  std::optional<mime::PartRecordSet> records(std::in_place, pieces);
  mime::GetMultiPart(text, boundary, records->data());
  return records;
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
