#include "platform/environment_pass.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace mailslice::platform {

void EnvironmentPass::Read(const EnvironmentNames& names, char* const* environment) {
  std::fill_n(values_.begin(), names.size(), nullptr);
  environment_ = environment;
  entryCount_ = 0;
  tooLarge_ = false;
  done_ = true;
  if (environment == nullptr) return;
  char* const* entry = environment;
  for (; *entry != nullptr; ++entry) {
    if (names.MayBegin(*entry)) Match(names, *entry);
  }
  entryCount_ = static_cast<size_t>(entry - environment);
  tooLarge_ = entryCount_ > kRememberedEntries;
  if (!tooLarge_) std::memcpy(entries_.data(), environment, entryCount_ * sizeof(char*));
}

// The entry's name runs to its first '=' (no name holds one), so an entry gives the value of
// at most one name; getenv gives the first entry of a name, so a later one is passed over.
void EnvironmentPass::Match(const EnvironmentNames& names, const char* entry) {
  const char* equals = strchrnul(entry, '=');
  if (*equals != '=') return;
  std::string_view name(entry, static_cast<size_t>(equals - entry));
  for (unsigned left = names.NamesOfLength(name.size()); left != 0; left &= left - 1) {
    auto index = static_cast<size_t>(std::countr_zero(left));
    if (names[index] != name) continue;
    if (values_[index] == nullptr) values_[index] = equals + 1;
    return;
  }
}

bool EnvironmentPass::Unchanged(char* const* environment) const {
  if (!done_ || tooLarge_ || environment != environment_) return false;
  if (environment == nullptr) return true;
  // No remembered entry is null, so the comparison stops at the end of a shorter array.
  for (size_t at = 0; at < entryCount_; ++at) {
    if (environment[at] != entries_[at]) return false;
  }
  return environment[entryCount_] == nullptr;
}

}  // namespace mailslice::platform
