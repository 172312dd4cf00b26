#include "platform/environment_pass.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using mailslice::platform::EnvironmentNames;
using mailslice::platform::EnvironmentPass;

// Names that share beginnings with the names before them, less, as much and more, and names
// that begin other names.
constexpr std::array<std::string_view, 10> kWanted = {"MAILSLICE_TEMP",
                                                      "MAILSLICE_TEMPX",
                                                      "MAILSLICE_LANGUAGE",
                                                      "MAILSLICE_",
                                                      "MAILSLICE_TEM",
                                                      "HOME",
                                                      "HOMEDIR",
                                                      "HO",
                                                      "TMPDIR",
                                                      "XY"};
constexpr EnvironmentNames kNames(kWanted);

// An environ-style array over strings the test owns.
class Environment {
 public:
  explicit Environment(std::vector<std::string> entries) : entries_(std::move(entries)) {
    for (std::string& entry : entries_) pointers_.push_back(entry.data());
    pointers_.push_back(nullptr);
  }
  char** get() { return pointers_.data(); }
  std::vector<char*>& pointers() { return pointers_; }

  // What the C library's getenv answers in this environment.
  const char* Getenv(const char* name) {
    char** saved = environ;
    environ = get();
    const char* value = std::getenv(name);
    environ = saved;
    return value;
  }

 private:
  std::vector<std::string> entries_;
  std::vector<char*> pointers_;
};

// Entries that are, nearly are or repeat the wanted names: prefixes, longer names, other case,
// no '=', empty values, values holding '=', an empty name.
std::string RandomEntry(std::mt19937& random) {
  static const std::vector<std::string> kNamePieces = {"MAILSLICE_TEMP",
                                                       "MAILSLICE_TEM",
                                                       "MAILSLICE_TEMPX",
                                                       "mailslice_temp",
                                                       "MAILSLICE_LANGUAGE",
                                                       "MAILSLICE_",
                                                       "HOME",
                                                       "HOMEDIR",
                                                       "HOM",
                                                       "TMPDIR",
                                                       "TMP",
                                                       "X",
                                                       "XY",
                                                       "XYZ",
                                                       "PATH",
                                                       "",
                                                       "M",
                                                       "H"};
  static const std::vector<std::string> kValues = {"", "81", "a=b", "=", "/tmp/x", " "};
  std::string entry = kNamePieces[random() % kNamePieces.size()];
  if (random() % 8 != 0) entry += "=" + kValues[random() % kValues.size()];
  return entry;
}

TEST(EnvironmentPassTest, FindsWhatGetenvFindsInOnePass) {
  std::mt19937 random(20240611);
  for (int round = 0; round < 2000; ++round) {
    std::vector<std::string> entries;
    size_t count = random() % 12;
    for (size_t i = 0; i < count; ++i) entries.push_back(RandomEntry(random));
    Environment environment(entries);
    EnvironmentPass pass;
    pass.Read(kNames, environment.get());
    for (size_t index = 0; index < kWanted.size(); ++index) {
      std::string name(kWanted[index]);
      // The very pointer getenv gives: the first entry of the name wins.
      EXPECT_EQ(pass.Value(index), environment.Getenv(name.c_str()))
          << name << " in round " << round;
      EXPECT_EQ((pass.Found() >> index) & 1, pass.Value(index) != nullptr ? 1u : 0u) << name;
    }
  }
}

TEST(EnvironmentPassTest, AnEmptyOrMissingEnvironmentHasNothing) {
  EnvironmentPass pass;
  pass.Read(kNames, nullptr);
  EXPECT_EQ(pass.Value(0), nullptr);
  EXPECT_TRUE(pass.Unchanged(nullptr));
  Environment empty({});
  EXPECT_FALSE(pass.Unchanged(empty.get()));
  pass.Read(kNames, empty.get());
  EXPECT_EQ(pass.Value(2), nullptr);
  EXPECT_TRUE(pass.Unchanged(empty.get()));
}

TEST(EnvironmentPassTest, TellsEveryChangeOfTheEntries) {
  Environment environment({"HOME=/h", "PATH=/bin", "TMPDIR=/t"});
  EnvironmentPass pass;
  EXPECT_FALSE(pass.Unchanged(environment.get()));  // never read
  pass.Read(kNames, environment.get());
  EXPECT_TRUE(pass.Unchanged(environment.get()));
  std::vector<char*>& pointers = environment.pointers();

  char replaced[] = "HOME=/other";
  char* kept = pointers[0];
  pointers[0] = replaced;  // as setenv or putenv replace a value
  EXPECT_FALSE(pass.Unchanged(environment.get()));
  pointers[0] = kept;
  EXPECT_TRUE(pass.Unchanged(environment.get()));

  char added[] = "MAILSLICE_TEMP=/m";
  pointers.back() = added;  // as setenv adds a variable
  pointers.push_back(nullptr);
  EXPECT_FALSE(pass.Unchanged(pointers.data()));
  pointers.pop_back();
  pointers.back() = nullptr;

  pointers[2] = nullptr;  // as unsetenv takes the last one away
  EXPECT_FALSE(pass.Unchanged(pointers.data()));
  Environment copy({"HOME=/h", "PATH=/bin", "TMPDIR=/t"});  // same text, other entries
  EXPECT_FALSE(pass.Unchanged(copy.get()));
}

TEST(EnvironmentPassTest, ALargeEnvironmentIsAlwaysReadAgain) {
  std::vector<std::string> entries;
  for (size_t i = 0; i <= EnvironmentPass::kRememberedEntries; ++i) {
    entries.push_back("V" + std::to_string(i) + "=1");
  }
  entries.push_back("XY=last");
  Environment environment(entries);
  EnvironmentPass pass;
  pass.Read(kNames, environment.get());
  EXPECT_STREQ(pass.Value(9), "last");
  EXPECT_FALSE(pass.Unchanged(environment.get()));
}

}  // namespace
