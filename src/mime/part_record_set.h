// The part records of one walk over a multipart text: count + 1 fresh records (the extra one
// keeps loops that run at least once inside the array), freed with their texts at the end.
#ifndef MAILSLICE_MIME_PART_RECORD_SET_H
#define MAILSLICE_MIME_PART_RECORD_SET_H

#include <mailslice/part_record.h>

#include <memory>
#include <vector>

namespace mailslice::mime {

class PartRecordSet {
 public:
  explicit PartRecordSet(int count) : count_(count) {
    for (int i = 0; i <= count; ++i) {
      owned_.push_back(std::make_unique<PartRecord>());
      pointers_.push_back(owned_.back().get());
    }
  }
  int count() const { return count_; }  // the pieces; one more record exists
  PartRecord** data() { return pointers_.data(); }
  PartRecord& operator[](int index) { return *owned_[static_cast<size_t>(index)]; }

 private:
  int count_;
  std::vector<std::unique_ptr<PartRecord>> owned_;
  std::vector<PartRecord*> pointers_;
};

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_PART_RECORD_SET_H
