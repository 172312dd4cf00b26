// What the part readers learn about a text while it is being read: its length, and where a
// word first occurs in it. Each reader searches its part anew (for the MIME version line, the
// charset, the fields), and in a part that lacks the word each search runs to the end of the
// part, which in a message with a large attachment is most of the message. While a walk lends
// a piece (or a reader is given the loaded message) the text cannot change, so the answers are
// kept for it and the searches after the first are free.
#ifndef MAILSLICE_MIME_TEXT_MEMO_H
#define MAILSLICE_MIME_TEXT_MEMO_H

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
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

  // A memo that outlives calls, for a text that stays as it is until the memo goes (the loaded
  // message): it answers for the text after any nested memo made for a part of it, and a memo
  // made later for the whole text hands its questions on to it. Its answers are about the
  // whole text, whatever part of it is ended in place meanwhile. At most one stands at a time.
  struct Standing {};
  TextMemo(const char* text, size_t length, Standing);
  TextMemo(const TextMemo&) = delete;
  TextMemo& operator=(const TextMemo&) = delete;

  // strlen(text), remembered when a memo holds the text.
  static size_t Length(const char* text);
  // strstr(text, needle), remembered when a memo holds the text.
  static const char* Find(const char* text, const char* needle);
  // strstr(text, word) for a word made at run time (a boundary's delimiter), remembered when a
  // memo holds the text: the memo keeps a copy of the word to remember the answer under.
  static const char* FindWord(const char* text, const std::string& word);

  // A walk over a text's pieces as a walker recorded it, kept for a text that a standing memo
  // holds (the loaded message, or a piece of it lent whole), which is cut the same way every
  // time until the memo goes.
  struct KeptWalk {
    struct Cut {
      size_t begin, end;  // offsets from `base`
      size_t delimiter;   // index into `delimiters`
    };
    const char* base = nullptr;  // the standing memo's text
    bool complete = false;       // the walk ran to its end: `cuts` are all its pieces
    bool recording = false;      // a walk is recording it now
    int result = 0;
    std::vector<std::string> delimiters;
    std::vector<Cut> cuts;
  };
  // The record of walking `text` at `delimiter` (the boundary in the device code page); null
  // when no standing memo holds the text.
  static KeptWalk* KeptWalkOf(const char* text, std::string_view delimiter);

  // search(), a place in `text` found by a search of the caller's own, remembered under `key`
  // when a memo holds the text. A key must differ from every word searched for with Find.
  // Words and keys are kept as they are given: they must be constants.
  template <typename Search>
  static const char* Find(const char* text, std::string_view key, Search search) {
    TextMemo* memo = Holding(text);
    return memo == nullptr ? search() : memo->Answer(key, search);
  }

 private:
  static TextMemo* Holding(const char* text);
  // The standing memo, when it holds `text` as a whole (`length` unknown, or its own).
  static TextMemo* StandingFor(const char* text, size_t length);
  const std::pair<std::string_view, const char*>* Known(std::string_view key) const;
  // strstr(text, needle) for the text `memo` holds, remembered there.
  static const char* Find(TextMemo* memo, const char* text, const char* needle);
  // The answer remembered under `key`, found by `search` the first time.
  template <typename Search>
  const char* Answer(std::string_view key, Search search) {
    if (const auto* known = Known(key)) return known->second;
    const char* at = search();
    answers_->emplace_back(key, at);
    return at;
  }
  // Whether this memo's answers are kept by the standing memo: it holds a piece of its text.
  bool KeptByStanding() const { return answers_ != &found_; }

  using Answers = std::vector<std::pair<std::string_view, const char*>>;
  // Where the answers about a piece of the standing memo's text are kept, so that every walk
  // over the text until the memo goes finds them: its pieces are the same each time.
  static Answers* StandingPieceAnswers(const char* text, size_t length);

  const char* text_;
  size_t length_ = static_cast<size_t>(-1);  // not measured yet
  Answers found_;
  Answers* answers_ = &found_;
  std::map<std::pair<size_t, size_t>, Answers> pieces_;  // the standing memo's, by place
  std::map<std::tuple<size_t, size_t, std::string>, KeptWalk> walks_;  // the standing memo's
  std::set<std::string> words_;  // the words of FindWord answers kept here
  TextMemo* outer_ = nullptr;
  TextMemo* standing_ = nullptr;  // the standing memo this one hands its questions on to
  bool stands_ = false;
};

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_TEXT_MEMO_H
