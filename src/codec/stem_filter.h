// Finding several short words in a text in one pass. The part readers ask each part about a
// score of words (field names, parameter spellings, attachment markers), most of which the part
// lacks, so a search per word reads the whole part once per word. Here the words are grouped by
// a stem they share, and up to eight stems are looked for at once: a place where the first three
// bytes of a stem stand is a candidate, and only candidates are compared in full.
#ifndef MAILSLICE_CODEC_STEM_FILTER_H
#define MAILSLICE_CODEC_STEM_FILTER_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace mailslice::codec {

class StemFilter {
 public:
  static constexpr size_t kMostStems = 8;
  static constexpr size_t kPrefixBytes = 3;

  // One to kMostStems stems of kPrefixBytes ASCII bytes or more, kept as they are given
  // (constants).
  StemFilter(std::initializer_list<std::string_view> stems);

  // Calls found(stem, place) for every place in `text` where a stem stands (overlapping places
  // too), in order of place, and at one place in the order of the stems.
  template <typename Found>
  void ForEach(std::string_view text, Found found) const {
    Candidate candidates[kBatch];
    for (size_t from = 0; from < text.size();) {
      size_t count = Candidates(text, from, candidates);
      for (size_t k = 0; k < count; ++k) {
        for (unsigned stems = candidates[k].stems; stems != 0; stems &= stems - 1) {
          auto stem = static_cast<size_t>(__builtin_ctz(stems));
          size_t place = candidates[k].place;
          // The first bytes are known to match.
          if (SameBytes(text, place + kPrefixBytes, stems_[stem].substr(kPrefixBytes))) {
            found(stem, place);
          }
        }
      }
    }
  }

  struct Candidate {
    size_t place;
    unsigned stems;  // a bit per stem whose prefix stands there
  };
  // Room for the candidates of a few blocks; a batch is compared before the scan goes on.
  static constexpr size_t kBatch = 128;

  // Whether `bytes` stand in `text` at `place`; a loop, as the words are a few bytes long and
  // mostly differ in their first byte.
  static bool SameBytes(std::string_view text, size_t place, std::string_view bytes) {
    if (place > text.size() || text.size() - place < bytes.size()) return false;
    for (size_t k = 0; k < bytes.size(); ++k) {
      if (text[place + k] != bytes[k]) return false;
    }
    return true;
  }

  // Tables of the prefixes' bytes: for each of the three places, a bit per stem.
  struct Tables {
    // By byte value.
    std::array<std::array<uint8_t, 256>, kPrefixBytes> byByte{};
    // By the low and the high half of the byte (a byte whose halves both carry a stem's bit is
    // that stem's byte, as each stem has one byte at each place).
    std::array<std::array<uint8_t, 16>, kPrefixBytes> byLowHalf{}, byHighHalf{};
  };

 private:
  // The candidates from `from` on, up to kBatch; `from` is moved to where the next call goes on.
  size_t Candidates(std::string_view text, size_t& from, Candidate* out) const;

  std::array<std::string_view, kMostStems> stems_{};
  Tables tables_;
};

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_STEM_FILTER_H
