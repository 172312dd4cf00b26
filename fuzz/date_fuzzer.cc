// The Date header and the date and time words: a Date value parsed into the caller's eight
// fields and joined again, worded in the device's zone, language and clock; and the display
// exports on numbers the input chooses (any OLE date, NaN and infinities included).
#include <mailslice/mailslice.h>

#include <cstring>
#include <string>

#include "datetime/date_display.h"
#include "fuzz_input.h"

namespace {

template <typename Number>
Number TakeNumber(mailslice::fuzz::FuzzInput& input) {
  Number number{};
  std::string_view bytes = input.Take(sizeof(Number));
  std::memcpy(&number, bytes.data(), bytes.size());
  return number;
}

void ParseDate(const CString& value, bool prefilled) {
  // Entries the value does not reach keep what the caller put in them.
  CString fields[8];
  if (prefilled) {
    for (CString& field : fields) field = value;
  }
  GetParsingDate(value, fields);
  CString universalTime = GetNewDate(fields);
  ConvertToDisplayTime(universalTime);
  if (auto local = mailslice::datetime::LocalDateOf(universalTime)) {
    GetDateMsg(0, 0, *local);
    GetTimeMsg(0, 0, *local);
  }
}

void WordNumbers(const CString& value, double date, int number) {
  GetDateMsg(0, 0, date);
  GetTimeMsg(0, 0, date);
  ConvertToDisplayTime(value);
  Get12hoursMsg(value, number);
  GetDayOfWeekString(number);
  ConvertMonthNumToString(number);
  LoadTimeFormat();
  GetTimeZoneBias();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  mailslice::fuzz::FuzzInput input(data, size);
  mailslice::fuzz::ChooseDevice(input);
  uint8_t choice = input.TakeByte();
  auto date = TakeNumber<double>(input);
  auto number = TakeNumber<int32_t>(input);
  // The value as it comes out of the message: 8-bit text widened in the device code page.
  std::string text(input.TakeRest());
  CString value(text.c_str());

  ParseDate(value, choice & 1);
  WordNumbers(value, date, number);
  return 0;
}
