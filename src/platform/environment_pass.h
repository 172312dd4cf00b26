// One pass over the process environment for a fixed set of variables: each export call asks
// for several settings, and getenv searches the whole environment for every one of them.
#ifndef MAILSLICE_PLATFORM_ENVIRONMENT_PASS_H
#define MAILSLICE_PLATFORM_ENVIRONMENT_PASS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace mailslice::platform {

// The names a pass looks for (at most kMaxNames, of two to kLongestName bytes, none holding
// '='), with the bytes they begin with, so that the pass passes over most other entries after
// a look at their first two bytes, the names of each length, and for each name a place where
// it differs from every other name of its length (the first byte after "MAILSLICE_", say), so
// that an entry is compared in full with one name at most.
class EnvironmentNames {
 public:
  static constexpr size_t kMaxNames = 16;
  static constexpr size_t kLongestName = 32;

  constexpr explicit EnvironmentNames(std::span<const std::string_view> names) : names_(names) {
    for (size_t index = 0; index < names.size(); ++index) {
      std::string_view name = names[index];
      firstBytes_[static_cast<unsigned char>(name[0])] = true;
      secondBytes_[static_cast<unsigned char>(name[1])] = true;
      namesOfLength_[name.size()] |= static_cast<uint16_t>(1u << index);
    }
    for (size_t index = 0; index < names.size(); ++index) probes_[index] = Probe(index);
  }

  std::string_view operator[](size_t index) const { return names_[index]; }
  size_t size() const { return names_.size(); }
  size_t ProbeOf(size_t index) const { return probes_[index]; }
  // Whether a NUL-terminated entry may begin with one of the names; its second byte is read
  // only when its first is not the NUL.
  bool MayBegin(const char* entry) const {
    return firstBytes_[static_cast<unsigned char>(entry[0])] &&
           secondBytes_[static_cast<unsigned char>(entry[1])];
  }
  // A bit for each name (by its index) of `length` bytes.
  uint16_t NamesOfLength(size_t length) const {
    return length <= kLongestName ? namesOfLength_[length] : 0;
  }

 private:
  // The first place where name `index` differs from all other names of its length (0 when
  // there is none).
  constexpr size_t Probe(size_t index) const {
    std::string_view name = names_[index];
    for (size_t at = 0; at < name.size(); ++at) {
      bool alone = true;
      for (size_t other = 0; other < names_.size(); ++other) {
        std::string_view second = names_[other];
        if (other != index && second.size() == name.size() && second[at] == name[at]) {
          alone = false;
        }
      }
      if (alone) return at;
    }
    return 0;
  }

  std::span<const std::string_view> names_;
  std::array<bool, 256> firstBytes_{};
  std::array<bool, 256> secondBytes_{};
  std::array<uint16_t, kLongestName + 1> namesOfLength_{};
  std::array<size_t, kMaxNames> probes_{};
};

class EnvironmentPass {
 public:
  // Remembered entries of the environment the pass went through; a larger environment is
  // taken as changed whenever it is asked about.
  static constexpr size_t kRememberedEntries = 128;

  // Goes once through `environment` (an environ-style array, null-terminated; null for an
  // empty environment) and finds each of `names` as getenv finds it: the value of the first
  // entry that reads the name and then '='.
  void Read(const EnvironmentNames& names, char* const* environment);

  // The value getenv gave for name `index` at the pass (pointing into the environment's own
  // entry), or null when the name was missing.
  const char* Value(size_t index) const { return values_[index]; }
  // A bit for each name (by its index) that the pass found.
  uint32_t Found() const { return found_; }

  // Whether `environment` is still the one read: the same array holding the same entries.
  // setenv, putenv and unsetenv change an entry or the number of entries, and a caller that
  // puts in a new environ changes the array. (Writing into a string already handed to
  // putenv changes none of these; such a string's value is still read where it stands.)
  bool Unchanged(char* const* environment) const;

 private:
  bool done_ = false;
  bool tooLarge_ = false;
  char* const* environment_ = nullptr;
  size_t entryCount_ = 0;
  uint32_t found_ = 0;
  // Filled by Read; not cleared before, so a scope that never reads costs nothing.
  std::array<const char*, EnvironmentNames::kMaxNames> values_;
  std::array<char*, kRememberedEntries> entries_;
};

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_ENVIRONMENT_PASS_H
