// Shift_JIS byte classes and the byte arithmetic between Shift_JIS, EUC-JP and JIS pairs: pure
// arithmetic, no tables, as the handheld's converter has always done it.
#ifndef MAILSLICE_CODEC_SHIFT_JIS_H
#define MAILSLICE_CODEC_SHIFT_JIS_H

#include <cstddef>

namespace mailslice::codec {

struct BytePair {
  unsigned char first;
  unsigned char second;
};

constexpr bool IsShiftJisLead(unsigned char byte) {
  return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

constexpr bool IsHalfWidthKatakana(unsigned char byte) { return byte >= 0xA1 && byte <= 0xDF; }

// An EUC-JP pair (and a JIS pair with bit 7 set on both bytes) to its Shift_JIS pair.
constexpr BytePair EucPairToShiftJis(unsigned char c1, unsigned char c2) {
  bool upperRows = c1 >= 0xDF;
  if (c1 % 2 == 1) {
    return {static_cast<unsigned char>(c1 / 2 + (upperRows ? 0x71 : 0x31)),
            static_cast<unsigned char>(c2 - (c2 >= 0xE0 ? 0x60 : 0x61))};
  }
  return {static_cast<unsigned char>(c1 / 2 + (upperRows ? 0x70 : 0x30)),
          static_cast<unsigned char>(c2 - 2)};
}

// A Shift_JIS pair to its JIS X 0208 pair.
constexpr BytePair ShiftJisPairToJis(unsigned char s1, unsigned char s2) {
  auto j1 = static_cast<unsigned char>(s1 <= 0x9F ? s1 - 0x70 : s1 - 0xB0);
  j1 = static_cast<unsigned char>(j1 * 2);
  if (s2 >= 0x9F) return {j1, static_cast<unsigned char>(s2 - 0x7E)};
  return {static_cast<unsigned char>(j1 - 1),
          static_cast<unsigned char>(s2 < 0x7F ? s2 - 0x1F : s2 - 0x20)};
}

// Tells whether the byte at a position starts a double-byte character, reading the text from
// its start: each lead byte takes the byte after it as its partner, and the answer is yes when
// the last character starting at or before the position is double-byte and its partner is at
// or past the position. Positions asked in increasing order cost constant time each, since
// each answer carries on from the reading done for the one before.
class LeadByteScan {
 public:
  explicit LeadByteScan(const unsigned char* text) : text_(text) {}

  // `position` must not be less than any asked before, and lie within the text.
  bool LeadAt(size_t position) {
    while (next_ <= position) {
      lastStart_ = next_;
      lastIsLead_ = IsShiftJisLead(text_[next_]);
      next_ += lastIsLead_ ? 2 : 1;
    }
    return lastIsLead_ && lastStart_ + 1 >= position;
  }

  // Where the reading stands: the start of the next character it has not read.
  size_t next() const { return next_; }

  // The bytes from next() up to `end` are known to be single bytes: passes over them.
  void PassSingleBytes(size_t end) {
    if (end <= next_) return;
    lastStart_ = end - 1;
    lastIsLead_ = false;
    next_ = end;
  }

 private:
  const unsigned char* text_;
  size_t next_ = 0;
  size_t lastStart_ = 0;
  bool lastIsLead_ = false;
};

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_SHIFT_JIS_H
