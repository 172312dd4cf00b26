#include "codec/substring_search.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace mailslice::codec {
namespace {

// Texts and needles over a small alphabet, so that partial matches, matches at block edges and
// overlapping matches are common; every answer must be that of the standard search.
TEST(SubstringSearchTest, AnswersAsTheStandardSearchDoes) {
  std::mt19937 random(5);
  for (int round = 0; round < 20000; ++round) {
    std::string text(random() % 200, 'a'), needle(random() % 6, 'a');
    for (char& ch : text) ch = "ab-\r\n"[random() % (round % 2 == 0 ? 2 : 5)];
    for (char& ch : needle) ch = "ab-\r\n"[random() % (round % 2 == 0 ? 2 : 5)];
    size_t from = random() % (text.size() + 2);
    ASSERT_EQ(FindSubstring(text, needle, from), std::string_view(text).find(needle, from))
        << text << " / " << needle << " from " << from;
  }
}

TEST(SubstringSearchTest, FindsAWordAtEveryPlaceOfALongText) {
  const std::string word = "attachment";
  for (size_t place = 0; place + word.size() <= 100; ++place) {
    std::string text(100, 'a');
    text.replace(place, word.size(), word);
    EXPECT_EQ(FindSubstring(text, word), place);
    EXPECT_EQ(FindSubstring(text, word, place + 1), std::string_view::npos);
  }
}

}  // namespace
}  // namespace mailslice::codec
