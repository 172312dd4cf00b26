#include "codec/base64_decoder.h"

#include <array>
#include <cstdlib>
#include <cstring>

#include "codec/base64_alphabet.h"
#include "codec/base64_vector.h"

namespace mailslice::codec {
namespace {

// Every byte outside the alphabet, "=", CR, LF and bytes with bit 7 set included, reads as this
// mark; it is negative as a signed byte, and that matters where it enters a group.
constexpr int8_t kOutsideAlphabet = static_cast<int8_t>(0x82);
// Room a block decoding needs beyond the block's own length: for the byte held back from the
// block before, the group it completes and the three bytes of a last group.
constexpr size_t kBlockSlack = 8;

constexpr std::array<int8_t, 256> MakeDecodingTable() {
  std::array<int8_t, 256> table{};
  table.fill(kOutsideAlphabet);
  for (int value = 0; value < 64; ++value) {
    table[static_cast<unsigned char>(kBase64Alphabet[value])] = static_cast<int8_t>(value);
  }
  return table;
}
constexpr std::array<int8_t, 256> kDecodingTable = MakeDecodingTable();

bool IsOutsideAlphabet(unsigned char byte) { return kDecodingTable[byte] == kOutsideAlphabet; }

uint32_t ShiftRightKeepingSign(uint32_t value, int bits) {
  return static_cast<uint32_t>(static_cast<int32_t>(value) >> bits);
}

// Where decoded bytes go: a buffer of fixed capacity. A group is stored three bytes at a time
// at `size`; bytes that would fall past the capacity are dropped.
struct Output {
  unsigned char* data;
  size_t capacity;
  size_t size = 0;
  size_t touched = 0;  // bytes written so far: the counted ones and those of a last group

  void StoreGroup(uint32_t group) {
    const unsigned char bytes[3] = {static_cast<unsigned char>(group >> 16),
                                    static_cast<unsigned char>(group >> 8),
                                    static_cast<unsigned char>(group)};
    size_t room = capacity - size;
    size_t stored = room < 3 ? room : 3;
    std::memcpy(data + size, bytes, stored);
    touched = size + stored;
  }
  // The rest of the buffer reads as zeros, as in a buffer that was cleared first; clearing
  // only what decoding left untouched saves a pass over the whole buffer.
  void ClearUntouched() {
    size_t written = touched > size ? touched : size;
    std::memset(data + written, 0, capacity - written);
  }
};

void Take(Base64Progress& progress, unsigned char byte, Output& out) {
  progress.accumulator |= static_cast<uint32_t>(static_cast<int32_t>(kDecodingTable[byte]));
  progress.accumulator <<= 6;
  if (++progress.taken % 4 != 0) return;
  progress.accumulator = ShiftRightKeepingSign(progress.accumulator, 6);
  out.StoreGroup(progress.accumulator);
  out.size += 3;
  progress.accumulator = 0;
}

// A line break is the expected noise in Base64 text; any other byte outside the alphabet (a
// space, a stray "=") is malformed input, but skipped all the same.
void SkipOne(Base64Progress& progress, unsigned char byte) {
  if (byte != '\r' && byte != '\n') progress.error = 1;
}

bool IsWholeGroup(const unsigned char* p) {
  return ((kDecodingTable[p[0]] | kDecodingTable[p[1]] | kDecodingTable[p[2]] |
           kDecodingTable[p[3]]) &
          0x80) == 0;
}

// The common path, at a group boundary: runs of clean characters a vector block at a time,
// whole groups of four alphabet characters, and CR LF line breaks followed by one, decoded
// without looking at each byte on its own. Reading them one by one would give exactly the same
// bytes.
size_t DecodeWholeGroups(const unsigned char* text, size_t pos, size_t end, Output& out) {
  size_t groupByGroupUntil = pos;  // clean characters the vector decoder has left to this loop
  while (out.capacity - out.size >= 3 && end - pos >= 4) {
    if (pos >= groupByGroupUntil) {
      CleanRun run =
          DecodeCleanBase64(text + pos, end - pos, out.data + out.size, out.capacity - out.size);
      pos += run.characters;
      out.size += run.bytes;
      groupByGroupUntil = pos + run.cleanAfter;
      if (out.capacity - out.size < 3 || end - pos < 4) break;
    }
    const unsigned char* p = text + pos;
    if (IsWholeGroup(p)) {
      out.StoreGroup(static_cast<uint32_t>(kDecodingTable[p[0]]) << 18 |
                     static_cast<uint32_t>(kDecodingTable[p[1]]) << 12 |
                     static_cast<uint32_t>(kDecodingTable[p[2]]) << 6 |
                     static_cast<uint32_t>(kDecodingTable[p[3]]));
      out.size += 3;
      pos += 4;
    } else if (end - pos >= 6 && p[0] == '\r' && p[1] == '\n' && IsWholeGroup(p + 2)) {
      pos += 2;
    } else {
      break;
    }
  }
  return pos;
}

// Reads text[pos, end). `last` when `end` ends the whole input; `beyond` is then the byte that
// the decoder reads one past it. The "=" test is made only at the top of a pass: an "=" met
// while skipping (at the start of a line, say) is skipped like any other stray byte. When the
// input runs out while skipping, the byte at hand is taken whatever it is, and spoils the
// group it enters: a body's closing line break leaves a stray byte after the counted ones, and
// callers go by the count.
void Run(Base64Progress& progress, const unsigned char* text, size_t pos, size_t end, bool last,
         unsigned char beyond, Output& out) {
  while (!progress.stopped) {
    if (!progress.skipping) {
      if (pos >= end) return;
      if (progress.taken % 4 == 0) pos = DecodeWholeGroups(text, pos, end, out);
      if (pos == end) return;
      unsigned char byte = text[pos];
      if (byte == '=') {
        progress.stopped = true;
        return;
      }
      ++pos;
      if (!IsOutsideAlphabet(byte)) {
        Take(progress, byte, out);
        continue;
      }
      SkipOne(progress, byte);
      progress.skipping = true;
    }
    if (last && end - pos <= 1) {
      progress.skipping = false;
      Take(progress, pos < end ? text[pos] : beyond, out);
      ++pos;
      continue;
    }
    if (pos == end) return;  // the run of stray bytes goes on in the next block
    unsigned char byte = text[pos++];
    if (IsOutsideAlphabet(byte)) {
      SkipOne(progress, byte);
      continue;
    }
    progress.skipping = false;
    Take(progress, byte, out);
  }
}

// An incomplete last group: its three bytes are all written, but only one fewer than its
// characters is counted. For canonical input that ends on its padding the uncounted ones are 0.
void StoreLastGroup(Base64Progress& progress, Output& out) {
  uint32_t characters = progress.taken % 4;
  if (characters == 0) return;
  uint32_t group = progress.accumulator << (6 * (4 - characters));
  out.StoreGroup(ShiftRightKeepingSign(group, 6));
  out.size += characters - 1;
}

// Memory ran out: the caller still gets something it may pass to free.
char* EmptyResult() { return static_cast<char*>(std::calloc(1, 1)); }

}  // namespace

char* DecodeBase64(const char* text, int* length, int* error) {
  if (text == nullptr) text = "";
  size_t count = std::strlen(text);
  if (length != nullptr) {
    // A negative count is an allocation that cannot be made, except -1: an empty one.
    if (*length < 0) {
      if (*length == -1) *length = 0;
      return EmptyResult();
    }
    count = strnlen(text, static_cast<size_t>(*length));
  }
  auto* buffer = static_cast<unsigned char*>(std::malloc(count + 1));
  if (buffer == nullptr) return EmptyResult();
  Output out{buffer, count + 1};
  Base64Progress progress;
  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  Run(progress, bytes, 0, count, true, bytes[count], out);
  StoreLastGroup(progress, out);
  out.ClearUntouched();
  if (length != nullptr) *length = static_cast<int>(out.size);
  if (error != nullptr) *error = progress.error;
  return reinterpret_cast<char*>(buffer);
}

void Base64BlockDecoder::Decode(std::string_view block, bool final, std::string& out) {
  if (finished_) return;
  size_t start = out.size();
  out.resize(start + block.size() + kBlockSlack);
  Output sink{reinterpret_cast<unsigned char*>(out.data()) + start, block.size() + kBlockSlack};
  if (heldBack_ && (final || !block.empty())) {
    unsigned char byte = *heldBack_;
    heldBack_.reset();
    Run(progress_, &byte, 0, 1, final && block.empty(), '\0', sink);
  }
  if (!block.empty() && !progress_.stopped) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(block.data());
    Run(progress_, bytes, 0, final ? block.size() : block.size() - 1, final, '\0', sink);
    if (!final) heldBack_ = bytes[block.size() - 1];
  }
  if (final || progress_.stopped) {
    StoreLastGroup(progress_, sink);
    finished_ = true;
  }
  out.resize(start + sink.size);
}

}  // namespace mailslice::codec
