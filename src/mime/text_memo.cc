#include "mime/text_memo.h"

#include <cstring>
#include <functional>

#include "codec/substring_search.h"

namespace mailslice::mime {
namespace {

constexpr size_t kNotMeasured = static_cast<size_t>(-1);

thread_local TextMemo* g_latest = nullptr;
// The loaded message is the library's, not a thread's.
TextMemo* g_standing = nullptr;

}  // namespace

TextMemo::TextMemo(const char* text) : TextMemo(text, kNotMeasured) {}

TextMemo::TextMemo(const char* text, size_t length)
    : text_(text), length_(length), outer_(g_latest), standing_(StandingFor(text, length)) {
  if (standing_ == nullptr && length != kNotMeasured) {
    if (Answers* kept = StandingPieceAnswers(text, length)) answers_ = kept;
  }
  g_latest = this;
}

TextMemo::TextMemo(const char* text, size_t length, Standing)
    : text_(text), length_(length), stands_(true) {
  g_standing = this;
}

TextMemo::~TextMemo() {
  if (stands_) {
    if (g_standing == this) g_standing = nullptr;
    return;
  }
  g_latest = outer_;
}

TextMemo* TextMemo::StandingFor(const char* text, size_t length) {
  if (g_standing == nullptr || g_standing->text_ != text) return nullptr;
  return length == kNotMeasured || length == g_standing->length_ ? g_standing : nullptr;
}

TextMemo::Answers* TextMemo::StandingPieceAnswers(const char* text, size_t length) {
  if (g_standing == nullptr || std::less<const char*>()(text, g_standing->text_)) return nullptr;
  auto offset = static_cast<size_t>(text - g_standing->text_);
  if (offset > g_standing->length_ || length > g_standing->length_ - offset) return nullptr;
  return &g_standing->pieces_[{offset, length}];
}

const char* TextMemo::FindWord(const char* text, const std::string& word) {
  TextMemo* memo = Holding(text);
  if (memo == nullptr) return std::strstr(text, word.c_str());
  // The answers of a piece of the standing memo's text are kept by the standing memo.
  TextMemo* keeper = memo->KeptByStanding() ? g_standing : memo;
  return Find(memo, text, keeper->words_.insert(word).first->c_str());
}

TextMemo::KeptWalk* TextMemo::KeptWalkOf(const char* text, std::string_view delimiter) {
  if (g_standing == nullptr || text == nullptr) return nullptr;
  size_t length = kNotMeasured;
  if (text == g_standing->text_) length = g_standing->length_;
  for (TextMemo* memo = g_latest; memo != nullptr && length == kNotMeasured; memo = memo->outer_) {
    if (memo->text_ == text && memo->KeptByStanding()) length = memo->length_;
  }
  if (length == kNotMeasured) return nullptr;
  auto offset = static_cast<size_t>(text - g_standing->text_);
  KeptWalk& kept = g_standing->walks_[{offset, length, std::string(delimiter)}];
  kept.base = g_standing->text_;
  return &kept;
}

TextMemo* TextMemo::Holding(const char* text) {
  for (TextMemo* memo = g_latest; memo != nullptr; memo = memo->outer_) {
    if (memo->text_ == text) return memo->standing_ != nullptr ? memo->standing_ : memo;
  }
  return g_standing != nullptr && g_standing->text_ == text ? g_standing : nullptr;
}

const std::pair<std::string_view, const char*>* TextMemo::Known(std::string_view key) const {
  for (const auto& entry : *answers_) {
    if (entry.first == key) return &entry;
  }
  return nullptr;
}

size_t TextMemo::Length(const char* text) {
  TextMemo* memo = Holding(text);
  if (memo == nullptr) return std::strlen(text);
  if (memo->length_ == kNotMeasured) memo->length_ = std::strlen(text);
  return memo->length_;
}

const char* TextMemo::Find(const char* text, const char* needle) {
  TextMemo* memo = Holding(text);
  return memo == nullptr ? std::strstr(text, needle) : Find(memo, text, needle);
}

const char* TextMemo::Find(TextMemo* memo, const char* text, const char* needle) {
  // Within the length the memo knows, which for the standing memo is the whole text.
  return memo->Answer(needle, [&]() -> const char* {
    if (memo->length_ == kNotMeasured) memo->length_ = std::strlen(text);
    size_t at = codec::FindSubstring(std::string_view(text, memo->length_), needle);
    return at == std::string_view::npos ? nullptr : text + at;
  });
}

}  // namespace mailslice::mime
