#include "fuzz_input.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace mailslice::fuzz {
namespace {

// The interface languages whose code pages, charsets or date words differ, and English.
constexpr int kLanguages[] = {1, 7, 33, 48, 81, 82, 966};
constexpr size_t kLanguageCount = sizeof(kLanguages) / sizeof(kLanguages[0]);
// Zones west and east of Coordinated Universal Time, one with daylight saving, one with an
// offset that is not a whole hour.
constexpr const char* kZones[] = {"UTC0", "JST-9", "EST5EDT,M3.2.0,M11.1.0", "<+0545>-5:45"};
constexpr size_t kZoneCount = sizeof(kZones) / sizeof(kZones[0]);
// Types 0-2 and 12 load any size; 3, 4-7 and 8-11 are the three size classes.
constexpr int kDeviceTypes = 13;
constexpr char kRegistryHeader[] =
    "Windows Registry Editor Version 5.00\n\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Corvane\\TimeSet]\n";

// Each run writes and removes a few files: a folder in memory keeps that cheap.
std::string ScratchRoot() {
  std::error_code error;
  if (getenv("TMPDIR") == nullptr && std::filesystem::is_directory("/dev/shm", error) &&
      access("/dev/shm", W_OK) == 0) {
    return "/dev/shm";
  }
  return std::filesystem::temp_directory_path().string();
}

class ScratchFolder {
 public:
  ScratchFolder() {
    std::string pattern = ScratchRoot() + "/mailslice-fuzz-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
      std::perror("mailslice fuzz: mkdtemp");
      std::abort();
    }
    path_ = pattern;
    std::filesystem::create_directory(path_ + "/temp");
    setenv("MAILSLICE_TEMP", (path_ + "/temp").c_str(), 1);
    unsetenv("MAILSLICE_MESSAGES");
    unsetenv("MAILSLICE_CODEPAGE");
  }
  ~ScratchFolder() { RemovePath(path_); }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

// The stores that hold a setting are written once; the library only ever adds a missing key.
void ChooseClock(int choice) {
  static bool written[2] = {false, false};
  std::string store = Scratch() + "/registry-" + std::to_string(choice) + ".reg";
  if (choice < 2 && !written[choice]) {
    WriteFile(store, std::string(kRegistryHeader) + "\"TimeFormat\"=dword:0000000" +
                         (choice == 0 ? "1" : "0") + "\n");
    written[choice] = true;
  } else if (choice == 2) {
    RemovePath(store);  // the library creates the key and takes the 24-hour clock
  }
  setenv("MAILSLICE_REGISTRY", store.c_str(), 1);
}

}  // namespace

uint8_t FuzzInput::TakeByte() {
  if (text_.empty()) return 0;
  auto byte = static_cast<uint8_t>(text_.front());
  text_.remove_prefix(1);
  return byte;
}

std::string_view FuzzInput::Take(size_t count) {
  std::string_view taken = text_.substr(0, count);
  text_.remove_prefix(taken.size());
  return taken;
}

std::string_view FuzzInput::TakeRest() { return Take(text_.size()); }

void ChooseDevice(FuzzInput& input) {
  Scratch();
  uint8_t first = input.TakeByte();
  uint8_t second = input.TakeByte();
  setenv("MAILSLICE_LANGUAGE", std::to_string(kLanguages[first % kLanguageCount]).c_str(), 1);
  setenv("TZ", kZones[(first / kLanguageCount) % kZoneCount], 1);
  setenv("MAILSLICE_DEVICE_TYPE", std::to_string(second % kDeviceTypes).c_str(), 1);
  ChooseClock((second / kDeviceTypes) % 3);
}

const std::string& Scratch() {
  static ScratchFolder folder;
  return folder.path();
}

void WriteFile(const std::string& path, std::string_view content) {
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(content.data(), static_cast<std::streamsize>(content.size()));
}

void RemovePath(const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

void Require(bool condition, const char* promise) {
  if (condition) return;
  std::fprintf(stderr, "mailslice fuzz: broken promise: %s\n", promise);
  std::abort();
}

}  // namespace mailslice::fuzz
