// CVelEdit and CSystemValue: the control library's device settings and message catalogs.
#include <mailslice/device.h>

#include "platform/device_settings.h"
#include "platform/format_integers.h"
#include "platform/message_catalog.h"

namespace {

using mailslice::platform::LanguageCode;
using mailslice::platform::LoadCatalog;

// The date-and-time format that a catalog may give; without it the fixed form is used.
constexpr int kDateAndTimeFormatMessage = 2000;
constexpr char16_t kDefaultDateAndTimeFormat[] = u"%04d/%02d/%02d %02d:%02d:%02d";

}  // namespace

CVelEdit::~CVelEdit() = default;

int CVelEdit::GetCurrentDeviceType() const { return mailslice::platform::DeviceType(); }

int CVelEdit::GetCurrentLanguageCode() const { return LanguageCode(); }

CString CVelEdit::GetResource(unsigned id) const {
  auto catalog = LoadCatalog(u"Resource", LanguageCode());
  if (!catalog || id > 0x7FFFFFFFu) return CString();
  return CString(catalog->Find(static_cast<int>(id)).value_or(u""));
}

CSystemValue::CSystemValue() : catalog_(LoadCatalog(u"Email", LanguageCode())) {}

CSystemValue::~CSystemValue() = default;

bool CSystemValue::LoadMessageFile(const CString& name) {
  auto catalog = LoadCatalog(name.Str(), LanguageCode());
  if (!catalog) return false;
  catalog_ = std::move(catalog);
  return true;
}

CString CSystemValue::GetMessageW(int number) const {
  if (!catalog_) return CString();
  return CString(catalog_->Find(number).value_or(u""));
}

CString CSystemValue::GetDateAndTimeMessage(int year, int month, int day, int hour, int minute,
                                            int second) const {
  std::u16string format = kDefaultDateAndTimeFormat;
  if (catalog_) format = catalog_->Find(kDateAndTimeFormatMessage).value_or(format);
  return CString(
      mailslice::platform::FormatIntegers(format, {year, month, day, hour, minute, second}));
}
