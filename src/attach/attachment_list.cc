#include "attach/attachment_list.h"

namespace mailslice::attach {

CString AttachmentList::At(int index) const {
  if (index < 0 || index >= Count()) return CString();
  return names_.GetAt(index);
}

}  // namespace mailslice::attach
