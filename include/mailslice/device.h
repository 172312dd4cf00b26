// The handheld's control library as the Linux host stands in for it: the device settings
// (CVelEdit) and the localised message catalogs (CSystemValue). Settings are read from the
// environment each time they are asked for; see README.md for the variables.
#ifndef MAILSLICE_DEVICE_H
#define MAILSLICE_DEVICE_H

#include <mailslice/cstring.h>
#include <mailslice/visibility.h>

#include <memory>

namespace mailslice::platform {
class MessageCatalog;
}

class MAILSLICE_API CVelEdit {
 public:
  CVelEdit() = default;
  CVelEdit(const CVelEdit&) = default;
  CVelEdit& operator=(const CVelEdit&) = default;
  virtual ~CVelEdit();

  // MAILSLICE_DEVICE_TYPE; 0 when unset or not a number.
  int GetCurrentDeviceType() const;
  // MAILSLICE_LANGUAGE; 1 when unset or not a number.
  int GetCurrentLanguageCode() const;
  // Resource string `id` of the "Resource" catalog of the current language; empty if unknown.
  CString GetResource(unsigned id) const;
};

class MAILSLICE_API CSystemValue {
 public:
  CSystemValue();
  CSystemValue(const CSystemValue&) = default;
  CSystemValue& operator=(const CSystemValue&) = default;
  virtual ~CSystemValue();

  // Loads message file `name` (for example u"Email") for the current language: the first of
  // $MAILSLICE_MESSAGES/<language>/<name>, $MAILSLICE_MESSAGES/<name>, the built-in catalog of
  // the language, the built-in English catalog. Returns false when none of them exists.
  bool LoadMessageFile(const CString& name);
  // Message `number` of the loaded file; a number the file lacks is taken from the built-in
  // catalog of the language, then from the English one; empty when no catalog has it.
  CString GetMessageW(int number) const;
  // "YYYY/MM/DD HH:MM:SS" (zero-padded, 24-hour) unless the loaded catalog gives another
  // printf format with six integer conversions as message 2000.
  CString GetDateAndTimeMessage(int year, int month, int day, int hour, int minute,
                                int second) const;

 private:
  std::shared_ptr<const mailslice::platform::MessageCatalog> catalog_;
};

#endif  // MAILSLICE_DEVICE_H
