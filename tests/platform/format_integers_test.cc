#include "platform/format_integers.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>

namespace {

using mailslice::platform::FormatIntegers;

std::u16string Widened(const std::string& text) { return std::u16string(text.begin(), text.end()); }

// Catalog formats of one integer conversion each, the plain ones written without printf and
// the others through it, against what printf writes.
TEST(FormatIntegersTest, WritesEachIntegerAsPrintfDoes) {
  const char* formats[] = {"%d",  "%i",    "%05d",  "%0d", "%5d",  "%00d", "%02d:%02d",
                           "%1d", "%012d", "%-5d|", "%+d", "% 4d", "%.3d", "%08.3d",
                           "%x",  "%04X",  "%o",    "%u",  "%#x",  "a%dz"};
  const int values[] = {0, 7, -7, 42, -42, 99, 100, 123456, INT_MAX, INT_MIN, -100000};
  for (const char* format : formats) {
    for (int value : values) {
      char expected[64];
      std::snprintf(expected, sizeof expected, format, value, value);
      std::u16string wide(format, format + std::char_traits<char>::length(format));
      EXPECT_EQ(FormatIntegers(wide, {value, value}), Widened(expected))
          << format << " with " << value;
    }
  }
}

TEST(FormatIntegersTest, TakesWidthsFromTheValuesAndMissingValuesAsZero) {
  EXPECT_EQ(FormatIntegers(u"%0*d|%*d", {5, -3, 4, 12}), u"-0003|  12");
  EXPECT_EQ(FormatIntegers(u"%0*d", {-4, 9}), u"9   ");  // a negative width aligns left
  EXPECT_EQ(FormatIntegers(u"%02d:%02d:%02d", {7}), u"07:00:00");
  EXPECT_EQ(FormatIntegers(u"%s %ld %d%%", {3}), u"%s %ld 3%");
}

}  // namespace
