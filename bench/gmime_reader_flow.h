// The same reader flow through GMime 3, the peer the mailslice figures are read against:
// parse the message, decode From, To, Cc and Subject, format the date, reduce the first text/html
// part that is not an attachment to text (else take the first such text/plain part) and write
// every attachment's decoded bytes to a file.
#ifndef MAILSLICE_BENCH_GMIME_READER_FLOW_H
#define MAILSLICE_BENCH_GMIME_READER_FLOW_H

#include <string>

#include "reader_flow_tally.h"

namespace mailslice::bench {

// Once, before the first message.
void StartGmime();
// "3.2.13"
std::string GmimeVersion();
ReaderFlowTally ReadMessageThroughGmime(const std::string& path, const std::string& savedPath);

}  // namespace mailslice::bench

#endif  // MAILSLICE_BENCH_GMIME_READER_FLOW_H
