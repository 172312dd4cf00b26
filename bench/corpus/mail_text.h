// The building blocks of the benchmark corpus: a seeded dice whose throws are the same on every
// machine, the transfer encodings (Base64, quoted-printable), encoded words in UTF-8 and
// ISO-2022-JP, dates, and prose in English, in accented European languages and in Japanese.
#ifndef MAILSLICE_BENCH_CORPUS_MAIL_TEXT_H
#define MAILSLICE_BENCH_CORPUS_MAIL_TEXT_H

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>

namespace mailslice::corpus {

// std::mt19937's output is fixed by the C++ standard, the distributions are not; every value is
// therefore derived from the raw output with a modulo, so the corpus is byte for byte the same
// whatever the standard library. For the same reason no expression throws the dice twice: the
// order of function arguments and of the operands of + is left to the compiler, and GCC and
// Clang choose differently.
class Dice {
 public:
  explicit Dice(uint32_t seed) : engine_(seed) {}
  uint32_t Below(uint32_t bound) { return static_cast<uint32_t>(engine_() % bound); }
  uint32_t Between(uint32_t low, uint32_t high) { return low + Below(high - low + 1); }
  bool Percent(uint32_t chance) { return Below(100) < chance; }
  char Byte() { return static_cast<char>(engine_() & 0xFF); }
  template <typename T, size_t N>
  const T& Pick(const T (&items)[N]) {
    return items[Below(N)];
  }

 private:
  std::mt19937 engine_;
};

enum class Script { kAscii, kEuropean, kJapanese };

constexpr char kCrLf[] = "\r\n";

// Base64 on one line (for encoded words) and in 76-column CR LF lines (for bodies).
std::string Base64(std::string_view bytes);
std::string Base64Lines(std::string_view bytes);
// The length of Base64Lines(bytes) for `size` bytes, without encoding them.
size_t Base64LinesSize(size_t size);

// Quoted-printable of text whose lines end in CR LF: lines of at most 76 characters with soft
// breaks, every byte outside printable ASCII and every "=" escaped, white space at a line end
// escaped.
std::string QuotedPrintable(std::string_view text);

// A header value in encoded words of at most 75 characters, folded onto continuation lines.
std::string Utf8Words(std::string_view utf8, bool qEncoding);
// `jis` is JIS X 0208 two-byte text without escapes; each word carries its own escapes.
std::string Iso2022JpWords(std::string_view jis);
// "ESC $ B" + jis + "ESC ( B".
std::string JisRun(std::string_view jis);

// A Date field value such as "Tue, 14 Mar 2023 09:41:07 +0100".
std::string MailDate(Dice& dice);

// Prose of at least `bytes` bytes in paragraphs of sentences, lines ending in CR LF, a blank
// line between paragraphs. With `wrapLines` the lines are broken at 72 columns, as a mailer
// sending 7bit or 8bit text does; without, each paragraph is one line, as mailers write text
// they send quoted-printable. Japanese prose is ISO-2022-JP text, a sentence a line.
std::string Prose(Dice& dice, Script script, size_t bytes, bool wrapLines);
// One paragraph, without its line end.
std::string Paragraph(Dice& dice, Script script);
// A sentence of a few words; Japanese sentences are JIS X 0208 text without escapes.
std::string Sentence(Dice& dice, Script script, uint32_t minWords, uint32_t maxWords);

// A phrase of Japanese business mail in JIS X 0208, without escapes.
std::string JapanesePhrase(Dice& dice);

// "Name <address>" with the name in encoded words where it is not ASCII.
std::string Mailbox(Dice& dice, Script script);

}  // namespace mailslice::corpus

#endif  // MAILSLICE_BENCH_CORPUS_MAIL_TEXT_H
