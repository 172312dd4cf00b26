// The white space that CString's Trim removes, for code that trims wide text in place.
#ifndef MAILSLICE_PLATFORM_WHITE_SPACE_H
#define MAILSLICE_PLATFORM_WHITE_SPACE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace mailslice::platform {

// Space, tab, CR, LF, vertical tab and form feed: one bit each, tested with one shift.
inline constexpr uint64_t kTrimmedSpaces = uint64_t{1} << u' ' | uint64_t{1} << u'\t' |
                                           uint64_t{1} << u'\r' | uint64_t{1} << u'\n' |
                                           uint64_t{1} << u'\v' | uint64_t{1} << u'\f';

constexpr bool IsTrimmedSpace(char16_t ch) { return ch <= u' ' && (kTrimmedSpaces >> ch & 1) != 0; }

// Where the text that CString's Trim leaves of `text` begins and ends.
struct TrimmedRange {
  size_t begin;
  size_t end;
};

inline TrimmedRange Untrimmed(std::u16string_view text) {
  size_t end = text.size();
  while (end > 0 && IsTrimmedSpace(text[end - 1])) --end;
  size_t begin = 0;
  while (begin < end && IsTrimmedSpace(text[begin])) ++begin;
  return {begin, end};
}

// The same for 8-bit text, whose white space is the same ASCII bytes.
inline TrimmedRange Untrimmed(std::string_view text) {
  auto space = [](char ch) { return IsTrimmedSpace(static_cast<unsigned char>(ch)); };
  size_t end = text.size();
  while (end > 0 && space(text[end - 1])) --end;
  size_t begin = 0;
  while (begin < end && space(text[begin])) ++begin;
  return {begin, end};
}

// Cuts `text` down to `kept`, in place.
template <typename Text>
void KeepOnly(Text& text, TrimmedRange kept) {
  text.resize(kept.end);
  text.erase(0, kept.begin);
}

// What CString's Trim leaves of `text`, done in place.
inline void TrimSpaces(std::u16string& text) { KeepOnly(text, Untrimmed(text)); }

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_WHITE_SPACE_H
