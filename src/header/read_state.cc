#include "header/read_state.h"

#include <cstdlib>
#include <cstring>

#include "platform/file_system.h"
#include "platform/time_zone.h"

namespace mailslice::header {
namespace {

constexpr int kFirstUnmarkedYear = 1981;
constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;

int64_t FloorSeconds(int64_t nanoseconds) {
  int64_t seconds = nanoseconds / kNanosecondsPerSecond;
  return nanoseconds % kNanosecondsPerSecond < 0 ? seconds - 1 : seconds;
}

}  // namespace

char* ReadMailFile(const std::string& path) {
  platform::ErrorCode error = platform::kErrorSuccess;
  auto file = platform::Files().OpenForReading(path, &error);
  if (!file) return nullptr;
  auto size = file->Size();
  if (!size || *size >= SIZE_MAX) return nullptr;
  auto* block = static_cast<char*>(std::malloc(static_cast<size_t>(*size) + 1));
  if (block == nullptr) return nullptr;
  size_t got = 0;
  if (file->Read(block, static_cast<size_t>(*size), &got) != platform::kErrorSuccess) {
    std::free(block);
    return nullptr;
  }
  block[got] = '\0';
  return block;
}

int IsMarkedAsReading(const std::string& path) {
  auto status = platform::Files().Status(path);
  if (!status) return 0;
  // A time the C library cannot put in local time counts as the year 0, so as marked.
  auto local = platform::LocalTimeOf(FloorSeconds(status->modificationTime));
  int year = local ? local->year : 0;
  return year < kFirstUnmarkedYear ? 1 : 0;
}

int HaveSameCreationTime(const std::string& first, const std::string& second) {
  auto a = platform::Files().Status(first);
  auto b = platform::Files().Status(second);
  if (!a || !b) return 0;
  return a->creationTime == b->creationTime ? 1 : 0;
}

}  // namespace mailslice::header
