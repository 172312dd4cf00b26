// The library-wide list of attachment file names, in the order of the message's parts.
#ifndef MAILSLICE_ATTACH_ATTACHMENT_LIST_H
#define MAILSLICE_ATTACH_ATTACHMENT_LIST_H

#include <mailslice/cstring.h>

namespace mailslice::attach {

class AttachmentList {
 public:
  int Count() const { return names_.GetSize(); }
  // The name at `index`; empty for an index outside 0 .. Count() - 1.
  CString At(int index) const;
  void Add(const CString& name) { names_.Add(name); }
  void RemoveAll() { names_.RemoveAll(); }

 private:
  CStringArray names_;
};

}  // namespace mailslice::attach

#endif  // MAILSLICE_ATTACH_ATTACHMENT_LIST_H
