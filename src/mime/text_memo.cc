#include "mime/text_memo.h"

#include <cstring>

namespace mailslice::mime {
namespace {

thread_local TextMemo* g_latest = nullptr;

}  // namespace

TextMemo::TextMemo(const char* text) : text_(text), outer_(g_latest) { g_latest = this; }

TextMemo::TextMemo(const char* text, size_t length)
    : text_(text), length_(length), outer_(g_latest) {
  g_latest = this;
}

TextMemo::~TextMemo() { g_latest = outer_; }

TextMemo* TextMemo::Holding(const char* text) {
  for (TextMemo* memo = g_latest; memo != nullptr; memo = memo->outer_) {
    if (memo->text_ == text) return memo;
  }
  return nullptr;
}

size_t TextMemo::Length(const char* text) {
  TextMemo* memo = Holding(text);
  if (memo == nullptr) return std::strlen(text);
  if (memo->length_ == static_cast<size_t>(-1)) memo->length_ = std::strlen(text);
  return memo->length_;
}

const char* TextMemo::Find(const char* text, const char* needle) {
  TextMemo* memo = Holding(text);
  if (memo == nullptr) return std::strstr(text, needle);
  std::string_view word(needle);
  for (const auto& [known, at] : memo->found_) {
    if (known == word) return at;
  }
  const char* at = std::strstr(text, needle);
  memo->found_.emplace_back(word, at);
  return at;
}

}  // namespace mailslice::mime
