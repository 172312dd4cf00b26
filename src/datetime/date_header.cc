#include "datetime/date_header.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "datetime/text_number.h"
#include "platform/ole_date.h"
#include "platform/white_space.h"

namespace mailslice::datetime {
namespace {

using platform::CalendarTime;

// Day names as RFC 822 writers put them in front of the date, comma and blank included.
constexpr std::u16string_view kDayNamePrefixes[] = {u"Sun, ", u"Mon, ", u"Tue, ", u"Wed, ",
                                                    u"Thu, ", u"Fri, ", u"Sat, "};
constexpr size_t kDayNamePrefixLength = 5;
// Month names are matched exactly: "JAN" is not a month.
constexpr std::u16string_view kMonthNames[] = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                               u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
constexpr size_t kShortestDayName = 3;
constexpr size_t kZoneLength = 5;  // "+0900"

// Trace lines ("Received: ...; Mon, 5 Jan 2009 ...") carry the date after their last ";".
std::u16string_view DateAfterLastSemicolon(const CString& value) {
  std::u16string_view date = value.Str();
  if (size_t semicolon = date.rfind(u';'); semicolon != date.npos) {
    date.remove_prefix(semicolon + 1);
  }
  platform::TrimmedRange kept = platform::Untrimmed(date);
  return date.substr(kept.begin, kept.end - kept.begin);
}

bool StartsWithDayName(std::u16string_view date) {
  std::u16string_view head = date.substr(0, kDayNamePrefixLength);
  return std::ranges::find(kDayNamePrefixes, head) != std::end(kDayNamePrefixes);
}

// Keeps the sign and four digits of the zone and drops what follows ("-0800 (PST)").
void CutAfterZone(std::u16string& date) {
  size_t sign = date.find(u'+');
  if (sign == std::u16string::npos) sign = date.find(u'-');
  if (sign != std::u16string::npos) date.resize(std::min(date.size(), sign + kZoneLength));
}

// A date with text in front of its day name is cut to begin at the day name. The day names
// are tried in week order, and the first one found wins wherever it stands.
void StartAtDayName(std::u16string& date) {
  if (StartsWithDayName(date)) return;
  for (std::u16string_view prefix : kDayNamePrefixes) {
    size_t at = date.find(prefix);
    if (at == std::u16string::npos) continue;
    std::u16string cut = date.substr(at);
    CutAfterZone(cut);
    if (!cut.empty()) date = std::move(cut);
    return;
  }
}

// Runs of blanks become one blank, in place.
void CollapseBlanks(std::u16string& date) {
  auto blanks = [](char16_t kept, char16_t next) { return kept == u' ' && next == u' '; };
  date.erase(std::unique(date.begin(), date.end(), blanks), date.end());
}

// Stores the tokens between blanks and colons in order. Tabs are not delimiters: the header
// lookup has already turned them into blanks. The text after the last delimiter (the zone, as
// a rule) is not stored as a token.
void StoreTokens(std::u16string_view date, DateFields fields) {
  int index = kDayOfWeekField;
  size_t begin = 0;
  for (size_t at = 0; at < date.size(); ++at) {
    if (date[at] != u' ' && date[at] != u':') continue;
    std::u16string_view token = date.substr(begin, at - begin);
    begin = at + 1;
    if (index == kDayOfWeekField && token.size() < kShortestDayName) {
      fields[kDayOfWeekField].Empty();  // the date begins with the day of the month
      index = kDayField;
    }
    if (index == kDayField && token.size() == 1) {
      const char16_t padded[] = {u'0', token[0]};
      fields[index++] = CString(padded, 2);
    } else {
      fields[index++] = CString(token.data(), static_cast<int>(token.size()));
    }
    if (index == kDateFieldCount) return;  // further tokens have no entry
  }
}

void StoreZone(std::u16string_view date, DateFields fields) {
  size_t sign = date.find(u'+');
  if (sign == std::u16string_view::npos) sign = date.find(u'-');
  if (sign != std::u16string_view::npos) {
    std::u16string_view zone = date.substr(sign, kZoneLength);
    fields[kZoneField] = CString(zone.data(), static_cast<int>(zone.size()));
  }
}

// Minutes to add to the written time to reach Coordinated Universal Time: "+0900" gives -540.
int MinutesToUniversalTime(const CString& zone) {
  std::u16string_view text = zone.Str();
  if (text.empty()) return 0;
  // The hours at 1 (two digits, or what is left), the minutes in the last two places.
  std::u16string_view hours = text.substr(std::min<size_t>(1, text.size()), 2);
  std::u16string_view minutes = text.substr(text.size() - std::min<size_t>(2, text.size()));
  int total = LeadingInteger(hours) * 60 + LeadingInteger(minutes);
  return text[0] == u'+' ? -total : total;
}

int MonthNumber(const CString& name) {
  auto found = std::ranges::find(kMonthNames, std::u16string_view(name.Str()));
  if (found == std::end(kMonthNames)) return 0;
  return static_cast<int>(found - std::begin(kMonthNames)) + 1;
}

int FieldNumber(DateFields fields, DateField field) { return LeadingInteger(fields[field].Str()); }

std::optional<CalendarTime> UniversalTime(DateFields fields) {
  CalendarTime written;
  written.year = FieldNumber(fields, kYearField);
  written.month = MonthNumber(fields[kMonthField]);
  written.day = FieldNumber(fields, kDayField);
  written.hour = FieldNumber(fields, kHourField);
  written.minute = FieldNumber(fields, kMinuteField);
  written.second = FieldNumber(fields, kSecondField);
  auto date = platform::ToOleDate(written);
  if (date) date = platform::AddSpan(*date, 0, 0, MinutesToUniversalTime(fields[kZoneField]), 0);
  if (!date) return std::nullopt;
  return platform::FromOleDate(*date);
}

// printf's "%0<width>d": the digits, after a minus sign, filled with zeros to `width`.
CString Padded(size_t width, int value) {
  unsigned magnitude = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
  size_t digits = 1;
  for (unsigned rest = magnitude / 10; rest != 0; rest /= 10) ++digits;
  size_t sign = value < 0 ? 1 : 0;
  // Ten digits, a sign and the widest padding asked for.
  constexpr size_t kMostUnits = 16;
  char16_t text[kMostUnits];
  size_t length = std::max(width, digits + sign);
  std::fill_n(text, length, u'0');
  size_t at = length;
  do {
    text[--at] = static_cast<char16_t>(u'0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  if (sign != 0) text[0] = u'-';
  return CString(text, static_cast<int>(length));
}

void WriteBack(const std::optional<CalendarTime>& time, DateFields fields) {
  if (!time) {
    fields[kYearField] = kNoYearText;
    for (DateField field : {kMonthField, kDayField, kHourField, kMinuteField, kSecondField}) {
      fields[field] = kNoFieldText;
    }
    return;
  }
  fields[kYearField] = Padded(4, time->year);
  fields[kMonthField] = Padded(2, time->month);
  fields[kDayField] = Padded(2, time->day);
  fields[kHourField] = Padded(2, time->hour);
  fields[kMinuteField] = Padded(2, time->minute);
  fields[kSecondField] = Padded(2, time->second);
}

}  // namespace

void ParseDateHeader(const CString& value, DateFields fields) {
  std::u16string_view date = DateAfterLastSemicolon(value);
  // Most dates begin with their day name and hold no run of blanks: they are read where they
  // stand.
  std::u16string changed;
  if (!StartsWithDayName(date) || date.find(u"  ") != date.npos) {
    changed.assign(date);
    StartAtDayName(changed);
    CollapseBlanks(changed);
    date = changed;
  }
  StoreTokens(date, fields);
  StoreZone(date, fields);
  WriteBack(UniversalTime(fields), fields);
}

CString JoinDateFields(std::span<const CString, kDateFieldCount> fields) {
  // Each field as "%s" writes it: up to its first NUL.
  auto text = [&](DateField field) { return std::u16string_view(fields[field].GetString()); };
  constexpr size_t kSeparatorCount = 5;  // "/", "/", " ", ":", ":"
  size_t length = kSeparatorCount;
  for (DateField field :
       {kYearField, kMonthField, kDayField, kHourField, kMinuteField, kSecondField}) {
    length += text(field).size();
  }
  std::u16string joined;
  joined.reserve(length);
  joined.append(text(kYearField)).append(u"/").append(text(kMonthField)).append(u"/");
  joined.append(text(kDayField)).append(u" ").append(text(kHourField)).append(u":");
  joined.append(text(kMinuteField)).append(u":").append(text(kSecondField));
  return CString(std::move(joined));
}

}  // namespace mailslice::datetime
