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
// The way of a character through a single-byte page, in one word: the unit it shows as in the
// low half, the byte that narrows to above it, then what ends or spoils the way.
constexpr unsigned kWayByteShift = 16;
constexpr uint32_t kWayStops = 1u << 24;        // not converted exactly: the decoding ends there
constexpr uint32_t kWayNotNarrowed = 1u << 25;  // the shown unit does not narrow to one byte
constexpr uint32_t kWayNotReadBack = 1u << 26;  // its byte does not read back as the shown unit
constexpr uint32_t kWayNotAsked = 1u << 27;
constexpr size_t kTwoBytes = 2;

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }
bool IsSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDFFF; }

// Widens a run of ASCII bytes; returns how many it took. With SSE2, sixteen bytes at a time:
// the block that holds the first other byte is widened whole, which the caller's room for
// `size` units allows, and only its ASCII start counts.
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
    if (high != 0) return done + static_cast<size_t>(std::countr_zero(high));
    done += kBlockBytes;
  }
#endif
  while (done < size && in[done] < 0x80) {
    out[done] = in[done];
    ++done;
  }
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

// Well-formed UTF-8 of the Basic Multilingual Plane, surrogates excepted; anything else
// (malformed bytes, a character beyond the plane) is left to iconv. The units are gathered in a
// small buffer handed to `flush`, so a large result is written once, not cleared first. Returns
// the bytes decoded.
template <typename Flush>
size_t DecodeUtf8InBlocks(std::string_view bytes, Flush flush) {
  constexpr size_t kBufferUnits = 4096;
  char16_t buffer[kBufferUnits];
  const auto* in = reinterpret_cast<const unsigned char*>(bytes.data());
  size_t size = bytes.size(), at = 0;
  bool stopped = false;
  while (at < size && !stopped) {
    size_t filled = 0;
    while (at < size && filled < kBufferUnits) {
      size_t ascii =
          WidenAscii(in + at, std::min(size - at, kBufferUnits - filled), buffer + filled);
      at += ascii;
      filled += ascii;
      if (at == size || filled == kBufferUnits) continue;
      size_t taken = DecodeMultiByte(in + at, size - at, buffer + filled);
      if (taken == 0) {
        stopped = true;
        break;
      }
      ++filled;
      at += taken;
    }
    flush(buffer, filled);
  }
  return at;
}

size_t Utf8Prefix(std::string_view bytes, std::u16string& wide) {
  wide.reserve(wide.size() + bytes.size());
  return DecodeUtf8InBlocks(
      bytes, [&](const char16_t* units, size_t count) { wide.append(units, count); });
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

constexpr size_t kWideBlockBytes = 32;

// Widens thirty-two bytes of `in` as ASCII; returns the bits of those beyond ASCII.
__attribute__((target("avx2"))) inline uint32_t WidenAsAsciiAvx2(const unsigned char* in,
                                                                 char16_t* out) {
  __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out),
                      _mm256_cvtepu8_epi16(_mm256_castsi256_si128(block)));
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + kWideBlockBytes / 2),
                      _mm256_cvtepu8_epi16(_mm256_extracti128_si256(block, 1)));
  return static_cast<uint32_t>(_mm256_movemask_epi8(block));
}

// Widens the bytes of `in` thirty-two at a time as ASCII, then those beyond ASCII among them
// from `wide`; returns how many it took (whole blocks only). Two blocks go in one step: the
// bytes beyond ASCII are rare in mail.
__attribute__((target("avx2"))) size_t WidenBlocksAvx2(const unsigned char* in, size_t size,
                                                       char16_t* out,
                                                       const std::array<char16_t, 256>& wide) {
  size_t at = 0;
  auto fix = [&](size_t from, uint64_t high) {
    for (; high != 0; high &= high - 1) {
      size_t place = from + static_cast<size_t>(std::countr_zero(high));
      out[place] = wide[in[place]];
    }
  };
  for (; size - at >= 2 * kWideBlockBytes; at += 2 * kWideBlockBytes) {
    uint64_t high =
        WidenAsAsciiAvx2(in + at, out + at) |
        uint64_t{WidenAsAsciiAvx2(in + at + kWideBlockBytes, out + at + kWideBlockBytes)}
            << kWideBlockBytes;
    if (high != 0) fix(at, high);
  }
  if (size - at >= kWideBlockBytes) {
    fix(at, WidenAsAsciiAvx2(in + at, out + at));
    at += kWideBlockBytes;
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
    if (size >= kWideBlockBytes && HaveAvx2()) at = WidenBlocksAvx2(in, size, out, wide_);
#endif
#ifdef __SSE2__
    for (; size - at >= kBlockBytes; at += kBlockBytes) WidenBlock(in + at, out + at);
    if (at == size) return;
    // The last bytes go as a block that ends with them, overlapping some already widened (a
    // short text as two such halves): header values and parameters are mostly short.
    if (size >= kBlockBytes) return WidenBlock(in + size - kBlockBytes, out + size - kBlockBytes);
    if (size >= kBlockBytes / 2) {
      WidenEight(in, out);
      return WidenEight(in + size - kBlockBytes / 2, out + size - kBlockBytes / 2);
    }
    if (size >= kBlockBytes / 4) {
      WidenFour(in, out);
      return WidenFour(in + size - kBlockBytes / 4, out + size - kBlockBytes / 4);
    }
#endif
    for (; at < size; ++at) out[at] = wide_[in[at]];
  }

#ifdef __SSE2__
  // Widens sixteen bytes (eight, four) as ASCII, then those beyond ASCII among them from the
  // table.
  void WidenBlock(const unsigned char* in, char16_t* out) const {
    const __m128i zero = _mm_setzero_si128();
    __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi8(block, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + kBlockBytes / 2),
                     _mm_unpackhi_epi8(block, zero));
    FixBeyondAscii(in, static_cast<unsigned>(_mm_movemask_epi8(block)), out);
  }

  void WidenEight(const unsigned char* in, char16_t* out) const {
    __m128i block = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(in));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out),
                     _mm_unpacklo_epi8(block, _mm_setzero_si128()));
    FixBeyondAscii(in, static_cast<unsigned>(_mm_movemask_epi8(block)) & 0xFFu, out);
  }

  void WidenFour(const unsigned char* in, char16_t* out) const {
    uint32_t four = 0;
    std::memcpy(&four, in, sizeof(four));
    __m128i block = _mm_cvtsi32_si128(static_cast<int>(four));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out),
                     _mm_unpacklo_epi8(block, _mm_setzero_si128()));
    FixBeyondAscii(in, static_cast<unsigned>(_mm_movemask_epi8(block)) & 0xFu, out);
  }
#endif

  // Puts the units of the bytes beyond ASCII (one bit each in `high`) from the table.
  void FixBeyondAscii(const unsigned char* in, unsigned high, char16_t* out) const {
    for (; high != 0; high &= high - 1) {
      auto place = static_cast<size_t>(std::countr_zero(high));
      out[place] = wide_[in[place]];
    }
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

  // What a UTF-8 character of unit `unit` becomes on its way through the page (see the kWay
  // constants): the unit it shows as, the byte that narrows to (stopping at the first unit the
  // page cannot hold), and whether that byte reads back as the shown unit.
  uint32_t WayOf(char16_t unit, bool untilFailure) {
    std::optional<char16_t> shown = ShownAs(unit, untilFailure);
    if (!shown) return kWayStops;
    uint32_t way = *shown;
    std::optional<char> byte = Narrowed(*shown, true);
    if (!byte) return way | kWayNotNarrowed | kWayNotReadBack;
    auto index = static_cast<unsigned char>(*byte);
    way |= static_cast<uint32_t>(index) << kWayByteShift;
    return single_[index] && wide_[index] == *shown ? way : way | kWayNotReadBack;
  }

  // The ways of the units of two UTF-8 bytes (below U+0800: the accented letters of Europe,
  // Greek, Cyrillic), filled as they are met (kWayNotAsked until then). Small enough to stay in
  // the processor's nearest cache, where the large tables do not.
  uint32_t* TwoByteWays(bool untilFailure) { return twoByteWays_[untilFailure ? 1 : 0].data(); }

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
  std::array<std::array<uint32_t, kFirstThreeByteUnit>, 2> twoByteWays_ = [] {
    std::array<std::array<uint32_t, kFirstThreeByteUnit>, 2> table;
    for (auto& half : table) half.fill(kWayNotAsked);
    return table;
  }();
};

namespace {

// UTF-8 decoded through a single-byte page, as FastUtf8ThroughPage and FastUtf8ToPage read it:
// up to the end, a NUL, a character it cannot convert exactly, or (with kStopUnlessReadBack)
// one whose byte does not read back as its shown unit. The shown units (with kShown) and their
// bytes (with kBytes) are gathered in small buffers, ASCII sixteen bytes at a time and the
// letters of two bytes from the page's small table, and handed on a piece at a time.
template <bool kShown, bool kBytes, bool kStopUnlessReadBack>
class ThroughPageWalk {
 public:
  ThroughPageWalk(SingleBytePage& page, bool untilFailure)
      : page_(page), untilFailure_(untilFailure), ways_(page.TwoByteWays(untilFailure)) {}

  // Decodes `utf8`, appending the shown units to `shown` and writing the bytes at `page` (which
  // may lie on utf8 or before it: a piece is written only once the bytes behind it are read).
  // Returns the bytes taken; `units` is set to the units (and bytes) given.
  size_t Run(std::string_view utf8, std::u16string* shown, char* page, size_t& units) {
    const auto* in = reinterpret_cast<const unsigned char*>(utf8.data());
    size_t size = utf8.size(), at = 0;
    units = 0;
    bool stopped = false;
    while (at < size && !stopped) {
      size_t filled = 0;
      stopped = !FillPiece(in, size, at, filled);
      if constexpr (kShown) shown->append(shownPiece_, filled);
      if constexpr (kBytes) {
        if (AllNarrowed()) std::memmove(page + units, bytePiece_, filled);
      }
      units += filled;
    }
    return at;
  }

  // Whether every unit given narrowed to its byte.
  bool AllNarrowed() const { return (seen_ & kWayNotNarrowed) == 0; }

 private:
  static constexpr size_t kPiece = 4096;
  static constexpr uint32_t kStop = kWayStops | (kStopUnlessReadBack ? kWayNotReadBack : 0);

  // Decodes a piece into the buffers; false where the decoding ends before `size`. The piece
  // ends once kPiece bytes are read: no byte gives more than one unit, so the buffers hold it.
  bool FillPiece(const unsigned char* in, size_t size, size_t& at, size_t& filled) {
    size_t end = std::min(size, at + kPiece);
    // Kept in locals: the bytes written could otherwise alias them.
    const uint32_t* ways = ways_;
    uint32_t seen = 0;
    bool going = true;
    while (going && TakeAscii(in, end, at, filled)) {
      // Letters beyond ASCII often come several in a row (a word of Cyrillic or Greek).
      do {
        going = TakeCharacter(in, size, ways, at, filled, seen);
      } while (going && at < end && in[at] >= 0x80);
    }
    seen_ |= seen;
    return going;
  }

  // Takes the character other than ASCII at `at`; false at a NUL or where the decoding ends.
  [[gnu::always_inline]] bool TakeCharacter(const unsigned char* in, size_t size,
                                            const uint32_t* ways, size_t& at, size_t& filled,
                                            uint32_t& seen) {
    unsigned lead = in[at];
    // Two bytes: the overlong leads C0 and C1 give the units below U+0080, which stop.
    if ((lead & 0xE0u) == 0xC0u && at + 1 < size && IsContinuation(in[at + 1])) {
      uint32_t way = ways[(lead & 0x1Fu) << 6 | (in[at + 1] & 0x3Fu)];
      if ((way & (kStop | kWayNotAsked)) != 0) [[unlikely]] {
        way = AskTwoByte(in + at);
        if ((way & kStop) != 0) return false;
      }
      Put(way, filled, seen);
      at += kTwoBytes;
      return true;
    }
    char16_t unit = 0;
    size_t taken = DecodeMultiByte(in + at, size - at, &unit);
    if (taken == 0) return false;  // a NUL, or a character left to iconv
    uint32_t way = page_.WayOf(unit, untilFailure_);
    if ((way & kStop) != 0) return false;
    Put(way, filled, seen);
    at += taken;
    return true;
  }

  [[gnu::always_inline]] void Put(uint32_t way, size_t& filled, uint32_t& seen) {
    seen |= way;
    if constexpr (kShown) shownPiece_[filled] = static_cast<char16_t>(way);
    if constexpr (kBytes) bytePiece_[filled] = static_cast<char>(way >> kWayByteShift);
    ++filled;
  }

  // Takes the run of ASCII other than NUL at `at`, up to `end`; whether a NUL or a byte beyond
  // ASCII follows it before `end`.
  [[gnu::always_inline]] bool TakeAscii(const unsigned char* in, size_t end, size_t& at,
                                        size_t& filled) {
#ifdef __SSE2__
    const __m128i zero = _mm_setzero_si128();
    while (at + kBlockBytes <= end) {
      __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + at));
      if constexpr (kShown) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(shownPiece_ + filled),
                         _mm_unpacklo_epi8(block, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(shownPiece_ + filled + kBlockBytes / 2),
                         _mm_unpackhi_epi8(block, zero));
      }
      if constexpr (kBytes) {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytePiece_ + filled), block);
      }
      auto other = static_cast<unsigned>(_mm_movemask_epi8(block)) |
                   static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, zero)));
      if (other != 0) {
        auto ascii = static_cast<size_t>(std::countr_zero(other));
        at += ascii;
        filled += ascii;
        return true;
      }
      at += kBlockBytes;
      filled += kBlockBytes;
    }
#endif
    // The last bytes, fewer than a block.
    while (at < end && in[at] != 0 && in[at] < 0x80) {
      if constexpr (kShown) shownPiece_[filled] = in[at];
      if constexpr (kBytes) bytePiece_[filled] = static_cast<char>(in[at]);
      ++at;
      ++filled;
    }
    return at < end;
  }

  // The way of the two bytes at `in`, asked of the page the first time they are met.
  [[gnu::noinline]] uint32_t AskTwoByte(const unsigned char* in) {
    auto unit = static_cast<char16_t>((in[0] & 0x1Fu) << 6 | (in[1] & 0x3Fu));
    uint32_t& way = ways_[unit];
    if ((way & kWayNotAsked) != 0) way = unit < 0x80 ? kWayStops : page_.WayOf(unit, untilFailure_);
    return way;
  }

  SingleBytePage& page_;
  bool untilFailure_;
  uint32_t* ways_;
  uint32_t seen_ = 0;
  std::conditional_t<kShown, char16_t[kPiece], char16_t[1]> shownPiece_;
  std::conditional_t<kBytes, char[kPiece], char[1]> bytePiece_;
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
  ThroughPageWalk<false, true, true> walk(table, untilFailure);
  return walk.Run(utf8, nullptr, page, *written);
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
  size_t units = 0;
  if (narrowed == nullptr) {
    ThroughPageWalk<true, false, false> walk(page, untilFailure);
    return walk.Run(utf8, &shown, nullptr, units);
  }
  ThroughPageWalk<true, true, false> walk(page, untilFailure);
  size_t taken = walk.Run(utf8, &shown, narrowed, units);
  *narrowedCount = walk.AllNarrowed() ? units : std::string::npos;
  return taken;
}

}  // namespace mailslice::platform
