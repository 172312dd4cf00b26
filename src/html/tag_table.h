// The tag names the HTML reader knows, and the classifier that decides whether the characters
// after a "<" open a comment, a known tag, or nothing it recognises.
#ifndef MAILSLICE_HTML_TAG_TABLE_H
#define MAILSLICE_HTML_TAG_TABLE_H

#include <array>
#include <string_view>

namespace mailslice::html {

inline constexpr size_t kTagTableEntries = 176;

// Start tags, then end tags (none for the empty elements such as META, IMG and BR), then
// "!DOCTYPE" and "!--"; an empty entry ends the table.
extern const std::array<std::string_view, kTagTableEntries + 1> kTagTable;

enum class Markup { kNone, kComment, kKnownTag };

// Classifies the text at `text` (just after a "<" and any white space; NUL-terminated).
// A word is a known tag when it begins with a table entry, letters compared without case: so
// "BODYX", and every word that begins with A, B, I, P, Q, S or U, count as known tags.
Markup Classify(const char* text);

// True when the "<" at `lessThan` is followed, after white space, by a comment or a known tag.
bool MarkupFollows(const char* lessThan);

// White space for the HTML reader: the control characters and the space (1 to 32).
constexpr bool IsHtmlSpace(char ch) { return ch >= 1 && ch <= 32; }

constexpr const char* SkipHtmlSpace(const char* text) {
  while (IsHtmlSpace(*text)) ++text;
  return text;
}

}  // namespace mailslice::html

#endif  // MAILSLICE_HTML_TAG_TABLE_H
