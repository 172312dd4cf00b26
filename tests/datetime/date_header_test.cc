// The Date header reader through its exports, so that each test also proves the wiring.
#include "datetime/date_header.h"

#include <gtest/gtest.h>
#include <mailslice/exports.h>
#include <time.h>

#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/test_support.h"

namespace mailslice::datetime {
namespace {

struct Case {
  const char* value;
  const char* dayName;
  const char* universalTime;  // entries 3, 2, 1, 4, 5, 6 joined
  const char* zone;
};

// The zone written in the header counts, never the device's: a device far from Coordinated
// Universal Time makes any use of local time show.
void ExpectParsed(const std::vector<Case>& cases) {
  mailslice::testing::ScopedEnv deviceZone("TZ", "JST-9");
  tzset();
  for (const Case& c : cases) {
    std::array<CString, kDateFieldCount> fields;
    GetParsingDate(CString::FromUtf8(c.value), fields.data());
    EXPECT_EQ(fields[kDayOfWeekField].ToUtf8(), c.dayName) << c.value;
    EXPECT_EQ(GetNewDate(fields.data()).ToUtf8(), c.universalTime) << c.value;
    EXPECT_EQ(fields[kZoneField].ToUtf8(), c.zone) << c.value;
  }
}

TEST(DateHeaderTest, DatesAsMailProgramsWriteThem) {
  ExpectParsed({
      {"Mon, 5 Jan 2009 10:20:30 +0900", "Mon,", "2009/01/05 01:20:30", "+0900"},
      {"Mon, 5 Jan 2009 05:00:00 +0900", "Mon,", "2009/01/04 20:00:00", "+0900"},
      {"5 Jan 2009 10:20:30 -0500", "", "2009/01/05 15:20:30", "-0500"},
      {"Mon, 05 Jan 2009 10:20:30 -0800 (PST)", "Mon,", "2009/01/05 18:20:30", "-0800"},
      {"Mon, 5 Jan 2009 10:20:30 GMT", "Mon,", "2009/01/05 10:20:30", ""},
      {"Mon, 5 Jan 2009 9:05 +0530", "Mon,", "2009/01/05 03:35:00", "+0530"},
      // The last token is never stored: without a zone after them, the seconds are lost.
      {"Mon, 5 Jan 2009 10:20:30", "Mon,", "2009/01/05 10:20:00", ""},
      {"by mx.example.com; id 7; Mon, 5 Jan 2009 10:20:30 +0900", "Mon,", "2009/01/05 01:20:30",
       "+0900"},
      {" \t Mon,   5  Jan 2009   10:20:30    +0900 \t", "Mon,", "2009/01/05 01:20:30", "+0900"},
      {"was Tue, 6 Jan 2009 23:30:00 -0130 (x y)", "Tue,", "2009/01/07 01:00:00", "-0130"},
      // Day names are tried in week order: Monday wins although Saturday stands earlier.
      {"x Sat, or Mon, 5 Jan 2009 10:20:30 +0900", "Mon,", "2009/01/05 01:20:30", "+0900"},
  });
}

TEST(DateHeaderTest, RollsOverMonthAndYearEndsAndLeapDays) {
  ExpectParsed({
      {"Thu, 1 Jan 2009 03:00:00 +0900", "Thu,", "2008/12/31 18:00:00", "+0900"},
      {"Wed, 31 Dec 2008 20:00:00 -0500", "Wed,", "2009/01/01 01:00:00", "-0500"},
      {"Sun, 1 Mar 2009 01:00:00 +0200", "Sun,", "2009/02/28 23:00:00", "+0200"},
      {"Sat, 28 Feb 2004 23:30:00 -0100", "Sat,", "2004/02/29 00:30:00", "-0100"},
      {"Thu, 1 Mar 1900 00:30:00 +0100", "Thu,", "1900/02/28 23:30:00", "+0100"},
      {"Wed, 1 Mar 2000 00:30:00 +0100", "Wed,", "2000/02/29 23:30:00", "+0100"},
  });
}

TEST(DateHeaderTest, DatesThatCannotBeShownReadAsZeros) {
  ExpectParsed({
      {"Mon, 5 JAN 2009 10:20:30 +0900", "Mon,", "0000/00/00 00:00:00", "+0900"},
      {"Mon, 5 Jan 09 10:20:30 +0900", "Mon,", "0000/00/00 00:00:00", "+0900"},
      {"Tue, 31 Feb 2009 10:20:30 +0000", "Tue,", "0000/00/00 00:00:00", "+0000"},
      {"Fri, 31 Dec 9999 23:00:00 -0500", "Fri,", "0000/00/00 00:00:00", "-0500"},
      // A tab is no delimiter (the header lookup hands tabs over as blanks).
      {"Mon,\t5 Jan 2009 10:20:30 +0900", "Mon,\t5", "0000/00/00 00:00:00", "+0900"},
      {"", "", "0000/00/00 00:00:00", ""},
  });
}

TEST(DateHeaderTest, NeverWritesBeyondTheEightEntries) {
  const std::string longRun(10'000, ':');
  for (const char* value : {"Mon, 5 Jan 2009 10:20:30 +0900 (JST) a b c d e f",
                            " : : : : : : : : : ", "Sun, Sun, Sun, Sun, Sun, Sun, Sun, Sun, Sun, ",
                            "Mon, 5 +", longRun.c_str()}) {
    auto entries = std::make_unique<CString[]>(kDateFieldCount + 1);
    entries[kDateFieldCount] = u"guard";
    GetParsingDate(CString::FromUtf8(value), entries.get());
    EXPECT_EQ(entries[kDateFieldCount], u"guard") << value;
  }
  GetParsingDate(u"Mon, 5 Jan 2009 10:20:30 +0900", nullptr);  // no entries: nothing to fill
  EXPECT_TRUE(GetNewDate(nullptr).IsEmpty());
}

// The text before the day name, runs of blanks and the zone's tail are set aside before a date
// is cut into fields: a date given already put right must read the same. `Normal` puts a date
// right the long way, step by step.
std::u16string Normal(std::u16string_view value) {
  std::u16string date(value.substr(value.rfind(u';') == value.npos ? 0 : value.rfind(u';') + 1));
  CString trimmed(date);
  trimmed.Trim();
  date = trimmed.Str();
  const std::u16string_view days[] = {u"Sun, ", u"Mon, ", u"Tue, ", u"Wed, ",
                                      u"Thu, ", u"Fri, ", u"Sat, "};
  bool starts = false;
  for (auto day : days) starts = starts || date.starts_with(day);
  for (size_t d = 0; d < std::size(days) && !starts; ++d) {
    size_t at = date.find(days[d]);
    if (at == date.npos) continue;
    std::u16string cut = date.substr(at);
    size_t sign = cut.find(u'+');
    if (sign == cut.npos) sign = cut.find(u'-');
    if (sign != cut.npos) cut.resize(std::min(cut.size(), sign + 5));
    if (!cut.empty()) date = cut;
    break;
  }
  std::u16string collapsed;
  for (char16_t ch : date) {
    if (!(ch == u' ' && !collapsed.empty() && collapsed.back() == u' ')) collapsed += ch;
  }
  return collapsed;
}

TEST(DateHeaderTest, ReadsADateAsItsTidiedForm) {
  const std::vector<std::u16string> pieces = {
      u"Mon, ",     u"Sat, ",  u"Tue,", u"5 ",    u"31 ",         u"Jan ",   u"Feb", u"2009 ",
      u"10:20:30 ", u"  ",     u" ",    u"+0900", u"-0800 (PST)", u"by x; ", u";",   u"\t",
      u"\0",        u"\u00E9", u"x",    u":",     u"+",           u"-"};
  std::mt19937 random(5);
  for (int round = 0; round < 4000; ++round) {
    std::u16string value;
    for (size_t n = random() % 10; n > 0; --n) value += pieces[random() % pieces.size()];
    std::u16string normal = Normal(value);
    // A cut behind the zone can leave a blank at the end, which a second reading trims.
    if (!normal.empty() && normal.back() == u' ') continue;
    std::array<CString, kDateFieldCount> direct, tidied;
    for (size_t i = 0; i < kDateFieldCount; ++i) direct[i] = tidied[i] = u"kept";
    ParseDateHeader(CString(value), direct);
    ParseDateHeader(CString(normal), tidied);
    for (size_t i = 0; i < kDateFieldCount; ++i) {
      ASSERT_EQ(direct[i], tidied[i]) << mailslice::testing::Utf8(value) << " #" << i;
    }
  }
}

}  // namespace
}  // namespace mailslice::datetime
