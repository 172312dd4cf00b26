#include "platform/wide_search.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace mailslice::platform {
namespace {

// Every start position in texts of every length around the block size, against the standard
// search.
TEST(WideSearchTest, FindsWhatTheStandardSearchFinds) {
  std::mt19937 random(77);
  const char16_t alphabet[] = {u'a', u'<', u'>', u'&', u'\0', u'\xFFFF', u'\x3C00', u'b'};
  const std::u16string needles[] = {
      u"<", u"<br />", u"ab", u"\xFFFF", u"a<a", u"\x3C00<", std::u16string(1, u'\0')};
  for (size_t length = 0; length < 40; ++length) {
    for (int round = 0; round < 20; ++round) {
      std::u16string text;
      for (size_t k = 0; k < length; ++k) text += alphabet[random() % std::size(alphabet)];
      if (length > 8 && round % 2 == 0) text.replace(random() % (length - 6), 6, u"<br />");
      for (size_t from = 0; from <= length + 1; ++from) {
        for (const std::u16string& needle : needles) {
          std::u16string_view view(text);
          ASSERT_EQ(FindUnits(view, needle, from), view.find(needle, from));
          ASSERT_EQ(FindUnit(view, needle[0], from), view.find(needle[0], from));
        }
        for (std::u16string_view units : {u"&<>", u"<>", u"\xFFFF", u"a\0"}) {
          std::u16string_view view(text);
          ASSERT_EQ(FindAnyUnit(view, units, from), view.find_first_of(units, from));
        }
      }
    }
  }
}

}  // namespace
}  // namespace mailslice::platform
