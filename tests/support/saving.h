// Helpers for the tests that save attachments: a scratch folder that also holds the temporary
// folder, and the mail encodings the savers undo.
#ifndef MAILSLICE_TESTS_SUPPORT_SAVING_H
#define MAILSLICE_TESTS_SUPPORT_SAVING_H

#include <cstdio>
#include <filesystem>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include "support/test_support.h"

namespace mailslice::testing {

// A scratch folder whose "temp" folder stands for the device's "\temp\" while it lives.
class SaveScratch {
 public:
  SaveScratch() : temp_("MAILSLICE_TEMP", Path("temp")) {}
  std::string Path(const std::string& name) const { return (folder_.path() / name).string(); }
  bool Holds(const std::string& name) const { return std::filesystem::exists(Path(name)); }
  bool HoldsTempFile() const { return Holds("temp/AttachTempfile~.txt"); }
  const std::filesystem::path& folder() const { return folder_.path(); }

 private:
  ScratchFolder folder_;
  ScopedEnv temp_;
};

// Random bytes; with `noNul` 1 to 255 only, for bodies sent as they are in NUL-ended text.
inline std::string RandomBytes(size_t size, unsigned seed, bool noNul = false) {
  std::mt19937 generator(seed);
  std::uniform_int_distribution<int> byte(noNul ? 1 : 0, 255);
  std::string bytes(size, '\0');
  for (char& ch : bytes) ch = static_cast<char>(byte(generator));
  return bytes;
}

// Base64 in lines of 76 characters ending in CR LF, as mail programs send attachments.
inline std::string Base64Lines(std::string_view bytes) {
  std::string text = Base64(bytes), lines;
  for (size_t at = 0; at < text.size(); at += 76) lines += text.substr(at, 76) + "\r\n";
  return lines;
}

// Quoted-printable with upper-case escapes and soft line breaks before column 76.
inline std::string QuotedPrintableLines(std::string_view bytes) {
  std::string text;
  size_t column = 0;
  for (unsigned char byte : bytes) {
    char piece[4] = {static_cast<char>(byte), '\0'};
    if (byte < 33 || byte > 126 || byte == '=') std::snprintf(piece, sizeof piece, "=%02X", byte);
    std::string_view written(piece);
    if (column + written.size() > 75) text += "=\r\n", column = 0;
    text += written;
    column += written.size();
  }
  return text;
}

}  // namespace mailslice::testing

#endif  // MAILSLICE_TESTS_SUPPORT_SAVING_H
