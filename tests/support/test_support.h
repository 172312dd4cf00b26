// Helpers shared by the tests: scoped environment settings, scratch folders, and the texts
// the tests feed the library.
#ifndef MAILSLICE_TESTS_SUPPORT_TEST_SUPPORT_H
#define MAILSLICE_TESTS_SUPPORT_TEST_SUPPORT_H

#include <mailslice/cstring.h>

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace mailslice::testing {

// Sets (or, with nothing, unsets) an environment variable for the lifetime of the object.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, std::optional<std::string> value);
  ~ScopedEnv();
  ScopedEnv(const ScopedEnv&) = delete;
  ScopedEnv& operator=(const ScopedEnv&) = delete;

 private:
  std::string name_;
  std::optional<std::string> previous_;
};

// A fresh folder, removed with everything in it at the end of the test.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  // Writes `content` to the file `name` in the folder and returns its path.
  std::string Write(const std::string& name, std::string_view content) const;

 private:
  std::filesystem::path path_;
};

// The whole content of a file, or nothing when it cannot be read.
std::optional<std::string> Contents(const std::string& path);

// The bytes of a u"" literal as UTF-8, for readable expectations.
std::string Utf8(std::u16string_view text);

// The NUL-terminated text of a malloc'd buffer the library handed over (nothing for null),
// freed.
std::optional<std::string> Taken(char* text);

// `piece` written `times` times over, for the long texts of the hostile-input tests.
std::string Repeated(std::string_view piece, size_t times);
std::u16string Repeated(std::u16string_view piece, size_t times);

// `bytes` in plain Base64 on one line. The library's own encoder is not used: it encodes a
// last pair of bytes whose second is 0x80 or above as the device always has, not as mail
// programs do.
std::string Base64(std::string_view bytes);

}  // namespace mailslice::testing

// Lets GoogleTest show a CString as UTF-8 text.
void PrintTo(const CString& text, std::ostream* out);

#endif  // MAILSLICE_TESTS_SUPPORT_TEST_SUPPORT_H
