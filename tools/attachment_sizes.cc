#include "attachment_sizes.h"

#include <mailslice/mailslice.h>

#include <filesystem>

#include "attach/attachment_finder.h"
#include "attach/attachment_saver.h"
#include "private_folder.h"

namespace mailslice::tools {
namespace {

constexpr char kMeasuredFile[] = "attachment";

std::optional<uint64_t> DecodedSize(const attach::AttachmentPart& part,
                                    const PrivateFolder& folder) {
  std::string path = folder.Path(kMeasuredFile);
  int result = attach::SaveBodyByEncoding(part.body, part.transferEncoding, path);
  std::error_code error;
  uint64_t size = std::filesystem::file_size(path, error);
  std::filesystem::remove(path, error);
  if (result != attach::kSaveSucceeded || size == static_cast<uint64_t>(-1)) return std::nullopt;
  return size;
}

}  // namespace

std::vector<SizedAttachment> SizedAttachments() {
  // The loaded message: the library reads its parts in place.
  attach::MessageAttachments attachments(mime::WalkedText(GetMessageText(), true), CString());
  std::optional<PrivateFolder> folder;
  if (!attachments.parts().empty()) folder = PrivateFolder::Make();
  std::vector<SizedAttachment> sized;
  for (const attach::AttachmentPart& part : attachments.parts()) {
    std::optional<uint64_t> size = folder ? DecodedSize(part, *folder) : std::nullopt;
    sized.push_back({part.name.ToUtf8(), size});
  }
  return sized;
}

}  // namespace mailslice::tools
