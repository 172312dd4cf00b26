#include "codec/header_text.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "codec/base64_decoder.h"
#include "codec/charset_class.h"
#include "codec/charset_tables.h"
#include "codec/japanese_converter.h"
#include "codec/quoted_printable.h"
#include "platform/code_page.h"

namespace mailslice::codec {
namespace {

constexpr std::string_view kWordStart = "=?";
constexpr std::string_view kWordEnd = "?=";
constexpr std::string_view kRawJisStarts[] = {"\x1B$B", "\x1B$@"};
constexpr std::string_view kRawJisEnd = "\x1B(J";
constexpr std::string_view kBase64Markers[] = {"?b?", "?B?"};
constexpr std::string_view kQuotedPrintableMarkers[] = {"?q?", "?Q?"};
constexpr size_t kMarkerLength = 3;
// Bytes worth a look in plain text: a possible start, an escape, or a line break to drop.
constexpr bool IsPlainTextStop(char ch) {
  return ch == '=' || ch == '\x1B' || ch == '\r' || ch == '\n';
}
constexpr const char* kRawRunEndStops = "?\x1B";
constexpr char16_t kUnmappedShownAs = u'?';

enum class Transfer { kNone, kBase64, kQuotedPrintable };

struct FreeDeleter {
  void operator()(char* block) const { std::free(block); }
};

// The text of a heap block that a codec handed over, up to its NUL, put in `text`; empty for
// none.
void TakeText(char* block, std::string& text) {
  std::unique_ptr<char, FreeDeleter> owned(block);
  if (owned) {
    text.assign(owned.get());
  } else {
    text.clear();
  }
}

// Headers are decoded by the thousand, each through a few byte strings that live only while it
// is decoded: the thread keeps them for the next header. A string is lent out whole, so a
// decoding started inside another finds fewer kept and makes its own.
constexpr size_t kKeptScratchCount = 4;
constexpr size_t kMostKeptScratchBytes = 16 * 1024;  // a rare huge header gives its room back

struct ScratchPool {
  std::array<std::string, kKeptScratchCount> kept;
  size_t count = 0;
};

ScratchPool& Pool() {
  thread_local ScratchPool pool;
  return pool;
}

class ScratchBytes {
 public:
  ScratchBytes() {
    ScratchPool& pool = Pool();
    if (pool.count > 0) bytes_ = std::move(pool.kept[--pool.count]);
    bytes_.clear();
  }
  ~ScratchBytes() {
    ScratchPool& pool = Pool();
    if (pool.count < kKeptScratchCount && bytes_.capacity() <= kMostKeptScratchBytes) {
      pool.kept[pool.count++] = std::move(bytes_);
    }
  }
  ScratchBytes(const ScratchBytes&) = delete;
  ScratchBytes& operator=(const ScratchBytes&) = delete;

  std::string& operator*() { return bytes_; }
  std::string* operator->() { return &bytes_; }

 private:
  std::string bytes_;
};

template <typename Spellings>
bool StartsWithAny(std::string_view text, const Spellings& spellings) {
  for (std::string_view spelling : spellings) {
    if (text.starts_with(spelling)) return true;
  }
  return false;
}

// One encoded word (or raw ISO-2022-JP run) cut out of the header.
struct EncodedWord {
  int charsetClass = kCharsetOther;
  Transfer transfer = Transfer::kNone;
  std::string_view text;
};

// Where an encoded word ends: the terminator's position and length.
struct WordEnd {
  size_t at;
  size_t length;
};

// The decoded text as it grows: device bytes are gathered and widened together, so that the
// header decoder converts its whole result at once; wide pieces are put between them.
class DecodedText {
 public:
  // Room for a result as long as the header's bytes, which most headers do not outgrow.
  explicit DecodedText(size_t expected) { wide_.reserve(expected); }

  std::string& bytes() { return *bytes_; }
  void AppendBytes(std::string_view bytes) { bytes_->append(bytes); }
  void AppendWide(std::u16string_view text) {
    WidenBytes();
    wide_ += text;
  }
  CString Finish() {
    WidenBytes();
    return CString(std::move(wide_));
  }

 private:
  void WidenBytes() {
    if (!bytes_->empty()) platform::DeviceAnsiReader().AppendWidened(*bytes_, wide_);
    bytes_->clear();
  }
  ScratchBytes bytes_;
  std::u16string wide_;
};

// The word's bytes with its transfer encoding undone, up to the first NUL, put in `decoded`.
void UndoTransferEncoding(const EncodedWord& word, std::string& decoded) {
  if (word.transfer != Transfer::kNone) {
    ScratchBytes encoded;
    encoded->assign(word.text);
    // Without a length the quoted-printable decoder turns underscores into spaces where the
    // device's language expects it, as in encoded words.
    TakeText(word.transfer == Transfer::kBase64 ? DecodeBase64(encoded->c_str(), nullptr)
                                                : DecodeQuotedPrintable(encoded->c_str(), nullptr),
             decoded);
    return;
  }
  decoded.assign(word.text);
}

// Through the JIS converter, into a buffer of twice the input and the NUL: more than the
// converter can write (a last lone byte of a two-byte run makes a pair with the NUL, and only
// after an escape it does not copy). Korean words, which the device gave a buffer of their
// own length plus one, get this one too; no text changes.
void JisToShiftJis(const std::string& bytes, std::string& out) {
  out.assign(bytes.size() * 2 + 2, '\0');
  JapaneseConverter().JisToShiftJis(out.data(), bytes.c_str());
  out.resize(std::strlen(out.c_str()));
}

// A KOI8-R or windows-1251 word, through its table and the device's narrowing.
CString TableWord(int charsetClass, std::string_view bytes) {
  auto lookup = charsetClass == kCharsetKoi8r ? Koi8rToUtf16 : Windows1251ToUtf16;
  std::u16string wide;
  wide.reserve(bytes.size());
  for (unsigned char byte : bytes) {
    char16_t unit = lookup(byte);
    wide += unit == kUnmappedByte ? kUnmappedShownAs : unit;
  }
  return CString(platform::AnsiToWide(NarrowForDevice(wide)));
}

class HeaderWalk {
 public:
  HeaderWalk(const std::string& bytes, const HeaderWalkRules& rules)
      : text_(bytes), ptr_(bytes.c_str()), rules_(rules), result_(bytes.size()) {}

  CString Decode() {
    for (size_t at = 0; at < text_.size();) {
      if (!WordStartsAt(at)) {
        at = KeepPlainText(at);
        continue;
      }
      std::optional<EncodedWord> word = CutWord(at);
      if (!word) return result_.Finish();  // an unterminated word drops the rest
      ScratchBytes bytes;
      UndoTransferEncoding(*word, *bytes);
      // Russian mail shows its first Cyrillic word alone: the text around it is dropped.
      if (word->charsetClass == kCharsetKoi8r || word->charsetClass == kCharsetWindows1251) {
        return TableWord(word->charsetClass, *bytes);
      }
      AppendConverted(word->charsetClass, *bytes);
    }
    return result_.Finish();
  }

 private:
  bool RawRunAt(size_t at) const { return StartsWithAny(text_.substr(at), kRawJisStarts); }
  bool WordStartsAt(size_t at) const {
    return text_.substr(at).starts_with(kWordStart) || RawRunAt(at);
  }

  // The next byte at or after `at` that plain text stops at, or the end.
  size_t PlainTextStop(size_t at) const {
    while (at < text_.size() && !IsPlainTextStop(text_[at])) ++at;
    return at;
  }

  // Keeps plain text up to the next start; CR and LF, left by folded header lines, are
  // dropped. Returns where it stopped.
  size_t KeepPlainText(size_t at) {
    std::string& kept = result_.bytes();
    while (at < text_.size()) {
      size_t stop = PlainTextStop(at);
      kept.append(text_, at, stop - at);
      at = stop;
      if (at == text_.size() || WordStartsAt(at)) break;
      if (text_[at] != '\r' && text_[at] != '\n') kept += text_[at];
      ++at;
    }
    return at;
  }

  // Cuts the word that starts at `at` and moves `at` past it; nothing when it has no end.
  // A raw ISO-2022-JP run goes to the converter whole, escapes included, and ends at "?=",
  // at ESC ( J or at the end of the text.
  std::optional<EncodedWord> CutWord(size_t& at) const {
    bool raw = RawRunAt(at);
    if (!raw) at += kWordStart.size();
    EncodedWord word;
    word.charsetClass = ClassifyCharset(ptr_ + at);
    if (!raw) {
      at = PassCharsetName(at, word.charsetClass);
      word.transfer = TransferAt(at);
      if (word.transfer != Transfer::kNone) at += kMarkerLength;
    }
    std::optional<WordEnd> end = FindWordEnd(at, raw);
    if (!end) {
      if (!raw && !rules_.unterminatedWordRunsToEnd) return std::nullopt;
      end = WordEnd{text_.size(), 0};
    }
    word.text = text_.substr(at, end->at - at);
    at = end->at + end->length;
    return word;
  }

  // The charset name runs to the next "?": a language suffix ("iso-2022-jp*ja") is passed
  // over with it.
  size_t PassCharsetName(size_t at, int charsetClass) const {
    if (charsetClass == kCharsetJapanese) at += JapaneseCharsetNameLength(ptr_ + at);
    return std::min(text_.find('?', at), text_.size());
  }

  Transfer TransferAt(size_t at) const {
    std::string_view rest = text_.substr(at);
    if (StartsWithAny(rest, kBase64Markers)) return Transfer::kBase64;
    if (StartsWithAny(rest, kQuotedPrintableMarkers)) return Transfer::kQuotedPrintable;
    return Transfer::kNone;
  }

  std::optional<WordEnd> FindWordEnd(size_t from, bool raw) const {
    if (!raw) {
      size_t at = text_.find(kWordEnd, from);
      if (at == std::string_view::npos) return std::nullopt;
      return WordEnd{at, kWordEnd.size()};
    }
    for (size_t at = from; (at = text_.find_first_of(kRawRunEndStops, at)) != text_.npos; ++at) {
      if (text_.substr(at).starts_with(kWordEnd)) return WordEnd{at, kWordEnd.size()};
      if (text_.substr(at).starts_with(kRawJisEnd)) return WordEnd{at, kRawJisEnd.size()};
    }
    return std::nullopt;
  }

  void AppendConverted(int charsetClass, std::string& bytes) {
    if (rules_.wideWord != nullptr) {
      if (std::optional<std::u16string> wide = rules_.wideWord(charsetClass, bytes)) {
        result_.AppendWide(*wide);
        return;
      }
    }
    JapaneseConverter converter;
    switch (charsetClass) {
      case kCharsetJapanese:
      // Korean words carry no ISO-2022 escape, so the JIS converter passes their bytes through
      // in its single-byte mode: Korean mail shares the Japanese route.
      case kCharsetKsc5601: {
        ScratchBytes shiftJis;
        JisToShiftJis(bytes, *shiftJis);
        result_.AppendBytes(*shiftJis);
        break;
      }
      case kCharsetEucJp:
        converter.EucToShiftJis(bytes.data());
        result_.AppendBytes(bytes);
        break;
      case kCharsetUtf8:
        converter.AppendUtf8AsDevice(bytes, result_.bytes());
        break;
      default:
        // EUC-KR and unknown charsets keep their bytes; so does UTF-7, whose conversion on
        // the device hands nothing back.
        result_.AppendBytes(bytes);
        break;
    }
  }

  std::string_view text_;
  const char* ptr_;  // text_ as NUL-terminated text, for the charset classifier
  const HeaderWalkRules& rules_;
  DecodedText result_;
};

}  // namespace

CString DecodeHeaderText(const CString& source) { return DecodeHeaderText(source, {}); }

CString DecodeHeaderText(const CString& source, const HeaderWalkRules& rules) {
  // The header arrives widened from the message's bytes; wcstombs gives them back, in a
  // buffer of twice its length.
  ScratchBytes bytes;
  NarrowLikeWcstombs(source.Str(), source.Str().size() * 2, *bytes);
  return HeaderWalk(*bytes, rules).Decode();
}

}  // namespace mailslice::codec
