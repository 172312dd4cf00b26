// Searching a text of known length for a word, as std::string_view::find does, but fast where
// mail makes the standard search slow: long bodies in which the word's first letter is common
// (a Base64 attachment holds an "a" every 64 characters or so).
#ifndef MAILSLICE_CODEC_SUBSTRING_SEARCH_H
#define MAILSLICE_CODEC_SUBSTRING_SEARCH_H

#include <cstddef>
#include <string_view>

namespace mailslice::codec {

// The position of the first occurrence of `needle` in `text` at or after `from`, or npos:
// exactly text.find(needle, from).
size_t FindSubstring(std::string_view text, std::string_view needle, size_t from = 0);

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_SUBSTRING_SEARCH_H
