// What the part readers learn about a text while it is being read: its length, and where a
// word first occurs in it. Each reader searches its part anew (for the MIME version line, the
// charset, the fields), and in a part that lacks the word each search runs to the end of the
// part, which in a message with a large attachment is most of the message. While a walk lends
// a piece (or a reader is given the loaded message) the text cannot change, so the answers are
// kept for it and the searches after the first are free.
#ifndef MAILSLICE_MIME_TEXT_MEMO_H
#define MAILSLICE_MIME_TEXT_MEMO_H

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace mailslice::mime {

class TextMemo {
 public:
  // Remembers answers about `text` (NUL-terminated) until the object goes. Memos nest: the
  // latest one made for a text answers for it (a piece ended in place inside a text that is
  // itself remembered reads shorter meanwhile).
  explicit TextMemo(const char* text);
  // A text whose length is known already.
  TextMemo(const char* text, size_t length);
  ~TextMemo();
  TextMemo(const TextMemo&) = delete;
  TextMemo& operator=(const TextMemo&) = delete;

  // strlen(text), remembered when a memo holds the text.
  static size_t Length(const char* text);
  // strstr(text, needle), remembered when a memo holds the text.
  static const char* Find(const char* text, const char* needle);

 private:
  static TextMemo* Holding(const char* text);

  const char* text_;
  size_t length_ = static_cast<size_t>(-1);  // not measured yet
  std::vector<std::pair<std::string_view, const char*>> found_;
  TextMemo* outer_;
};

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_TEXT_MEMO_H
