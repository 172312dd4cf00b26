#include "mime/record_fields.h"

namespace mailslice::mime {

CString TrimmedRecordField(PartRecord** records, int index, CString PartRecord::*field) {
  if (records == nullptr || index < 0 || records[index] == nullptr) return CString();
  CString value = records[index]->*field;
  return value.TrimRight().TrimLeft();
}

}  // namespace mailslice::mime
