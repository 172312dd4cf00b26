// Finding runs of 7-bit bytes eight bytes at a time, for the converters' plain-text paths.
#ifndef MAILSLICE_CODEC_BYTE_RUNS_H
#define MAILSLICE_CODEC_BYTE_RUNS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace mailslice::codec {

// The number of bytes below 0x80 at the start of bytes[0, size).
inline size_t SevenBitRun(const unsigned char* bytes, size_t size) {
  constexpr uint64_t kHighBits = 0x8080808080808080ull;
  size_t run = 0;
  for (uint64_t word; run + sizeof word <= size; run += sizeof word) {
    std::memcpy(&word, bytes + run, sizeof word);
    if ((word & kHighBits) != 0) break;
  }
  while (run < size && bytes[run] < 0x80) ++run;
  return run;
}

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_BYTE_RUNS_H
