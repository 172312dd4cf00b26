#include "mime/text_memo.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>

#include "codec/substring_search.h"

namespace mailslice::mime {
namespace {

constexpr size_t kNotMeasured = static_cast<size_t>(-1);

thread_local TextMemo* g_latest = nullptr;
// The loaded message is the library's, not a thread's.
TextMemo* g_standing = nullptr;

// Counts the memos made and gone, so that an answer kept about the memos is known to be stale.
std::atomic<uint64_t> g_generation{1};

// Some place of `word` in `text`, or null. A closing delimiter, the word asked about, stands
// near the end of a message: the last stretch is searched first.
const char* AnyPlace(std::string_view text, std::string_view word) {
  constexpr size_t kLastStretch = 512;
  if (text.size() - std::min(text.size(), word.size()) > kLastStretch) {
    size_t at = codec::FindSubstring(text, word, text.size() - word.size() - kLastStretch);
    if (at != std::string_view::npos) return text.data() + at;
  }
  size_t at = codec::FindSubstring(text, word);
  return at == std::string_view::npos ? nullptr : text.data() + at;
}

void NewGeneration() { g_generation.fetch_add(1, std::memory_order_relaxed); }

// Whether `a` lies before `b` in memory (texts of different buffers are never compared for
// their order, only for lying inside each other).
bool Before(const char* a, const char* b) { return std::less<const char*>()(a, b); }

}  // namespace

TextMemo::TextMemo(const char* text) : TextMemo(text, kNotMeasured) {}

TextMemo::TextMemo(const char* text, size_t length)
    : text_(text), length_(length), outer_(g_latest), standing_(StandingFor(text, length)) {
  if (standing_ == nullptr && length != kNotMeasured && g_standing != nullptr &&
      !Before(text, g_standing->text_)) {
    auto offset = static_cast<size_t>(text - g_standing->text_);
    piece_ = offset <= g_standing->length_ && length <= g_standing->length_ - offset;
  }
  g_latest = this;
  NewGeneration();
}

TextMemo::TextMemo(const char* text, size_t length, Standing)
    : text_(text), length_(length), stands_(true) {
  g_standing = this;
  NewGeneration();
}

TextMemo::~TextMemo() {
  NewGeneration();
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

TextMemo::Answers& TextMemo::AnswerStore() {
  if (!piece_ || g_standing == nullptr) return found_;
  return g_standing->pieces_[{static_cast<size_t>(text_ - g_standing->text_), length_}];
}

bool TextMemo::ContainsWord(const char* text, const std::string& word) {
  TextMemo* memo = Holding(text);
  if (memo == nullptr) return AnyPlace(std::string_view(text, std::strlen(text)), word) != nullptr;
  // The answers of a piece of the standing memo's text are kept by the standing memo.
  TextMemo* keeper = memo->KeptByStanding() ? g_standing : memo;
  const char* kept = keeper->words_.insert(word).first->c_str();
  // Within the length the memo knows, which for the standing memo is the whole text.
  return memo->Answer(kept, [&] {
    return AnyPlace(std::string_view(text, memo->End() - text), kept);
  }) != nullptr;
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
  auto& walks = g_standing->walks_;
  auto found = walks.find(std::tuple<size_t, size_t, std::string_view>(offset, length, delimiter));
  if (found == walks.end()) {
    found = walks.try_emplace(std::tuple(offset, length, std::string(delimiter))).first;
  }
  found->second.base = g_standing->text_;
  return &found->second;
}

TextMemo* TextMemo::Holding(const char* text) {
  for (TextMemo* memo = g_latest; memo != nullptr; memo = memo->outer_) {
    if (memo->text_ == text) return memo->standing_ != nullptr ? memo->standing_ : memo;
  }
  return g_standing != nullptr && g_standing->text_ == text ? g_standing : nullptr;
}

size_t TextMemo::Length(const char* text) {
  TextMemo* memo = Holding(text);
  if (memo == nullptr) return std::strlen(text);
  if (memo->length_ == kNotMeasured) memo->length_ = std::strlen(text);
  return memo->length_;
}

const char* TextMemo::End() {
  if (length_ == kNotMeasured) length_ = std::strlen(text_);
  return text_ + length_;
}

bool TextMemo::Holds(const char* from) { return WordsOf(from).base_ != nullptr; }

TextMemo::Reading TextMemo::ReadingOf(const char* from) {
  if (from == nullptr) return {};
  if (TextMemo* holder = Holding(from)) {
    const char* end = holder->End();
    return {end, KeeperOf(from, end)};
  }
  // A place inside a text reads up to the first NUL behind it: the end of the text or of a piece
  // ended in place, each of which is the end of a memo's text. The texts that hold the place
  // bound the search to its own buffer.
  auto each = [](auto visit) {
    for (TextMemo* memo = g_latest; memo != nullptr; memo = memo->outer_) {
      if (!memo->Aliases()) visit(memo);
    }
    if (g_standing != nullptr) visit(g_standing);
  };
  const char* end = nullptr;
  each([&](TextMemo* memo) {
    const char* memoEnd = memo->End();
    if (!Before(from, memo->text_) && !Before(memoEnd, from) &&
        (end == nullptr || Before(memoEnd, end))) {
      end = memoEnd;
    }
  });
  if (end == nullptr) return {};
  each([&](TextMemo* memo) {
    const char* memoEnd = memo->End();
    if (!Before(memoEnd, from) && Before(memoEnd, end)) end = memoEnd;
  });
  return {end, KeeperOf(from, end)};
}

TextMemo* TextMemo::KeeperOf(const char* from, const char* end) {
  auto holds = [&](TextMemo* memo) {
    return !Before(from, memo->text_) && !Before(memo->End(), end);
  };
  if (g_standing != nullptr && holds(g_standing)) return g_standing;
  TextMemo* keeper = nullptr;
  for (TextMemo* memo = g_latest; memo != nullptr; memo = memo->outer_) {
    if (!memo->Aliases() && holds(memo) &&
        (keeper == nullptr || Before(memo->text_, keeper->text_))) {
      keeper = memo;
    }
  }
  return keeper;
}

const PartWordIndex* TextMemo::Index() {
  if (!indexTried_) {
    indexTried_ = true;
    if (length_ <= PartWordIndex::kLongestText) {
      try {
        index_.emplace(std::string_view(text_, length_));
      } catch (const std::bad_alloc&) {
        // The words are then searched for.
      }
    }
  }
  return index_ ? &*index_ : nullptr;
}

const TextMemo::Words& TextMemo::WordsOf(const char* from) {
  thread_local struct {
    uint64_t generation = 0;  // never a generation in use
    Words words;
  } last;
  uint64_t generation = g_generation.load(std::memory_order_relaxed);
  if (last.generation == generation && last.words.from_ == from) return last.words;
  Words& words = last.words;
  words.from_ = from;
  Reading reading = ReadingOf(from);
  if (reading.keeper == nullptr) {
    // A text no memo holds may change before the next question: nothing is kept about it.
    last.generation = 0;
    words.end_ = from == nullptr ? from : from + std::strlen(from);
    words.base_ = nullptr;
    words.index_ = nullptr;
    return words;
  }
  last.generation = generation;
  words.end_ = reading.end;
  words.base_ = reading.keeper->text_;
  words.index_ = reading.keeper->Index();
  return words;
}

}  // namespace mailslice::mime
