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
inline constexpr std::array<std::string_view, kTagTableEntries + 1> kTagTable = {
    "VAR",       "UL",       "U",         "TT",         "TR",          "TITLE",     "THEAD",
    "TH",        "TFOOT",    "TEXTAREA",  "TD",         "TBODY",       "TABLE",     "SUP",
    "SUB",       "STYLE",    "STRONG",    "STRIKE",     "SPAN",        "SMALL",     "SELECT",
    "SCRIPT",    "SAMP",     "S",         "Q",          "PRE",         "PARAM",     "P",
    "OPTION",    "OPTGROUP", "OL",        "OBJECT",     "NOSCRIPT",    "NOFRAMES",  "META",
    "MENU",      "MAP",      "LINK",      "LI",         "LEGEND",      "LABEL",     "KBD",
    "ISINDEX",   "INS",      "INPUT",     "IMG",        "IFRAME",      "I",         "HTML",
    "HR",        "HEAD",     "H6",        "H5",         "H4",          "H3",        "H2",
    "H1",        "FRAMESET", "FRAME",     "FORM",       "FONT",        "FIELDSET",  "EMBED",
    "EM",        "DT",       "DL",        "DIV",        "DIR",         "DFN",       "DEL",
    "DD",        "COLGROUP", "COL",       "CODE",       "CITE",        "CENTER",    "CAPTION",
    "BUTTON",    "BR",       "BODY",      "BLOCKQUOTE", "BIG",         "BDO",       "BASEFONT",
    "BASE",      "B",        "AREA",      "APPLET",     "ADDRESS",     "ACRONYM",   "ABBR",
    "A",         "/VAR",     "/UL",       "/U",         "/TT",         "/TR",       "/TITLE",
    "/THEAD",    "/TH",      "/TFOOT",    "/TEXTAREA",  "/TD",         "/TBODY",    "/TABLE",
    "/SUP",      "/SUB",     "/STYLE",    "/STRONG",    "/STRIKE",     "/SPAN",     "/SMALL",
    "/SELECT",   "/SCRIPT",  "/SAMP",     "/S",         "/Q",          "/PRE",      "/PARAM",
    "/P",        "/OPTION",  "/OPTGROUP", "/OL",        "/OBJECT",     "/NOSCRIPT", "/NOFRAMES",
    "/MENU",     "/LI",      "/LEGEND",   "/LABEL",     "/KBD",        "/ISINDEX",  "/INS",
    "/IFRAME",   "/I",       "/HTML",     "/HEAD",      "/H6",         "/H5",       "/H4",
    "/H3",       "/H2",      "/H1",       "/FRAMESET",  "/FRAME",      "/FORM",     "/FONT",
    "/FIELDSET", "/EMBED",   "/EM",       "/DT",        "/DL",         "/DIV",      "/DIR",
    "/DFN",      "/DEL",     "/DD",       "/COLGROUP",  "/COL",        "/CODE",     "/CITE",
    "/CENTER",   "/CAPTION", "/BUTTON",   "/BODY",      "/BLOCKQUOTE", "/BIG",      "/BDO",
    "/B",        "/APPLET",  "/ADDRESS",  "/ACRONYM",   "/ABBR",       "/A",        "!DOCTYPE",
    "!--",       ""};

enum class Markup { kNone, kComment, kKnownTag };

namespace tag_table_detail {

// The bytes that are a one-letter tag of the table in either case. Each such tag has its end
// tag in the table too, so a word that begins with one, or with "/" and one, is a known tag
// whatever follows: most words of a page are settled at their first letter or two.
struct OneLetterTags {
  std::array<bool, 256> is{};
  bool hasEveryEndTag = true;
};

constexpr OneLetterTags FindOneLetterTags() {
  OneLetterTags found;
  for (std::string_view tag : kTagTable) {
    if (tag.size() != 1) continue;
    found.is[static_cast<unsigned char>(tag[0])] = true;
    found.is[static_cast<unsigned char>(tag[0] - 'A' + 'a')] = true;
    bool hasEndTag = false;
    for (std::string_view end : kTagTable)
      hasEndTag |= end.size() == 2 && end[0] == '/' && end[1] == tag[0];
    found.hasEveryEndTag &= hasEndTag;
  }
  return found;
}

inline constexpr OneLetterTags kOneLetterTags = FindOneLetterTags();
static_assert(kOneLetterTags.hasEveryEndTag);

constexpr bool IsOneLetterTag(char ch) { return kOneLetterTags.is[static_cast<unsigned char>(ch)]; }

// Classify for the words the first letters do not settle.
Markup ClassifyByTable(const char* text);

}  // namespace tag_table_detail

// Classifies the text at `text` (just after a "<" and any white space; NUL-terminated).
// A word is a known tag when it begins with a table entry, letters compared without case: so
// "BODYX", and every word that begins with A, B, I, P, Q, S or U, count as known tags.
inline Markup Classify(const char* text) {
  using tag_table_detail::IsOneLetterTag;
  if (IsOneLetterTag(text[0]) || (text[0] == '/' && IsOneLetterTag(text[1]))) {
    return Markup::kKnownTag;
  }
  return tag_table_detail::ClassifyByTable(text);
}

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
