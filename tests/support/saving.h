// Helpers for the tests that save attachments: a scratch folder that also holds the temporary
// folder, reading files back, and the mail encodings the savers undo.
#ifndef MAILSLICE_TESTS_SUPPORT_SAVING_H
#define MAILSLICE_TESTS_SUPPORT_SAVING_H

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <random>
#include <sstream>
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

inline std::optional<std::string> Contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

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
  static constexpr char kAlphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    unsigned value = 0;
    for (size_t k = 0; k < 3; ++k) {
      value = value << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0);
    }
    for (size_t k = 0; k < 4; ++k) {
      text += k <= bytes.size() - i ? kAlphabet[value >> (18 - 6 * k) & 63] : '=';
      if ((i / 3 * 4 + k + 1) % 76 == 0) text += "\r\n";
    }
  }
  if (!text.empty() && text.back() != '\n') text += "\r\n";
  return text;
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
