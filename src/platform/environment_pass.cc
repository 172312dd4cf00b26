#include "platform/environment_pass.h"

namespace mailslice::platform {
namespace {

// The value of `entry` when it reads `name` and then '=', else null. The comparison stops at
// the entry's NUL, which no name holds.
const char* ValueOf(const char* entry, std::string_view name) {
  size_t at = 0;
  while (at < name.size() && entry[at] == name[at]) ++at;
  if (at < name.size() || entry[at] != '=') return nullptr;
  return entry + at + 1;
}

}  // namespace

void EnvironmentPass::Read(const EnvironmentNames& names, char* const* environment) {
  values_.fill(nullptr);
  environment_ = environment;
  entryCount_ = 0;
  tooLarge_ = false;
  done_ = true;
  if (environment == nullptr) return;
  for (char* const* entry = environment; *entry != nullptr; ++entry, ++entryCount_) {
    const char* text = *entry;
    if (entryCount_ < kRememberedEntries) {
      entries_[entryCount_] = text;
    } else {
      tooLarge_ = true;
    }
    if (!names.MayBegin(static_cast<unsigned char>(text[0]))) continue;
    for (size_t index = 0; index < names.size(); ++index) {
      // getenv gives the first entry of a name; a later one with the same name is never seen.
      if (values_[index] != nullptr || names[index].front() != text[0]) continue;
      if (const char* value = ValueOf(text, names[index])) {
        values_[index] = value;
        break;  // an entry holds one name, the names being different
      }
    }
  }
}

bool EnvironmentPass::Unchanged(char* const* environment) const {
  if (!done_ || tooLarge_ || environment != environment_) return false;
  if (environment == nullptr) return true;
  // No remembered entry is null, so the loop stops at a shorter array's end.
  for (size_t at = 0; at < entryCount_; ++at) {
    if (environment[at] != entries_[at]) return false;
  }
  return environment[entryCount_] == nullptr;
}

}  // namespace mailslice::platform
