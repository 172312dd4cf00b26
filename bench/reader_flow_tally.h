// What one run of the reader flow did, so two implementations can be checked to do the same
// work: attachments saved, their decoded bytes, and the length of the readable body.
#ifndef MAILSLICE_BENCH_READER_FLOW_TALLY_H
#define MAILSLICE_BENCH_READER_FLOW_TALLY_H

#include <cstddef>
#include <cstdint>

namespace mailslice::bench {

struct ReaderFlowTally {
  int messages = 0;
  int attachments = 0;       // saved
  int failedSaves = 0;       // listed but not saved
  uintmax_t savedBytes = 0;  // decoded bytes written for the saved attachments
  size_t bodyCharacters = 0;

  ReaderFlowTally& operator+=(const ReaderFlowTally& other) {
    messages += other.messages;
    attachments += other.attachments;
    failedSaves += other.failedSaves;
    savedBytes += other.savedBytes;
    bodyCharacters += other.bodyCharacters;
    return *this;
  }
};

}  // namespace mailslice::bench

#endif  // MAILSLICE_BENCH_READER_FLOW_TALLY_H
