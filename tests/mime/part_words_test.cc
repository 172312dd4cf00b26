#include "mime/part_words.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "mime/text_memo.h"

namespace mailslice::mime {
namespace {

constexpr PartWord kAllWords[] = {PartWord::kMimeVersion,
                                  PartWord::kMimeVersionCapitals,
                                  PartWord::kContentType,
                                  PartWord::kContentTypeLower,
                                  PartWord::kTransferEncoding,
                                  PartWord::kTransferEncodingLower,
                                  PartWord::kDisposition,
                                  PartWord::kDispositionLower,
                                  PartWord::kDescription,
                                  PartWord::kCharset,
                                  PartWord::kBoundary,
                                  PartWord::kBoundaryCapitals,
                                  PartWord::kBoundarySpaced,
                                  PartWord::kBoundaryCapital,
                                  PartWord::kAttachment,
                                  PartWord::kAttachSemicolon,
                                  PartWord::kFileName,
                                  PartWord::kFileNameCapital,
                                  PartWord::kFileNameFirstEncoded,
                                  PartWord::kFileNameFirst,
                                  PartWord::kFileNameSecond,
                                  PartWord::kFileNameEncoded,
                                  PartWord::kName};
static_assert(std::size(kAllWords) == kPartWordCount);

// Texts made of the words, their stems and pieces of them, so that words overlap, break off
// and stand at every distance from the scan's block edges; bytes of 0x80 and more, which share
// a low half with stem bytes, stand among them.
std::string RandomText(std::mt19937& random) {
  static const char* const pieces[] = {"Content-",
                                       "Type:",
                                       "type:",
                                       "Transfer-Encoding:",
                                       "transfer-encoding:",
                                       "Disposition:",
                                       "disposition:",
                                       "description:",
                                       "Mime",
                                       "MIME",
                                       "-Version: 1.0",
                                       "-Version: 1.",
                                       "nt-",
                                       "charset=",
                                       "et=",
                                       "boundary",
                                       "BOUNDARY",
                                       "Boundary",
                                       "ndary",
                                       "NDARY=",
                                       "ary",
                                       "ARY",
                                       "y =",
                                       "Y=",
                                       " =",
                                       "=",
                                       "attach",
                                       "tta",
                                       "atta",
                                       "ment",
                                       ";",
                                       "file",
                                       "File",
                                       "name",
                                       "nam",
                                       "me",
                                       "e=",
                                       "e*",
                                       "*0*",
                                       "*0",
                                       "*1",
                                       "*",
                                       "x",
                                       "\r\n",
                                       "--",
                                       "ab",
                                       "\xAD",
                                       "\xE5t="};
  std::string text;
  for (size_t count = random() % 40; count > 0; --count) {
    text += pieces[random() % std::size(pieces)];
  }
  return text;
}

size_t CountWithStrstr(const char* text, const char* word) {
  size_t count = 0;
  for (const char* at = std::strstr(text, word); at != nullptr; at = std::strstr(at + 1, word)) {
    ++count;
  }
  return count;
}

// From the start of a remembered text and from every place in it, each word is found where
// strstr finds it, and counted as often; a text no memo holds reads the same.
TEST(PartWordsTest, PlacesAgreeWithStrstrFromEveryPlace) {
  std::mt19937 random(2024);
  for (int round = 0; round < 1500; ++round) {
    std::string text = RandomText(random);
    const char* start = text.c_str();
    for (PartWord word : kAllWords) {
      std::string spelling(SpellingOf(word));
      ASSERT_EQ(TextMemo::Find(start, word), std::strstr(start, spelling.c_str())) << text;
    }
    TextMemo memo(start, text.size());
    for (PartWord word : kAllWords) {
      std::string spelling(SpellingOf(word));
      for (size_t from = 0; from <= text.size(); ++from) {
        ASSERT_EQ(TextMemo::Find(start + from, word), std::strstr(start + from, spelling.c_str()))
            << text << " / " << spelling << " from " << from;
      }
      ASSERT_EQ(TextMemo::Places(start, word).Count(), CountWithStrstr(start, spelling.c_str()))
          << text << " / " << spelling;
      size_t cut = random() % (text.size() + 1);
      std::string front = text.substr(0, cut);
      ASSERT_EQ(TextMemo::Places(start, word).Before(start + cut).First() == nullptr,
                std::strstr(front.c_str(), spelling.c_str()) == nullptr)
          << text << " / " << spelling << " before " << cut;
    }
  }
}

// A place inside a remembered text reads to the first NUL, also one that ends a piece in place
// for a while; the text itself is still read whole.
TEST(PartWordsTest, APlaceReadsToAPieceEndedInPlace) {
  std::string text = "x charset=a\r\n--B\r\nbody\r\n--B\r\nContent-Type: c\r\n--B--";
  char* start = text.data();
  const char* field = start + text.find("Content-Type:");
  TextMemo memo(start, text.size());
  size_t pieceBegin = text.find("--B"), pieceEnd = text.find("--B", pieceBegin + 1);
  {
    start[pieceEnd] = '\0';
    TextMemo piece(start + pieceBegin, pieceEnd - pieceBegin);
    EXPECT_EQ(TextMemo::Find(start + 3, PartWord::kContentType), nullptr);
    EXPECT_EQ(TextMemo::Find(start + pieceBegin + 1, PartWord::kContentType), nullptr);
    EXPECT_EQ(TextMemo::Find(start, PartWord::kContentType), field);
    start[pieceEnd] = '-';
  }
  EXPECT_EQ(TextMemo::Find(start + 3, PartWord::kContentType), field);
}

// Long texts are read in batches: every place is found however many there are.
TEST(PartWordsTest, CountsEveryPlaceOfALongText) {
  std::string text;
  for (int i = 0; i < 3000; ++i) text += i % 3 == 0 ? "filename=" : "attachment ";
  TextMemo memo(text.c_str(), text.size());
  EXPECT_EQ(TextMemo::Places(text.c_str(), PartWord::kFileName).Count(), 1000u);
  EXPECT_EQ(TextMemo::Places(text.c_str(), PartWord::kName).Count(), 1000u);
  EXPECT_EQ(TextMemo::Places(text.c_str(), PartWord::kAttachment).Count(), 2000u);
  EXPECT_EQ(TextMemo::Find(text.c_str() + text.size() - 3, PartWord::kAttachment), nullptr);
}

// A closing delimiter is looked for near the end of a message first, but counts anywhere.
TEST(TextMemoTest, ContainsAWordWhereverItStands) {
  const std::string closing = "B--";
  for (size_t place : {size_t{0}, size_t{100}, size_t{5000}, size_t{9990}}) {
    std::string text(10000, 'x');
    text.replace(place, closing.size(), closing);
    EXPECT_TRUE(TextMemo::ContainsWord(text.c_str(), closing)) << place;
    TextMemo memo(text.c_str(), text.size());
    EXPECT_TRUE(TextMemo::ContainsWord(text.c_str(), closing)) << place;
  }
  std::string without(10000, 'x');
  EXPECT_FALSE(TextMemo::ContainsWord(without.c_str(), closing));
}

}  // namespace
}  // namespace mailslice::mime
