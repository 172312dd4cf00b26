// The frame shared by the fuzz targets: an input read from the front (setting bytes first,
// then the text), the device chosen by those bytes, and a private scratch folder for the files
// the library reads and writes.
#ifndef MAILSLICE_FUZZ_FUZZ_INPUT_H
#define MAILSLICE_FUZZ_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace mailslice::fuzz {

class FuzzInput {
 public:
  FuzzInput(const uint8_t* data, size_t size) : text_(reinterpret_cast<const char*>(data), size) {}

  // The next byte; 0 once the input is used up.
  uint8_t TakeByte();
  // Up to `count` bytes, and the rest when fewer remain.
  std::string_view Take(size_t count);
  // What is left; the input is used up afterwards.
  std::string_view TakeRest();

 private:
  std::string_view text_;
};

// Sets the device for one run from two input bytes: the interface language (each code that
// changes behaviour, and English), the time zone, the device type (every size class) and the
// 12- or 24-hour setting (or a registry store that is missing).
void ChooseDevice(FuzzInput& input);

// A folder private to this fuzzing process, made at first use and removed at exit. The
// library's temporary folder and registry store live inside it.
const std::string& Scratch();

// Writes `content` to `path`, replacing what is there.
void WriteFile(const std::string& path, std::string_view content);
// Removes the file or folder at `path` with everything in it.
void RemovePath(const std::string& path);

// Ends the run with a report when a promise of the library does not hold, so that the fuzzer
// keeps the input that broke it.
void Require(bool condition, const char* promise);

}  // namespace mailslice::fuzz

#endif  // MAILSLICE_FUZZ_FUZZ_INPUT_H
