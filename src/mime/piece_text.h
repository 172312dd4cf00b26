// The pieces of a multipart text as NUL-terminated texts, for the part readers, which read a
// part up to its NUL. A multipart message is mostly one big attachment piece, so copying the
// pieces would double the memory a message takes. In a text the library owns (the loaded
// message, or a private repaired copy), a piece is therefore ended in place for as long as it
// is read, and the byte behind it is put back afterwards. A caller's text is never written:
// its pieces are copied, one at a time, into a buffer reused for all of them.
#ifndef MAILSLICE_MIME_PIECE_TEXT_H
#define MAILSLICE_MIME_PIECE_TEXT_H

#include <string>

#include "mime/multipart_walker.h"
#include "mime/text_memo.h"

namespace mailslice::mime {

// The text a walk runs over, and whether the library may end its pieces in place.
struct WalkedText {
  WalkedText() = default;
  // A caller's text unless said otherwise.
  explicit WalkedText(const char* text, bool owned = false) : text(text), owned(owned) {}

  const char* text = nullptr;
  bool owned = false;  // the library's own buffer: it may be written for a while
};

class PieceTexts {
 public:
  explicit PieceTexts(const WalkedText& walked) : owned_(walked.owned) {}
  PieceTexts(const PieceTexts&) = delete;
  PieceTexts& operator=(const PieceTexts&) = delete;

  // One piece, NUL-terminated, while the object lives. Pieces lent by one PieceTexts follow
  // each other: take the next only after the last has gone. Pieces of a piece (a nested
  // walk over a lent piece, with its own PieceTexts) may be lent meanwhile.
  class Lent {
   public:
    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;
    ~Lent() {
      if (end_ != nullptr) *end_ = saved_;
    }
    const char* text() const { return text_; }
    // The piece as a text of its own: the library's either way (the message's piece, or the
    // copy), so a walk over its pieces ends them in place too.
    WalkedText walked() const { return WalkedText(text_, true); }

   private:
    friend class PieceTexts;
    // A piece holds no NUL (it lies in front of its text's end), so its length is known.
    Lent(const char* text, size_t length, char* end)
        : text_(text), end_(end), saved_(end ? *end : '\0'), memo_(text, length) {
      if (end_ != nullptr) *end_ = '\0';
    }
    const char* text_;
    char* end_;  // the byte ended in place, or null for a copy
    char saved_;
    TextMemo memo_;  // the piece cannot change while it is lent
  };

  Lent Of(const Piece& piece) {
    auto length = static_cast<size_t>(piece.end - piece.begin);
    if (owned_) return Lent(piece.begin, length, const_cast<char*>(piece.end));
    copy_.assign(piece.begin, piece.end);
    return Lent(copy_.c_str(), length, nullptr);
  }

 private:
  bool owned_;
  std::string copy_;
};

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_PIECE_TEXT_H
