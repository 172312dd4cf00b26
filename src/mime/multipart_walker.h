// The multipart walker: cuts the body of a multipart message into pieces at its delimiters,
// with one level of nesting (the parts of a "multipart/mixed" or "multipart/alternative" part
// join the same flat list) and a jump over an embedded message that reuses the outer boundary.
//
// Each outer piece starts with its delimiter line and ends just before the next delimiter
// (keeping the line end in front of it). The first piece of a nested multipart starts one
// character into the outer delimiter; the piece after the last nested one runs from the inner
// closing delimiter to the next outer delimiter.
#ifndef MAILSLICE_MIME_MULTIPART_WALKER_H
#define MAILSLICE_MIME_MULTIPART_WALKER_H

#include <mailslice/cstring.h>
#include <mailslice/part_record.h>

#include <string>

#include "platform/function_ref.h"

namespace mailslice::mime {

inline constexpr int kWalkDone = 0;
inline constexpr int kWalkNotMultipart = 7;  // no delimiter, or a part could not be copied
inline constexpr int kWalkNoDelimiterBuffers = 11;

// Characters in front of the first empty line (CR LF CR LF, else LF LF); 0 when there is none.
int GetHeaderLength(const char* text);

struct Piece {
  const char* begin;
  const char* end;               // exclusive
  const std::string* delimiter;  // the 8-bit delimiter the piece was cut at
};

// Hands each piece of `text` to `take`, in order; `take` returns false to stop the walk.
// Returns kWalkDone, kWalkNotMultipart when the text holds no delimiter or `take` stopped it,
// or kWalkNoDelimiterBuffers when the delimiters cannot be built.
int WalkMultipart(const char* text, const CString& boundary,
                  platform::FunctionRef<bool(const Piece&)> take);

// The number of pieces. Counting and cutting are the same walk, so the count always equals the
// number of records GetMultiPart stores. Returns kWalkDone (also for a text without any
// delimiter, which counts 0) or kWalkNoDelimiterBuffers.
int GetMultiPartNoInAttachFile(const char* text, const CString& boundary, int* count);

// Stores a malloc'd copy of each piece and its delimiter in records 0, 1, ...; the caller
// provides as many records as GetMultiPartNoInAttachFile counted, plus one. A text without a
// delimiter is copied whole into record 0 and gives kWalkNotMultipart.
int GetMultiPart(const char* text, const CString& boundary, PartRecord** records);

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_MULTIPART_WALKER_H
