#include "mime/html_body.h"

#include <string>
#include <utility>

#include "html/html_to_text.h"
#include "platform/file_system.h"
#include "platform/temp_folder.h"

namespace mailslice::mime {
namespace {

constexpr char16_t kDefaultFileName[] = u"body.html";
constexpr char16_t kHtmlExtension[] = u".html";

void SaveSource(const std::u16string& html, const CString& path) {
  std::string target = path.ToUtf8();
  std::string content = CString(html).ToUtf8();
  platform::FileSystem& files = platform::Files();
  // Written beside the target and moved into place, so a reader never sees half a page.
  std::string partial = target + ".part";
  files.Remove(partial);
  platform::ErrorCode error = platform::kErrorSuccess;
  auto file = files.CreateNew(partial, &error);
  if (!file) return;
  error = file->Write(content.data(), content.size());
  if (platform::ErrorCode closed = file->Close(); error == platform::kErrorSuccess) error = closed;
  if (error == platform::kErrorSuccess) error = files.Rename(partial, target);
  if (error != platform::kErrorSuccess) files.Remove(partial);
}

}  // namespace

CString HtmlSourcePath(const CString& fileName) {
  auto folder = platform::PrivateTempFolder();
  if (!folder) return CString();
  CString name = fileName.IsEmpty() ? CString(kDefaultFileName) : fileName;
  name.Replace(u'/', u'_');
  name.Replace(u'\\', u'_');
  if (name == u"." || name == u"..") name = kDefaultFileName;
  if (name.Find(u'.') < 0) name += kHtmlExtension;
  return CString::FromUtf8(*folder) + u"/" + name;
}

CString HtmlBodyToText(std::u16string html, std::string page, const HtmlArguments& arguments) {
  if (arguments.save != 0) {
    CString path = HtmlSourcePath(arguments.fileName);
    if (!path.IsEmpty()) SaveSource(html, path);
  }
  return html::ConvertHtmlToText(std::move(html), std::move(page));
}

}  // namespace mailslice::mime
