// PartRecord: one MIME part of a multipart message, as the multipart walker cuts it and the
// attachment listing marks and names it.
#ifndef MAILSLICE_PART_RECORD_H
#define MAILSLICE_PART_RECORD_H

#include <mailslice/cstring.h>
#include <mailslice/visibility.h>

struct MAILSLICE_API PartRecord {
  PartRecord();  // kind 0, every string empty, both texts null
  PartRecord(const PartRecord&) = delete;
  PartRecord& operator=(const PartRecord&) = delete;
  virtual ~PartRecord();

  char kind;  // 0, or 'A' for an attachment
  CString contentType, charset, transferEncoding, disposition;
  CString delimiter;    // the delimiter line the part was cut at
  CString fileName;     // the attachment's decoded file name
  char* partText;       // malloc'd copy of the part (header and body), owned by the record
  char* secondText;     // malloc'd, owned by the record
  CString contentId;    // the part's Content-ID, when it has one
  CString description;  // the part's Content-Description, when it has one
  CString altFileName;  // the file name as written in the message, before decoding
};

#endif  // MAILSLICE_PART_RECORD_H
