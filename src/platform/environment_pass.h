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

// The names a pass looks for (at most kMaxNames, none empty, none holding '='), with the first
// bytes they begin with, so that the pass passes over any other entry after one look at its first
// byte.
class EnvironmentNames {
 public:
  static constexpr size_t kMaxNames = 32;

  constexpr explicit EnvironmentNames(std::span<const std::string_view> names) : names_(names) {
    for (std::string_view name : names) {
      auto first = static_cast<unsigned char>(name.front());
      firstBytes_[first / 64] |= uint64_t{1} << (first % 64);
    }
  }

  size_t size() const { return names_.size(); }
  std::string_view operator[](size_t index) const { return names_[index]; }
  bool MayBegin(unsigned char first) const { return (firstBytes_[first / 64] >> (first % 64)) & 1; }

 private:
  std::span<const std::string_view> names_;
  std::array<uint64_t, 4> firstBytes_{};
};

class EnvironmentPass {
 public:
  // Remembered entries of the environment the pass went through; a larger environment is
  // taken as changed whenever it is asked about.
  static constexpr size_t kRememberedEntries = 64;

  // Goes once through `environment` (an environ-style array, null-terminated; null for an
  // empty environment) and finds each of `names` as getenv finds it: the value of the first
  // entry that reads the name and then '='.
  void Read(const EnvironmentNames& names, char* const* environment);

  bool done() const { return done_; }

  // The value getenv gave for name `index` at the pass (pointing into the environment's own
  // entry), or null when the name was missing.
  const char* Value(size_t index) const { return values_[index]; }

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
  // Filled by Read; not cleared before, so a scope that never reads costs nothing.
  std::array<const char*, EnvironmentNames::kMaxNames> values_;
  std::array<const char*, kRememberedEntries> entries_;
};

}  // namespace mailslice::platform

#endif  // MAILSLICE_PLATFORM_ENVIRONMENT_PASS_H
