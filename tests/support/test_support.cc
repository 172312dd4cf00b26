#include "support/test_support.h"

#include <mailslice/cstring.h>
#include <stdlib.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace mailslice::testing {

ScopedEnv::ScopedEnv(const char* name, std::optional<std::string> value) : name_(name) {
  if (const char* old = getenv(name)) previous_ = old;
  if (value) {
    setenv(name, value->c_str(), 1);
  } else {
    unsetenv(name);
  }
}

ScopedEnv::~ScopedEnv() {
  if (previous_) {
    setenv(name_.c_str(), previous_->c_str(), 1);
  } else {
    unsetenv(name_.c_str());
  }
}

ScratchFolder::ScratchFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "mailslice-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  std::filesystem::permissions(path_, std::filesystem::perms::owner_all,
                               std::filesystem::perm_options::add, ignored);
  std::filesystem::remove_all(path_, ignored);
}

std::string ScratchFolder::Write(const std::string& name, std::string_view content) const {
  std::filesystem::path file = path_ / name;
  std::filesystem::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary).write(content.data(), std::streamsize(content.size()));
  return file.string();
}

std::optional<std::string> Contents(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

std::string Utf8(std::u16string_view text) { return CString(std::u16string(text)).ToUtf8(); }

std::optional<std::string> Taken(char* text) {
  if (text == nullptr) return std::nullopt;
  std::string result(text);
  free(text);
  return result;
}

std::string Repeated(std::string_view piece, size_t times) {
  std::string text;
  for (text.reserve(piece.size() * times); times > 0; --times) text += piece;
  return text;
}

std::u16string Repeated(std::u16string_view piece, size_t times) {
  std::u16string text;
  for (text.reserve(piece.size() * times); times > 0; --times) text += piece;
  return text;
}

std::string Base64(std::string_view bytes) {
  static constexpr char kAlphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t at = 0; at < bytes.size(); at += 3) {
    size_t count = std::min<size_t>(3, bytes.size() - at);
    uint32_t group = 0;
    for (size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[at + k]) : 0u);
    }
    for (size_t k = 0; k < 4; ++k) text += k <= count ? kAlphabet[group >> (18 - 6 * k) & 63] : '=';
  }
  return text;
}

}  // namespace mailslice::testing

void PrintTo(const CString& text, std::ostream* out) { *out << '"' << text.ToUtf8() << '"'; }
