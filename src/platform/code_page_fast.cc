#include "platform/code_page_fast.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

#include "platform/large_pages.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif
// The widening of single-byte pages also has a path for processors with AVX2, chosen at run
// time (x86-64 with GCC or Clang).
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define MAILSLICE_PLATFORM_AVX2 1
#include <immintrin.h>
#endif

namespace mailslice::platform {
namespace {

constexpr std::string_view kUtf8Name = "UTF-8";
// The device code pages where each byte is one character and iconv keeps no state between
// characters (CP1255 and CP1258, which compose accents, are not among them), so a character
// converts the same alone as inside a text.
constexpr std::string_view kSingleBytePages[] = {"CP1250", "CP1251", "CP1252", "CP1256"};

constexpr size_t kBlockBytes = 16;
constexpr uint16_t kNotAsked = 0xFFFF;
constexpr uint16_t kNotSingleByte = 0xFFFE;
// Marks a character the page cannot hold; the low byte is what iconv writes instead.
constexpr uint16_t kRefused = 0x100;
constexpr uint16_t kByteMask = 0xFF;
// In the table of what units show as: a unit to look at closely (not met yet, or not shown as
// one plain unit).
constexpr char16_t kLookCloser = 0xFFFF;
constexpr size_t kUnitsPerBlock = 8;
// The units widened into a buffer on the stack before they are appended.
constexpr size_t kPieceUnits = 512;
// UTF-8 writes the units below this one in two bytes (or one).
constexpr char16_t kFirstThreeByteUnit = 0x800;
constexpr size_t kTwoBytes = 2;

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }
bool IsSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }

// Widens a run of ASCII bytes; returns how many it took. With SSE2, sixteen bytes at a time:
// the block that holds the first other byte is widened whole, which the caller's room for
// `size` units allows, and only its ASCII start counts.
// With `kStopAtNul`, a NUL byte ends the run too.
template <bool kStopAtNul = false>
[[gnu::always_inline]] inline size_t WidenAscii(const unsigned char* in, size_t size,
                                                char16_t* out) {
  size_t done = 0;
#ifdef __SSE2__
  const __m128i zero = _mm_setzero_si128();
  while (size - done >= kBlockBytes) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done), _mm_unpacklo_epi8(block, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done + kBlockBytes / 2),
                     _mm_unpackhi_epi8(block, zero));
    auto high = static_cast<unsigned>(_mm_movemask_epi8(block));
    if (kStopAtNul) high |= static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, zero)));
    if (high != 0) return done + static_cast<size_t>(std::countr_zero(high));
    done += kBlockBytes;
  }
#endif
  while (done < size && in[done] < 0x80 && !(kStopAtNul && in[done] == 0)) {
    out[done] = in[done];
    ++done;
  }
  return done;
}

// The length of the run of ASCII bytes other than NUL at `in` (sixteen at a time as above).
size_t AsciiRunWithoutNul(const unsigned char* in, size_t size) {
  size_t done = 0;
#ifdef __SSE2__
  const __m128i zero = _mm_setzero_si128();
  while (size - done >= kBlockBytes) {
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done));
    auto other = static_cast<unsigned>(_mm_movemask_epi8(block)) |
                 static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, zero)));
    if (other != 0) return done + static_cast<size_t>(std::countr_zero(other));
    done += kBlockBytes;
  }
#endif
  while (done < size && in[done] < 0x80 && in[done] != 0) ++done;
  return done;
}

// Narrows a run of ASCII units; returns how many it took (sixteen at a time as above).
size_t NarrowAscii(const char16_t* in, size_t size, char* out) {
  size_t done = 0;
#ifdef __SSE2__
  while (size - done >= kBlockBytes) {
    __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done));
    __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done + kBlockBytes / 2));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done), _mm_packus_epi16(low, high));
    const __m128i notAscii = _mm_set1_epi16(static_cast<int16_t>(0xFF80));
    const __m128i zero = _mm_setzero_si128();
    __m128i asciiUnits = _mm_packs_epi16(_mm_cmpeq_epi16(_mm_and_si128(low, notAscii), zero),
                                         _mm_cmpeq_epi16(_mm_and_si128(high, notAscii), zero));
    auto other = ~static_cast<unsigned>(_mm_movemask_epi8(asciiUnits)) & 0xFFFFu;
    if (other != 0) return done + static_cast<size_t>(std::countr_zero(other));
    done += kBlockBytes;
  }
#endif
  while (done < size && in[done] < 0x80) {
    out[done] = static_cast<char>(in[done]);
    ++done;
  }
  return done;
}

// Two bits for each of the eight units at `units` that is not ASCII, or is NUL.
unsigned OtherThanAsciiBits(const char16_t* units) {
#ifdef __SSE2__
  const __m128i zero = _mm_setzero_si128();
  __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
  __m128i other = _mm_or_si128(
      _mm_cmpeq_epi16(block, zero),
      _mm_andnot_si128(
          _mm_cmpeq_epi16(_mm_and_si128(block, _mm_set1_epi16(static_cast<int16_t>(0xFF80))), zero),
          _mm_set1_epi16(-1)));
  return static_cast<unsigned>(_mm_movemask_epi8(other));
#else
  unsigned bits = 0;
  for (size_t k = 0; k < kUnitsPerBlock; ++k) {
    if (units[k] == 0 || units[k] >= 0x80) bits |= 3u << (2 * k);
  }
  return bits;
#endif
}

// Decodes one well-formed UTF-8 character of two or three bytes at `in` (of `left` bytes)
// into `out`; returns its length, or 0 when it is not one.
[[gnu::always_inline]] inline size_t DecodeMultiByte(const unsigned char* in, size_t left,
                                                     char16_t* out) {
  unsigned char lead = in[0];
  if (lead >= 0xC2 && lead <= 0xDF && left >= 2 && IsContinuation(in[1])) {
    *out = static_cast<char16_t>((lead & 0x1F) << 6 | (in[1] & 0x3F));
    return 2;
  }
  if (lead >= 0xE0 && lead <= 0xEF && left >= 3 && IsContinuation(in[1]) && IsContinuation(in[2])) {
    char32_t unit = (lead & 0x0Fu) << 12 | (in[1] & 0x3Fu) << 6 | (in[2] & 0x3Fu);
    if (unit >= 0x800 && !IsSurrogate(unit)) {
      *out = static_cast<char16_t>(unit);
      return 3;
    }
  }
  return 0;
}

struct NoNarrowing {};

// Well-formed UTF-8 of the Basic Multilingual Plane, surrogates excepted; anything else
// (malformed bytes, a character beyond the plane) is left to iconv. Each other unit than ASCII
// goes through `map` (which may refuse it, ending the decoding before its bytes); with
// `kStopAtNul` a NUL byte ends it too. The units are gathered in a small buffer handed to
// `flush`, so a large result is written once, not cleared first. Returns the bytes decoded.
// Given a `narrow`, it is told of each run of ASCII (Run) and each other unit as mapped (Unit)
// as they are decoded.
template <bool kStopAtNul, typename Map, typename Flush, typename Narrow = NoNarrowing>
size_t DecodeUtf8InBlocks(std::string_view bytes, Map map, Flush flush, Narrow* narrow = nullptr) {
  constexpr bool kNarrowing = !std::is_same_v<Narrow, NoNarrowing>;
  constexpr size_t kBufferUnits = 4096;
  char16_t buffer[kBufferUnits];
  const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
  size_t size = bytes.size(), at = 0;
  bool stopped = false;
  while (at < size && !stopped) {
    size_t filled = 0;
    while (at < size && filled < kBufferUnits) {
      size_t ascii = WidenAscii<kStopAtNul>(in + at, std::min(size - at, kBufferUnits - filled),
                                            buffer + filled);
      if constexpr (kNarrowing) narrow->Run(in + at, ascii);
      at += ascii;
      filled += ascii;
      if (at == size || filled == kBufferUnits) continue;
      char16_t unit = 0;
      size_t taken = in[at] < 0x80 ? 0 : DecodeMultiByte(in + at, size - at, &unit);
      std::optional<char16_t> mapped = taken != 0 ? map(unit) : std::nullopt;
      if (!mapped) {
        stopped = true;
        break;
      }
      if constexpr (kNarrowing) narrow->Unit(*mapped);
      buffer[filled++] = *mapped;
      at += taken;
    }
    flush(buffer, filled);
  }
  return at;
}

size_t Utf8Prefix(std::string_view bytes, std::u16string& wide) {
  wide.reserve(wide.size() + bytes.size());
  return DecodeUtf8InBlocks<false>(
      bytes, [](char16_t unit) { return std::optional<char16_t>(unit); },
      [&](const char16_t* units, size_t count) { wide.append(units, count); });
}

// Writes UTF-16 as UTF-8 up to the first unpaired surrogate, which iconv is left to refuse;
// returns the units taken.
size_t Utf8Written(std::u16string_view text, std::string& narrow) {
  constexpr size_t kMostBytesPerUnit = 3;  // a pair of units takes four
  size_t start = narrow.size();
  narrow.resize(start + text.size() * kMostBytesPerUnit);
  auto* out = reinterpret_cast<unsigned char*>(narrow.data() + start);
  size_t at = 0, written = 0;
  while (at < text.size()) {
    size_t ascii =
        NarrowAscii(text.data() + at, text.size() - at, reinterpret_cast<char*>(out + written));
    at += ascii;
    written += ascii;
    if (at == text.size()) break;
    char32_t unit = text[at];
    if (unit < kFirstThreeByteUnit) {
      out[written++] = static_cast<unsigned char>(0xC0 | unit >> 6);
    } else if (!IsSurrogate(unit)) {
      out[written++] = static_cast<unsigned char>(0xE0 | unit >> 12);
      out[written++] = static_cast<unsigned char>(0x80 | (unit >> 6 & 0x3F));
    } else if (unit < 0xDC00 && at + 1 < text.size() && text[at + 1] >= 0xDC00 &&
               text[at + 1] <= 0xDFFF) {
      char32_t character = 0x10000 + ((unit - 0xD800) << 10 | (text[at + 1] - 0xDC00));
      out[written++] = static_cast<unsigned char>(0xF0 | character >> 18);
      out[written++] = static_cast<unsigned char>(0x80 | (character >> 12 & 0x3F));
      out[written++] = static_cast<unsigned char>(0x80 | (character >> 6 & 0x3F));
      unit = character;
      ++at;
    } else {
      break;
    }
    out[written++] = static_cast<unsigned char>(0x80 | (unit & 0x3F));
    ++at;
  }
  narrow.resize(start + written);
  return at;
}

#ifdef MAILSLICE_PLATFORM_AVX2
bool HaveAvx2() {
  static const bool have = __builtin_cpu_supports("avx2");
  return have;
}

// Widens the bytes of `in` thirty-two at a time as ASCII, then those beyond ASCII among them
// from `wide`; returns how many it took (whole blocks only).
__attribute__((target("avx2"))) size_t WidenBlocksAvx2(const unsigned char* in, size_t size,
                                                       char16_t* out,
                                                       const std::array<char16_t, 256>& wide) {
  constexpr size_t kWideBlockBytes = 32;
  size_t at = 0;
  for (; size - at >= kWideBlockBytes; at += kWideBlockBytes) {
    __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + at));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + at),
                        _mm256_cvtepu8_epi16(_mm256_castsi256_si128(block)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + at + kWideBlockBytes / 2),
                        _mm256_cvtepu8_epi16(_mm256_extracti128_si256(block, 1)));
    for (auto high = static_cast<unsigned>(_mm256_movemask_epi8(block)); high != 0;
         high &= high - 1) {
      size_t place = at + static_cast<size_t>(std::countr_zero(high));
      out[place] = wide[in[place]];
    }
  }
  return at;
}
#endif

}  // namespace

// What iconv makes of each character of one single-byte code page, asked once per byte and
// once per wide character met.
class SingleBytePage {
 public:
  SingleBytePage(const std::string& name, const ExactConversions& exact)
      : name_(name), exact_(exact) {
    for (unsigned byte = 0; byte < 256; ++byte) {
      std::u16string unit = exact.toWide(name, std::string(1, static_cast<char>(byte)));
      single_[byte] = unit.size() == 1;
      wide_[byte] = single_[byte] ? unit[0] : 0;
    }
    for (char16_t ascii = 0; ascii < 0x80; ++ascii) {
      asciiBothWays_ = asciiBothWays_ && single_[ascii] && wide_[ascii] == ascii &&
                       (narrow_[ascii] = Ask(ascii)) == ascii;
    }
    eachByteAlone_ = asciiBothWays_;
    for (unsigned byte = 0x80; byte < 256; ++byte) {
      eachByteAlone_ = eachByteAlone_ && single_[byte] && wide_[byte] >= 0x80;
    }
  }

  // Whether every byte widens to one unit of its own, ASCII to itself and no other byte to
  // ASCII: a text then widens as its pieces do one by one.
  bool EachByteAlone() const { return eachByteAlone_; }

  // Widens `size` bytes of a page where each byte widens alone: sixteen at a time as ASCII,
  // then the bytes beyond ASCII among them from the table.
  void EachByteToWide(const unsigned char* in, size_t size, char16_t* out) const {
    size_t at = 0;
#ifdef MAILSLICE_PLATFORM_AVX2
    if (HaveAvx2()) at = WidenBlocksAvx2(in, size, out, wide_);
#endif
#ifdef __SSE2__
    const __m128i zero = _mm_setzero_si128();
    for (; size - at >= kBlockBytes; at += kBlockBytes) {
      __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + at));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at), _mm_unpacklo_epi8(block, zero));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + at + kBlockBytes / 2),
                       _mm_unpackhi_epi8(block, zero));
      for (auto high = static_cast<unsigned>(_mm_movemask_epi8(block)); high != 0;
           high &= high - 1) {
        size_t place = at + static_cast<size_t>(std::countr_zero(high));
        out[place] = wide_[in[place]];
      }
    }
#endif
    for (; at < size; ++at) out[at] = wide_[in[at]];
  }

  const std::string& Name() const { return name_; }

  size_t ToWide(std::string_view bytes, std::u16string& wide) const {
    const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
    if (eachByteAlone_ && bytes.size() <= kPieceUnits) {
      size_t start = wide.size();
      wide.resize(start + bytes.size());
      EachByteToWide(in, bytes.size(), wide.data() + start);
      return bytes.size();
    }
    if (eachByteAlone_) {
      // A piece at a time through a small buffer: growing the string by the whole text would
      // clear its room before it is written.
      wide.reserve(wide.size() + bytes.size());
      char16_t piece[kPieceUnits];
      for (size_t at = 0; at < bytes.size(); at += kPieceUnits) {
        size_t count = std::min(kPieceUnits, bytes.size() - at);
        EachByteToWide(in + at, count, piece);
        wide.append(piece, count);
      }
      return bytes.size();
    }
    size_t start = wide.size();
    wide.resize(start + bytes.size());
    char16_t* out = wide.data() + start;
    size_t at = 0;
    while (at < bytes.size()) {
      if (asciiBothWays_) at += WidenAscii(in + at, bytes.size() - at, out + at);
      if (at == bytes.size() || !single_[in[at]]) break;
      out[at] = wide_[in[at]];
      ++at;
    }
    wide.resize(start + at);
    return at;
  }

  size_t ToNarrow(std::u16string_view text, std::string& narrow, bool untilFailure) {
    size_t start = narrow.size();
    narrow.resize(start + text.size());
    char* out = narrow.data() + start;
    size_t at = 0;
    for (; at < text.size(); ++at) {
      if (asciiBothWays_) at += NarrowAscii(text.data() + at, text.size() - at, out + at);
      if (at == text.size()) break;
      std::optional<char> byte = Narrowed(text[at], untilFailure);
      if (!byte) break;
      out[at] = *byte;
    }
    narrow.resize(start + at);
    return at;
  }

  // The byte `unit` narrows to, as ToNarrow narrows it; nothing where ToNarrow stops.
  std::optional<char> Narrowed(char16_t unit, bool untilFailure) {
    if (IsSurrogate(unit)) return std::nullopt;
    uint16_t byte = narrow_[unit];
    if (byte == kNotAsked) byte = narrow_[unit] = Ask(unit);
    if (byte == kNotSingleByte || (untilFailure && (byte & kRefused) != 0)) return std::nullopt;
    return static_cast<char>(byte & kByteMask);
  }

  // Rewrites `units` in place as they read once narrowed and widened back, up to the first
  // unit it is unsure of or, setting `cut`, the first that narrows to NUL; returns how many it
  // rewrote. Units already met go eight at a time through a table of what they show as.
  size_t RoundTrip(char16_t* units, size_t size, bool untilFailure, bool& cut) {
    std::vector<char16_t>& shown = shown_[untilFailure ? 1 : 0];
    size_t at = 0;
    while (at < size) {
      if (size - at >= kUnitsPerBlock) {
        // ASCII stays as it is; the other units of the block are looked up, and the first not
        // in the table yet is left to the careful path below.
        unsigned other = asciiBothWays_ ? OtherThanAsciiBits(units + at) : 0xFFFFu;
        size_t unknown = kUnitsPerBlock;
        for (; other != 0; other &= other - 1, other &= other - 1) {
          size_t k = static_cast<size_t>(std::countr_zero(other)) / 2;
          char16_t shownAs = shown[units[at + k]];
          if (shownAs == kLookCloser) {
            unknown = k;
            break;
          }
          units[at + k] = shownAs;
        }
        at += unknown;
        if (unknown == kUnitsPerBlock) continue;
      }
      std::optional<char16_t> unit = ShownAs(units[at], untilFailure, cut);
      if (!unit) break;
      units[at++] = *unit;
    }
    return at;
  }

  std::optional<char16_t> ShownAs(char16_t unit, bool untilFailure) {
    bool cut = false;  // a unit that narrows to NUL is left to the careful path
    return ShownAs(unit, untilFailure, cut);
  }

  bool AsciiBothWays() const { return asciiBothWays_; }

  // The byte `shown` narrows to, when that byte reads back as `shown` itself.
  std::optional<char> ReadBackByte(char16_t shown) {
    std::optional<char> byte = Narrowed(shown, true);
    if (!byte) return std::nullopt;
    auto index = static_cast<unsigned char>(*byte);
    return single_[index] && wide_[index] == shown ? byte : std::nullopt;
  }

  // The page byte of a unit of two UTF-8 bytes (below U+0800: the accented letters of Europe,
  // Greek, Cyrillic): the byte its shown unit narrows to and reads back from, as FastUtf8ToPage
  // asks. Kept in a small table, which stays in the processor's nearest cache where the large
  // ones do not.
  std::optional<char> PageByteOfTwoByteUnit(char16_t unit, bool untilFailure) {
    uint16_t& known = twoBytePage_[untilFailure ? 1 : 0][unit];
    if (known == kNotAsked) {
      std::optional<char16_t> shown = ShownAs(unit, untilFailure);
      std::optional<char> byte = shown ? ReadBackByte(*shown) : std::nullopt;
      known = byte ? static_cast<unsigned char>(*byte) : kNotSingleByte;
    }
    if (known == kNotSingleByte) return std::nullopt;
    return static_cast<char>(known);
  }

  // What `unit` shows as, noted in the table when it is a plain mapping; nothing when the
  // fast path cannot tell (or, setting `cut`, when it narrows to NUL).
  std::optional<char16_t> ShownAs(char16_t unit, bool untilFailure, bool& cut) {
    char16_t known = shown_[untilFailure ? 1 : 0][unit];
    if (known != kLookCloser) return known;
    if (IsSurrogate(unit)) return std::nullopt;
    uint16_t byte = narrow_[unit];
    if (byte == kNotAsked) byte = narrow_[unit] = Ask(unit);
    if (byte == kNotSingleByte || (untilFailure && (byte & kRefused) != 0)) return std::nullopt;
    byte &= kByteMask;
    if (byte == 0) {
      cut = true;
      return std::nullopt;
    }
    if (!single_[byte]) return std::nullopt;
    shown_[untilFailure ? 1 : 0][unit] = wide_[byte];  // kLookCloser itself stays a question
    return wide_[byte];
  }

  uint16_t Ask(char16_t unit) const {
    std::u16string_view alone(&unit, 1);
    std::string bytes = exact_.toNarrowUntilFailure(name_, alone);
    if (bytes.size() == 1) return static_cast<unsigned char>(bytes[0]);
    if (!bytes.empty()) return kNotSingleByte;
    bytes = exact_.toNarrow(name_, alone);
    return bytes.size() == 1 ? kRefused | static_cast<unsigned char>(bytes[0]) : kNotSingleByte;
  }

  std::string name_;
  ExactConversions exact_;
  std::array<char16_t, 256> wide_{};
  std::array<bool, 256> single_{};
  // ASCII reads and writes as itself, so runs of it are copied without the tables.
  bool asciiBothWays_ = true;
  bool eachByteAlone_ = false;
  std::vector<uint16_t> narrow_ = std::vector<uint16_t>(0x10000, kNotAsked);
  // What each unit shows as once narrowed and widened back (without and with stopping at the
  // first unit the page cannot hold), filled as units are met.
  std::vector<char16_t> shown_[2] = {std::vector<char16_t>(0x10000, kLookCloser),
                                     std::vector<char16_t>(0x10000, kLookCloser)};
  std::array<std::array<uint16_t, kFirstThreeByteUnit>, 2> twoBytePage_ = [] {
    std::array<std::array<uint16_t, kFirstThreeByteUnit>, 2> table;
    for (auto& half : table) half.fill(kNotAsked);
    return table;
  }();
};

namespace {

// Writes what the units of a UTF-8 text narrow to, as WideToMultiByteUntilFailure narrows them,
// while the text is decoded: ASCII stays itself. The narrowing stops at the first unit it
// cannot narrow (the bytes are given up there, while the decoding goes on). Each byte is
// written once its unit is read, and no further on than that unit's bytes.
struct PageWriter {
  SingleBytePage& page;
  char* out;
  size_t written = 0;
  bool whole = true;

  void Run(const unsigned char* ascii, size_t count) {
    if (whole) std::memmove(out + written, ascii, count);
    written += count;
  }

  void Unit(char16_t unit) {
    std::optional<char> byte = page.Narrowed(unit, true);
    whole = whole && byte.has_value();
    if (whole) out[written] = *byte;
    ++written;
  }
};

bool IsSingleBytePage(const std::string& name) {
  return std::find(std::begin(kSingleBytePages), std::end(kSingleBytePages), name) !=
         std::end(kSingleBytePages);
}

// The pages this thread used; there are only a handful of names.
SingleBytePage& PageFor(const std::string& name, const ExactConversions& exact) {
  thread_local std::vector<std::unique_ptr<SingleBytePage>> pages;
  for (auto& page : pages) {
    if (page->Name() == name) return *page;
  }
  pages.push_back(std::make_unique<SingleBytePage>(name, exact));
  return *pages.back();
}

}  // namespace

size_t FastPrefixToWide(const std::string& iconvName, std::string_view bytes, std::u16string& wide,
                        const ExactConversions& exact) {
  return FastWidener(iconvName, exact).Append(bytes, wide);
}

FastWidener::FastWidener(const std::string& iconvName, const ExactConversions& exact)
    : utf8_(iconvName == kUtf8Name),
      page_(IsSingleBytePage(iconvName) ? &PageFor(iconvName, exact) : nullptr) {}

bool FastWidener::WidensEachByteAlone() const { return page_ != nullptr && page_->EachByteAlone(); }

size_t FastWidener::Append(std::string_view bytes, std::u16string& wide) const {
  if (utf8_) return Utf8Prefix(bytes, wide);
  return page_ != nullptr ? page_->ToWide(bytes, wide) : 0;
}

size_t FastPrefixToNarrow(const std::string& iconvName, std::u16string_view text,
                          std::string& narrow, const ExactConversions& exact, bool untilFailure) {
  if (iconvName == kUtf8Name) return Utf8Written(text, narrow);
  if (!IsSingleBytePage(iconvName)) return 0;
  return PageFor(iconvName, exact).ToNarrow(text, narrow, untilFailure);
}

}  // namespace mailslice::platform

namespace mailslice::platform {

size_t FastUtf8ToPage(const std::string& iconvName, std::string_view utf8, bool untilFailure,
                      char* page, size_t* written, const ExactConversions& exact) {
  *written = 0;
  if (!IsSingleBytePage(iconvName)) return 0;
  SingleBytePage& table = PageFor(iconvName, exact);
  if (!table.AsciiBothWays()) return 0;
  const auto* in = reinterpret_cast<const unsigned char*>(utf8.data());
  size_t at = 0, out = 0;
  while (at < utf8.size()) {
    // ASCII is its own byte; the run is moved down over what was read (page may lie on utf8).
    size_t ascii = AsciiRunWithoutNul(in + at, utf8.size() - at);
    std::memmove(page + out, in + at, ascii);
    at += ascii;
    out += ascii;
    if (at == utf8.size() || in[at] < 0x80) break;  // the end, or a NUL
    char16_t unit = 0;
    size_t taken = DecodeMultiByte(in + at, utf8.size() - at, &unit);
    std::optional<char> byte;
    if (taken == kTwoBytes) {
      byte = table.PageByteOfTwoByteUnit(unit, untilFailure);
    } else if (taken != 0) {
      std::optional<char16_t> shown = table.ShownAs(unit, untilFailure);
      if (shown) byte = table.ReadBackByte(*shown);
    }
    if (!byte) break;
    page[out++] = *byte;
    at += taken;
  }
  *written = out;
  return at;
}

size_t FastRoundTrip(const std::string& iconvName, std::u16string& text, bool untilFailure,
                     bool& cut, const ExactConversions& exact) {
  cut = false;
  if (!IsSingleBytePage(iconvName)) return 0;
  return PageFor(iconvName, exact).RoundTrip(text.data(), text.size(), untilFailure, cut);
}

size_t FastUtf8ThroughPage(const std::string& iconvName, std::string_view utf8, bool untilFailure,
                           std::u16string& shown, const ExactConversions& exact, char* narrowed,
                           size_t* narrowedCount) {
  if (narrowedCount != nullptr) *narrowedCount = std::string::npos;
  if (!IsSingleBytePage(iconvName)) return 0;
  SingleBytePage& page = PageFor(iconvName, exact);
  if (!page.AsciiBothWays()) return 0;
  ReserveLarge(shown, shown.size() + utf8.size());
  auto map = [&](char16_t unit) { return page.ShownAs(unit, untilFailure); };
  if (narrowed == nullptr) {
    return DecodeUtf8InBlocks<true>(
        utf8, map, [&](const char16_t* units, size_t count) { shown.append(units, count); });
  }
  PageWriter writer{page, narrowed};
  size_t taken = DecodeUtf8InBlocks<true>(
      utf8, map, [&](const char16_t* units, size_t count) { shown.append(units, count); }, &writer);
  *narrowedCount = writer.whole ? writer.written : std::string::npos;
  return taken;
}

}  // namespace mailslice::platform
