// PartRecord: a fresh record has kind 0, empty strings and no texts; it owns its texts.
#include <mailslice/part_record.h>

#include <cstdlib>

PartRecord::PartRecord() : kind(0), partText(nullptr), secondText(nullptr) {}

PartRecord::~PartRecord() {
  std::free(partText);
  std::free(secondText);
}
