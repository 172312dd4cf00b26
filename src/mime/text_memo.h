// What the part readers learn about a text while it is being read: its length, and where the
// words they look for stand in it. Each reader searches its part anew (for the MIME version
// line, the charset, the fields), and in a part that lacks the word each search would run to
// the end of the part, which in a message with a large attachment is most of the message. While
// a walk lends a piece (or a reader is given the loaded message) the text cannot change, so one
// pass over it finds every place of every part word, and later questions are looked up.
#ifndef MAILSLICE_MIME_TEXT_MEMO_H
#define MAILSLICE_MIME_TEXT_MEMO_H

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "mime/part_words.h"

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
  // The places of `word` in the text at `from`, read to its NUL as strstr reads it; `from` may
  // be the start of a text a memo holds, or any place inside one. A memo's own text reads as
  // the memo holds it (the standing memo's as a whole, whatever part of it is ended in place
  // meanwhile: an in-place end stands at a delimiter's "--", inside no part word). Answered by
  // an index of all part words, made with one pass over the text the first time; a text that
  // no memo holds is searched.
  static WordPlaces Places(const char* from, PartWord word) { return WordsOf(from).Places(word); }
  // strstr(from, word's spelling), as Places finds it.
  static const char* Find(const char* from, PartWord word) { return Places(from, word).First(); }

  // What is known of the part words in the text at one place (see Places).
  class Words {
   public:
    WordPlaces Places(PartWord word) const {
      return index_ != nullptr ? WordPlaces(from_, end_, word, base_, *index_)
                               : WordPlaces(from_, end_, word);
    }

   private:
    friend class TextMemo;
    const char* from_ = nullptr;
    const char* end_ = nullptr;
    const char* base_ = nullptr;
    const PartWordIndex* index_ = nullptr;  // null when the words are searched for
  };
  // The readers ask one place about several words in a row: the last answer is kept until a
  // memo comes or goes.
  static const Words& WordsOf(const char* from);
  // Whether `word`, made at run time (a boundary's closing delimiter), stands anywhere in the
  // text, remembered when a memo holds the text: the memo keeps a copy of the word to remember
  // the answer under.
  static bool ContainsWord(const char* text, const std::string& word);
  // Whether a memo holds the text at `from` (as its own text, or a place inside it).
  static bool Holds(const char* from);

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

 private:
  static TextMemo* Holding(const char* text);
  // The standing memo, when it holds `text` as a whole (`length` unknown, or its own).
  static TextMemo* StandingFor(const char* text, size_t length);
  // How the text at `from` reads: to `end`, by the index of `keeper`'s text; a null keeper when
  // no memo holds it.
  struct Reading {
    const char* end = nullptr;
    TextMemo* keeper = nullptr;
  };
  static Reading ReadingOf(const char* from);
  // The memo whose text holds [from, end) and reaches furthest: its index answers for it.
  static TextMemo* KeeperOf(const char* from, const char* end);
  // The end of the memo's text, measured when it was not yet.
  const char* End();
  // Whether the memo only hands its questions on to the standing memo.
  bool Aliases() const { return standing_ != nullptr; }
  // The index of the memo's text, made the first time; null when it cannot be made.
  const PartWordIndex* Index();
  // The answer remembered under `key`, found by `search` the first time.
  template <typename Search>
  const char* Answer(std::string_view key, Search search) {
    Answers& answers = AnswerStore();
    for (const auto& [known, at] : answers) {
      if (known == key) return at;
    }
    const char* at = search();
    answers.emplace_back(key, at);
    return at;
  }
  // Whether this memo's answers are kept by the standing memo: it holds a piece of its text.
  bool KeptByStanding() const { return piece_; }

  using Answers = std::vector<std::pair<std::string_view, const char*>>;
  // Where the memo's answers are kept: about a piece of the standing memo's text, by the
  // standing memo, so that every walk over the text until that memo goes finds them (its pieces
  // are the same each time); else by the memo itself.
  Answers& AnswerStore();

  const char* text_;
  size_t length_ = static_cast<size_t>(-1);  // not measured yet
  Answers found_;
  bool piece_ = false;                                   // see KeptByStanding
  std::map<std::pair<size_t, size_t>, Answers> pieces_;  // the standing memo's, by place
  // The standing memo's, by place and delimiter; looked up without copying the delimiter.
  struct WalkOrder {
    using is_transparent = void;
    using Key = std::tuple<size_t, size_t, std::string_view>;
    static Key View(const std::tuple<size_t, size_t, std::string>& key) {
      return {std::get<0>(key), std::get<1>(key), std::get<2>(key)};
    }
    static const Key& View(const Key& key) { return key; }
    template <typename A, typename B>
    bool operator()(const A& a, const B& b) const {
      return View(a) < View(b);
    }
  };
  std::map<std::tuple<size_t, size_t, std::string>, KeptWalk, WalkOrder> walks_;
  std::set<std::string> words_;  // the words of ContainsWord answers kept here
  std::optional<PartWordIndex> index_;
  bool indexTried_ = false;
  TextMemo* outer_ = nullptr;
  TextMemo* standing_ = nullptr;  // the standing memo this one hands its questions on to
  bool stands_ = false;
};

// A memo for a text that no memo holds yet, while a reader asks it about several part words:
// one pass over it then answers them all.
class HeldText {
 public:
  explicit HeldText(const char* text) {
    if (text != nullptr && !TextMemo::Holds(text)) memo_.emplace(text);
  }

 private:
  std::optional<TextMemo> memo_;
};

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_TEXT_MEMO_H
