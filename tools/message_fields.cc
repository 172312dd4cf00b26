#include "message_fields.h"

#include "datetime/date_display.h"

namespace mailslice::tools {
namespace {

constexpr int kDateFields = 8;

CString UniversalDate() {
  CString fields[kDateFields];
  GetParsingDate(GetDate(), fields);
  return GetNewDate(fields);
}

}  // namespace

std::string LocalDate() {
  CString universalTime = UniversalDate();
  auto local = datetime::LocalDateOf(universalTime);
  if (!local) return ConvertToDisplayTime(universalTime).ToUtf8();
  return (GetDateMsg(0, 0, *local) + u" " + GetTimeMsg(0, 0, *local)).ToUtf8();
}

std::string LocalDateAndTime() { return ConvertToDisplayTime(UniversalDate()).ToUtf8(); }

std::vector<std::string> CcAddresses(const CString& value) {
  CStringArray list;
  GetCCList(value, &list);
  std::vector<std::string> addresses;
  for (int index = 0; index < list.GetSize(); ++index) {
    addresses.push_back(list.GetAt(index).ToUtf8());
  }
  return addresses;
}

std::string ReadableBody() {
  int alternative = 0;
  CString body = GetReadingBody(GetMessageText(), &alternative, u"", 0, 0, 0);
  body.Replace(u"\r\n", u"\n");  // the reader's line ends, as a terminal wants them
  return body.ToUtf8();
}

std::vector<std::string> AttachmentNames() {
  CString names;
  int count = 0;
  GetAttachFile(GetMessageText(), names, &count);
  std::vector<std::string> list;
  for (int index = 0; index < GetAttachArrayCount(); ++index) {
    list.push_back(GetAttachArrayFile(index).ToUtf8());
  }
  return list;
}

}  // namespace mailslice::tools
