// The reader flow through mailslice, as the mail application runs it when the user opens a
// message: load the file, read and decode From, To, Cc and Subject, parse the date and format
// it for display, extract the readable body, list the attachments and save every one of them.
// Shared by the Google Benchmark program (reader_flow_bench.cc) and by reader_flow.
#ifndef MAILSLICE_BENCH_MAILSLICE_READER_FLOW_H
#define MAILSLICE_BENCH_MAILSLICE_READER_FLOW_H

#include <mailslice/mailslice.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <string>
#include <vector>

#include "datetime/date_display.h"
#include "reader_flow_tally.h"

namespace mailslice::bench {

inline constexpr int kDateFieldCount = 8;
inline constexpr int kSaveSucceeded = 1;

inline void ReadHeadersThroughMailslice() {
  GetMailFrom(GetFrom());
  GetMailTo(GetTo());
  CStringArray copies;
  GetCCList(GetCc(), &copies);
  GetParsingSubject(GetSubject());
  CString fields[kDateFieldCount];
  GetParsingDate(GetDate(), fields);
  if (auto local = datetime::LocalDateOf(GetNewDate(fields))) {
    GetDateMsg(0, 0, *local);
    GetTimeMsg(0, 0, *local);
  }
}

// Where the sizes of the saved files are gathered when set (outside the timed runs).
inline std::vector<uintmax_t>* g_savedSizes = nullptr;

// Every listed attachment is saved to `savedPath` in turn and removed once measured, so each
// save makes a new file, as an application saving under a free name does. (Replacing a file
// instead would time the file system: ext4 flushes a file's data to disk when another is
// renamed over it or when it is truncated.)
inline void SaveAttachmentsThroughMailslice(const char* text, const CString& savedPath,
                                            ReaderFlowTally& tally) {
  CString names;
  int count = 0;
  GetAttachFile(text, names, &count);
  CString boundary;
  GetBoundary(text, boundary, nullptr);
  std::string saved = savedPath.ToUtf8();
  for (int index = 0; index < GetAttachArrayCount(); ++index) {
    CString name = GetAttachArrayFile(index);
    if (SaveAttachedFile(text, name, savedPath, boundary, name) != kSaveSucceeded) {
      ++tally.failedSaves;
      continue;
    }
    // Measured and removed with the same plain calls as on the GMime side (which has the
    // file open and asks it directly).
    struct stat status {};
    if (stat(saved.c_str(), &status) == 0) {
      auto size = static_cast<uintmax_t>(status.st_size);
      tally.savedBytes += size;
      if (g_savedSizes != nullptr) g_savedSizes->push_back(size);
    }
    unlink(saved.c_str());
    ++tally.attachments;
  }
}

inline ReaderFlowTally ReadMessageThroughMailslice(const CString& path, const CString& savedPath) {
  ReaderFlowTally tally;
  if (!MessageFileOpenAndMemoryAlloc(path)) return tally;
  tally.messages = 1;
  const char* text = GetMessageText();
  ReadHeadersThroughMailslice();
  int alternative = 0;
  tally.bodyCharacters =
      static_cast<size_t>(GetReadingBody(text, &alternative, u"", 0, 0, 0).GetLength());
  SaveAttachmentsThroughMailslice(text, savedPath, tally);
  MessageMemoryFree();
  return tally;
}

}  // namespace mailslice::bench

#endif  // MAILSLICE_BENCH_MAILSLICE_READER_FLOW_H
