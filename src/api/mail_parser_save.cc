// The main parser's attachment saving and free-name choice.
#include "api/instances.h"
#include "api/mail_parser.h"
#include "attach/attachment_finder.h"
#include "attach/attachment_saver.h"
#include "attach/free_file_name.h"

namespace mailslice::api {
namespace {

// A region the caller describes with a null start or an end in front of its start holds
// nothing that could be read.
bool IsReadableRegion(const char* start, const char* end) {
  return start != nullptr && end != nullptr && end >= start;
}

}  // namespace

int MailParser::IsFile(int /*unused*/, CString& path) const {
  path = attach::FreeFileName(path);
  return 1;
}

// The attachment is found by the name the attachment list reported (else its second form);
// the message's own boundary cuts it, as for the listing, and `boundary` stands in only for a
// message that declares none.
int MailParser::SaveAttachedFile(const char* text, const CString& altName, const CString& destPath,
                                 const CString& boundary, const CString& fileName) const {
  std::optional<uint64_t> loadedMessage;
  if (MessageBuffer().Holds(text)) {
    loadedMessage = MessageBuffer().generation();
  }
  const attach::AttachmentPart* part =
      recentAttachments_.Of(text, boundary, loadedMessage).Find(fileName, altName);
  if (part == nullptr) return attach::kSaveImpossible;
  return attach::SaveBodyByEncoding(part->body, part->transferEncoding, destPath.ToUtf8());
}

int MailParser::SaveAttachedEmlFile(const char* partText, const CString& destPath) const {
  return attach::SaveAttachedEmlFile(partText, destPath.ToUtf8());
}

int MailParser::SaveBase64File(const char* start, const char* end, const CString& destPath) const {
  if (!IsReadableRegion(start, end)) return attach::kSaveImpossible;
  return attach::SaveBase64File(std::string_view(start, end - start), destPath.ToUtf8());
}

int MailParser::SaveAttachFile(const char* start, const char* end, const CString& destPath) const {
  if (!IsReadableRegion(start, end)) return attach::kSaveImpossible;
  return attach::SavePlainFile(std::string_view(start, end - start), destPath.ToUtf8());
}

}  // namespace mailslice::api
