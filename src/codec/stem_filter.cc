#include "codec/stem_filter.h"

#include "codec/avx2.h"

namespace mailslice::codec {
namespace {

using Candidate = StemFilter::Candidate;
constexpr size_t kPrefixBytes = StemFilter::kPrefixBytes;

#ifdef MAILSLICE_AVX2_PATHS
constexpr size_t kBlock = 32;
// Blocks looked at per step: mail is mostly bodies and Base64 lines without any stem, so a step
// mostly ends in one test for "nothing here".
constexpr size_t kBlocksPerStep = 2;

// The tables the vector filter uses, a copy of each in both lanes: the low halves of all three
// bytes and the high half of the second byte. The second byte is matched exactly; the first and
// third only by their low halves, which in mail text passes few more places than matching them
// exactly and costs a third of it.
struct HalfTables {
  __m256i byLow[kPrefixBytes];
  __m256i byHigh;
};

// For each of the 32 places at `block`, the stems the filter lets through there. The low halves
// need no mask: a byte of 0x80 or more looks up zero, and no stem holds such a byte.
__attribute__((target("avx2"))) inline __m256i StemsAt(const char* block,
                                                       const HalfTables& halves) {
  const __m256i halfMask = _mm256_set1_epi8(0x0F);
  __m256i stems = _mm256_set1_epi8(-1);
  for (size_t k = 0; k < kPrefixBytes; ++k) {
    __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(block + k));
    stems = _mm256_and_si256(stems, _mm256_shuffle_epi8(halves.byLow[k], bytes));
    if (k == 1) {
      __m256i high = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), halfMask);
      stems = _mm256_and_si256(stems, _mm256_shuffle_epi8(halves.byHigh, high));
    }
  }
  return stems;
}

// The places of a block the filter let through, looked at one by one with the tables of the
// first and third bytes; those that keep a stem are added at out[count]. The block's loads
// reached the third byte of its last place.
__attribute__((target("avx2"))) inline size_t Keep(__m256i stems, std::string_view text, size_t at,
                                                   const StemFilter::Tables& tables, Candidate* out,
                                                   size_t count) {
  auto places = ~static_cast<unsigned>(
      _mm256_movemask_epi8(_mm256_cmpeq_epi8(stems, _mm256_setzero_si256())));
  if (places == 0) return count;
  alignas(kBlock) uint8_t bits[kBlock];
  _mm256_store_si256(reinterpret_cast<__m256i*>(bits), stems);
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  for (; places != 0; places &= places - 1) {
    size_t place = at + static_cast<size_t>(__builtin_ctz(places));
    unsigned bitsHere =
        bits[place - at] & tables.byByte[0][bytes[place]] & tables.byByte[2][bytes[place + 2]];
    if (bitsHere != 0) out[count++] = {place, bitsHere};
  }
  return count;
}

// Sixty-four places a step, in blocks of thirty-two: the bytes of each place are looked up by
// their halves in the tables of their places, and the places where some stem's bit survives are
// looked at one by one. Stops before a step whose candidates might not fit in `room`, or before
// the last places, whose loads would read past the text.
__attribute__((target("avx2"))) size_t CandidatesAvx2(std::string_view text, size_t& from,
                                                      const StemFilter::Tables& tables,
                                                      Candidate* out, size_t room) {
  HalfTables halves;
  for (size_t k = 0; k < kPrefixBytes; ++k) {
    halves.byLow[k] = _mm256_broadcastsi128_si256(
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(tables.byLowHalf[k].data())));
  }
  halves.byHigh = _mm256_broadcastsi128_si256(
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(tables.byHighHalf[1].data())));
  constexpr size_t kStep = kBlock * kBlocksPerStep;
  size_t at = from, count = 0;
  if (text.size() >= kStep + kPrefixBytes - 1) {
    // The last place a step may start at: its loads end at the text's end.
    const size_t lastStep = text.size() - (kStep + kPrefixBytes - 1);
    while (at <= lastStep && count + kStep <= room) {
      __m256i stems[kBlocksPerStep];
      for (;;) {
        __m256i any = _mm256_setzero_si256();
        for (size_t block = 0; block < kBlocksPerStep; ++block) {
          stems[block] = StemsAt(text.data() + at + block * kBlock, halves);
          any = _mm256_or_si256(any, stems[block]);
        }
        if (!_mm256_testz_si256(any, any)) break;
        at += kStep;
        if (at > lastStep) break;
      }
      if (at > lastStep) break;
      for (size_t block = 0; block < kBlocksPerStep; ++block) {
        count = Keep(stems[block], text, at + block * kBlock, tables, out, count);
      }
      at += kStep;
    }
  }
  for (; at + kBlock + kPrefixBytes - 1 <= text.size() && count + kBlock <= room; at += kBlock) {
    count = Keep(StemsAt(text.data() + at, halves), text, at, tables, out, count);
  }
  from = at;
  return count;
}
#endif

}  // namespace

StemFilter::StemFilter(std::initializer_list<std::string_view> stems) {
  size_t index = 0;
  for (std::string_view stem : stems) {
    stems_[index] = stem;
    for (size_t k = 0; k < kPrefixBytes; ++k) {
      auto byte = static_cast<unsigned char>(stem[k]);
      auto bit = static_cast<uint8_t>(1u << index);
      tables_.byByte[k][byte] |= bit;
      tables_.byLowHalf[k][byte & 0x0F] |= bit;
      tables_.byHighHalf[k][byte >> 4] |= bit;
    }
    ++index;
  }
}

size_t StemFilter::Candidates(std::string_view text, size_t& from, Candidate* out) const {
  size_t count = 0;
#ifdef MAILSLICE_AVX2_PATHS
  if (HaveAvx2()) {
    count = CandidatesAvx2(text, from, tables_, out, kBatch);
    if (from + kBlock + kPrefixBytes - 1 <= text.size()) return count;  // the batch is full
  }
#endif
  // The last places (or, without AVX2, all of them) a byte at a time.
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  size_t end = text.size() >= kPrefixBytes ? text.size() - kPrefixBytes + 1 : 0;
  size_t at = from;
  for (; at < end && count < kBatch; ++at) {
    unsigned stems = tables_.byByte[0][bytes[at]] & tables_.byByte[1][bytes[at + 1]] &
                     tables_.byByte[2][bytes[at + 2]];
    if (stems != 0) out[count++] = {at, stems};
  }
  from = at < end ? at : text.size();
  return count;
}

}  // namespace mailslice::codec
