// Trimmed fields of an entry of a part record array.
#ifndef MAILSLICE_MIME_RECORD_FIELDS_H
#define MAILSLICE_MIME_RECORD_FIELDS_H

#include <mailslice/cstring.h>
#include <mailslice/part_record.h>

namespace mailslice::mime {

// The field of record `index`, trimmed; empty when the array or the record is missing or the
// index is negative (the array's length is the caller's to respect).
CString TrimmedRecordField(PartRecord** records, int index, CString PartRecord::*field);

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_RECORD_FIELDS_H
