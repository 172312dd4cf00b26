// A trie over the tag table, so that classifying the words the first letters do not settle costs
// at most the length of the longest tag name whatever the page holds.
#include "html/tag_table.h"

#include <cstdint>
#include <vector>

namespace mailslice::html {
namespace {

// Tag names are upper-case letters, digits, "/", "!" and "-": all within '!' .. 'Z'.
constexpr char kFirstSymbol = '!';
constexpr char kLastSymbol = 'Z';
constexpr size_t kSymbols = kLastSymbol - kFirstSymbol + 1;

// Only a-z are folded, as the device's own comparison did; other bytes compare as they are.
constexpr char FoldLetter(char ch) { return ch >= 'a' && ch <= 'z' ? ch - 'a' + 'A' : ch; }

class TagTrie {
 public:
  TagTrie() : nodes_(1) {
    for (std::string_view tag : kTagTable) {
      if (tag.empty()) break;
      Add(tag);
    }
  }

  // True when a table entry is a prefix of the folded text.
  bool HasPrefixOf(const char* text) const {
    uint16_t node = 0;
    for (;; ++text) {
      char ch = FoldLetter(*text);
      if (ch < kFirstSymbol || ch > kLastSymbol) return false;
      node = nodes_[node].next[ch - kFirstSymbol];
      if (node == 0) return false;
      if (nodes_[node].complete) return true;
    }
  }

 private:
  struct Node {
    std::array<uint16_t, kSymbols> next{};  // 0: no such child (the root is never a child)
    bool complete = false;
  };

  void Add(std::string_view tag) {
    uint16_t node = 0;
    for (char ch : tag) {
      size_t symbol = ch - kFirstSymbol;
      if (nodes_[node].next[symbol] == 0) {
        nodes_.emplace_back();  // may move the nodes: index them afresh below
        nodes_[node].next[symbol] = static_cast<uint16_t>(nodes_.size() - 1);
      }
      node = nodes_[node].next[symbol];
    }
    nodes_[node].complete = true;
  }

  std::vector<Node> nodes_;
};

}  // namespace

Markup tag_table_detail::ClassifyByTable(const char* text) {
  static const TagTrie trie;
  if (*text == '\0') return Markup::kNone;
  if (text[0] == '!' && text[1] == '-' && text[2] == '-') return Markup::kComment;
  return trie.HasPrefixOf(text) ? Markup::kKnownTag : Markup::kNone;
}

bool MarkupFollows(const char* lessThan) {
  return Classify(SkipHtmlSpace(lessThan + 1)) != Markup::kNone;
}

}  // namespace mailslice::html
