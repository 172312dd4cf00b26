// Base64 decoding of message bodies, attachments and encoded words: the whole-buffer decoder
// and a block decoder for attachments read piece by piece. Neither reports malformed input to
// its caller: they decode what they can and go on, and only note it in an error flag.
#ifndef MAILSLICE_CODEC_BASE64_DECODER_H
#define MAILSLICE_CODEC_BASE64_DECODER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace mailslice::codec {

// Progress of one decoding through its input: the group being gathered and where the reading
// stands. Made fresh for every decoding.
struct Base64Progress {
  uint32_t accumulator = 0;  // the group gathered so far, as the decoder's 32-bit register
  uint32_t taken = 0;        // significant characters taken; a group is complete every fourth
  bool skipping = false;     // the reading stopped inside a run of bytes outside the alphabet
  bool stopped = false;      // met the "=" that ends the Base64 text
  int error = 0;             // 1 once a byte outside the alphabet other than CR or LF was met
};

// Decodes `count` characters of `text` (its whole length up to the NUL when `length` is null;
// else *length, and a count beyond the NUL ends at the NUL). Returns a new malloc'd buffer of
// count + 1 bytes, zero behind what decoding wrote, that the caller frees; *length receives the
// number of decoded bytes and *error the error flag. When memory runs out the result is a fresh
// one-byte empty buffer (or null when even that fails) and *length is left alone.
char* DecodeBase64(const char* text, int* length, int* error = nullptr);

// Decodes Base64 handed over in consecutive blocks (an attachment body read piece by piece).
// The characters of a group cut by the end of a block stay in the decoder and are completed by
// the next block, so the caller passes the pieces as they come and re-reads nothing; the bytes
// of all blocks together are those that DecodeBase64 counts for the whole body. (For a cut last
// group DecodeBase64 also writes bytes it does not count, which a reader of its NUL-terminated
// result sees; the block decoder gives only the counted ones.)
class Base64BlockDecoder {
 public:
  // Appends the bytes decoded from `block` to `out`. Pass `final` with the last block (it may
  // be empty): only then is an incomplete last group stored. After the final block, and after
  // the "=" that ends the text, further blocks are ignored.
  void Decode(std::string_view block, bool final, std::string& out);

  int error() const { return progress_.error; }
  bool finished() const { return finished_; }

 private:
  Base64Progress progress_;
  // The last byte of the latest block: whether it ends the whole body decides how the decoder
  // treats it, and only the next call tells.
  std::optional<unsigned char> heldBack_;
  bool finished_ = false;
};

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_BASE64_DECODER_H
