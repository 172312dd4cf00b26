#include "platform/environment_pass.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace mailslice::platform {
namespace {

// Whether `size` bytes at `a` and `b` (both readable) are the same, eight at a time.
bool SameBytes(const char* a, const char* b, size_t size) {
  constexpr size_t kWord = sizeof(uint64_t);
  if (size < kWord) return std::memcmp(a, b, size) == 0;
  for (size_t at = 0;; at += kWord) {
    at = std::min(at, size - kWord);  // the last word may overlap the one before
    uint64_t x = 0;
    uint64_t y = 0;
    std::memcpy(&x, a + at, kWord);
    std::memcpy(&y, b + at, kWord);
    if (x != y) return false;
    if (at + kWord == size) return true;
  }
}

// The name of `names` that `entry` gives a value, or names.size() for none; `value` is set to
// where the value begins. The entry's name runs to its first '=' (no name holds one), so an
// entry gives the value of one name at most.
inline size_t NameOf(const EnvironmentNames& names, const char* entry, const char*& value) {
  const char* equals = strchrnul(entry, '=');
  if (*equals != '=') return names.size();
  auto length = static_cast<size_t>(equals - entry);
  for (unsigned left = names.NamesOfLength(length); left != 0; left &= left - 1) {
    auto index = static_cast<size_t>(std::countr_zero(left));
    std::string_view name = names[index];
    size_t probe = names.ProbeOf(index);
    if (entry[probe] != name[probe] || !SameBytes(entry, name.data(), length)) continue;
    value = equals + 1;
    return index;
  }
  return names.size();
}

}  // namespace

void EnvironmentPass::Read(const EnvironmentNames& names, char* const* environment) {
  std::fill_n(values_.begin(), names.size(), nullptr);
  environment_ = environment;
  entryCount_ = 0;
  found_ = 0;
  tooLarge_ = false;
  done_ = true;
  if (environment == nullptr) return;
  char* const* entry = environment;
  for (; *entry != nullptr; ++entry) {
    if (!names.MayBegin(*entry)) continue;
    const char* value = nullptr;
    size_t index = NameOf(names, *entry, value);
    // getenv gives the first entry of a name, so a later one is passed over.
    if (index < names.size() && values_[index] == nullptr) {
      values_[index] = value;
      found_ |= uint32_t{1} << index;
    }
  }
  entryCount_ = static_cast<size_t>(entry - environment);
  tooLarge_ = entryCount_ > kRememberedEntries;
  if (!tooLarge_) std::memcpy(entries_.data(), environment, entryCount_ * sizeof(char*));
}

bool EnvironmentPass::Unchanged(char* const* environment) const {
  if (!done_ || tooLarge_ || environment != environment_) return false;
  if (environment == nullptr) return true;
  // No remembered entry is null, so an entry is read only when the one before it matched: the
  // comparison stops at the end of a shorter array. Four at a time, as a compare and a branch
  // each, for the comparison is made at every call.
  const char* const* remembered = entries_.data();
  size_t at = 0;
  for (; at + 4 <= entryCount_; at += 4) {
    if (environment[at] != remembered[at] || environment[at + 1] != remembered[at + 1] ||
        environment[at + 2] != remembered[at + 2] || environment[at + 3] != remembered[at + 3]) {
      return false;
    }
  }
  for (; at < entryCount_; ++at) {
    if (environment[at] != remembered[at]) return false;
  }
  return environment[entryCount_] == nullptr;
}

}  // namespace mailslice::platform
