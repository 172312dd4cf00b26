#include "platform/byte_search.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace mailslice::platform {
namespace {

// Every start position in texts of every length around the block size, against the standard
// search; bytes with the high bit set too, which SSE compares as negative.
TEST(ByteSearchTest, FindsWhatTheStandardSearchFinds) {
  std::mt19937 random(91);
  const char alphabet[] = {'a', '<', '>', ' ', '"', '\xFF', '\x80', '='};
  for (size_t length = 0; length < 70; ++length) {
    for (int round = 0; round < 20; ++round) {
      std::string text;
      for (size_t k = 0; k < length; ++k) text += alphabet[random() % std::size(alphabet)];
      std::string_view view(text);
      for (size_t from = 0; from <= length + 1; ++from) {
        ASSERT_EQ(FindAnyByte(view, from, '"', '>', '<'), view.find_first_of("\"><", from));
        ASSERT_EQ(FindAnyByte(view, from, ' ', '=', '<', '>'), view.find_first_of(" =<>", from));
        ASSERT_EQ(FindAnyByte(view, from, '\xFF'), view.find('\xFF', from));
      }
    }
  }
}

}  // namespace
}  // namespace mailslice::platform
