// The decoder makes one pass over the text, in place, for the breaks, the references and the tag
// spans together, instead of one pass per step and per table row, with the same result as
// applying the rows one after another to the whole text:
// - A reference runs from "&" to the next ";" and holds neither, so references never overlap
//   and each is decoded by the first row (in table order) written the same way.
// - No replacement can form part of a reference except "&" (from "&#38;" and "&amp;"). That "&"
//   joins the text after it into a new reference, which only the rows after the one that made
//   it may still decode: "&#38;lt;" gives "<", but "&amp;lt;" stays "&lt;".
// - A numeric group is skipped when its trigger is absent, but every row of a group begins
//   with its trigger, so the skip never changes the result and needs no test here.
#include "html/entity_decoder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "html/entity_tables.h"
#include "platform/white_space.h"
#include "platform/wide_search.h"

namespace mailslice::html {
namespace {

constexpr std::u16string_view kXhtmlBreak = u"<br />";
constexpr std::u16string_view kLineBreak = u"\r\n";
constexpr char16_t kReferenceOpen = u'&';
constexpr char16_t kReferenceClose = u';';
constexpr std::u16string_view kMadeReferenceOpen = u"&";
constexpr char16_t kTagOpen = u'<';
constexpr char16_t kTagClose = u'>';
// The units where plain copying stops: a reference, a break or the ends of a tag span.
constexpr std::u16string_view kMarkedUnits = u"&<>";

// Every row of the tables, with its place in the order of application, found by its text. The
// texts are short ASCII words, each packed into one number (seven bits a character, after its
// length), so a look-up compares numbers.
class ReferenceIndex {
 public:
  struct Row {
    uint64_t key;
    std::u16string_view replacement;
    size_t order;
  };

  ReferenceIndex() {
    for (const EntityGroup& group : kNumericEntityGroups) {
      for (const EntityRow& row : group.rows) Add(row);
    }
    for (const EntityRow& row : kNamedEntities) Add(row);
    std::stable_sort(rows_.begin(), rows_.end(),
                     [](const Row& a, const Row& b) { return a.key < b.key; });
  }

  // The first row at or after `fromOrder` that is written `entity`, or null.
  const Row* Find(std::u16string_view entity, size_t fromOrder) const {
    std::optional<uint64_t> key = Key(entity);
    if (!key) return nullptr;
    auto it = std::lower_bound(rows_.begin(), rows_.end(), *key,
                               [](const Row& row, uint64_t k) { return row.key < k; });
    for (; it != rows_.end() && it->key == *key; ++it) {
      if (it->order >= fromOrder) return &*it;
    }
    return nullptr;
  }

  size_t longest() const { return longest_; }

 private:
  static constexpr size_t kMostCharacters = 8;
  static constexpr unsigned kBitsPerCharacter = 7;
  static constexpr char16_t kFirstOutsideAscii = 0x80;

  // Nothing for a text no row can have: longer than any packs, or not ASCII.
  static std::optional<uint64_t> Key(std::u16string_view entity) {
    if (entity.size() > kMostCharacters) return std::nullopt;
    uint64_t key = entity.size();
    for (char16_t unit : entity) {
      if (unit >= kFirstOutsideAscii) return std::nullopt;
      key = key << kBitsPerCharacter | unit;
    }
    return key;
  }

  void Add(const EntityRow& row) {
    // Every row is a short ASCII word, which the keys hold whole.
    rows_.push_back({*Key(row.entity), row.replacement, rows_.size()});
    longest_ = std::max(longest_, row.entity.size());
  }

  std::vector<Row> rows_;
  size_t longest_ = 0;
};

const ReferenceIndex& Index() {
  static const ReferenceIndex index;
  return index;
}

// The text between the "&" (or the character standing for it) at `open` and the next ";",
// when it is short enough to be in the tables; empty otherwise.
std::u16string_view ReferenceAfter(std::u16string_view text, size_t open, size_t longest) {
  std::u16string_view rest = text.substr(open + 1, longest + 1);
  size_t close = rest.find(kReferenceClose);
  return close == std::u16string_view::npos ? std::u16string_view() : rest.substr(0, close);
}

// The reference whose "&" is at `open`, decoded, following the chain of "&" that decoding may
// make: the unit it stands for (the "&" itself when none) and where the reading goes on.
struct DecodedReference {
  std::u16string_view text;
  size_t next;
};

DecodedReference DecodeReference(std::u16string_view text, size_t open) {
  const ReferenceIndex& index = Index();
  size_t fromOrder = 0;
  while (true) {
    std::u16string_view entity = ReferenceAfter(text, open, index.longest());
    const ReferenceIndex::Row* row = entity.empty() ? nullptr : index.Find(entity, fromOrder);
    if (!row) break;
    size_t close = open + 1 + entity.size();
    if (row->replacement != kMadeReferenceOpen) return {row->replacement, close + 1};
    // The ";" now stands where the new "&" is.
    open = close;
    fromOrder = row->order + 1;
  }
  return {kMadeReferenceOpen, open + 1};
}

// Writes the decoded text over the text being read, behind the reading: no replacement is
// longer than its reference, and a break is shorter than its tag. Each span from a "<" to the
// next ">" of the decoded text is dropped as soon as its ">" is written; a "<" left unmatched
// stays with what follows it.
class InPlaceWriter {
 public:
  explicit InPlaceWriter(std::u16string& text) : text_(text) {}

  // A run holding no "<" or ">".
  void PutRun(size_t from, size_t count) {
    if (from != written_) {
      std::char_traits<char16_t>::move(text_.data() + written_, text_.data() + from, count);
    }
    written_ += count;
  }

  void Put(std::u16string_view units) {
    for (char16_t unit : units) Put(unit);
  }

  void Put(char16_t unit) {
    if (unit == kTagOpen && spanOpen_ == std::u16string::npos) spanOpen_ = written_;
    if (unit == kTagClose && spanOpen_ != std::u16string::npos) {
      written_ = spanOpen_;
      spanOpen_ = std::u16string::npos;
      return;
    }
    text_[written_++] = unit;
  }

  void Finish() { text_.resize(written_); }

 private:
  std::u16string& text_;
  size_t written_ = 0;
  size_t spanOpen_ = std::u16string::npos;
};

// The marked units of a text, found in the text itself, or in the bytes it was widened from one
// unit per byte. In bytes each mark is looked for on its own with memchr, which runs through
// long texts several times faster than a search for any of them; a mark found is remembered
// until the reading passes it, and one not found is never looked for again.
class MarkFinder {
 public:
  explicit MarkFinder(std::u16string_view text) : text_(text) {}
  explicit MarkFinder(std::string_view bytes) : bytes_(bytes) {
    for (size_t mark = 0; mark < kMarkedUnits.size(); ++mark) {
      next_[mark] = FindByte(static_cast<char>(kMarkedUnits[mark]), 0);
    }
  }

  // The first marked unit at or after `from`, which never goes back from one call to the next.
  size_t Next(size_t from) {
    if (bytes_.data() == nullptr) return platform::FindAnyUnit(text_, kMarkedUnits, from);
    size_t first = std::string_view::npos;
    for (size_t mark = 0; mark < kMarkedUnits.size(); ++mark) {
      if (next_[mark] < from) next_[mark] = FindByte(static_cast<char>(kMarkedUnits[mark]), from);
      first = std::min(first, next_[mark]);
    }
    return first;
  }

 private:
  size_t FindByte(char byte, size_t from) const {
    if (from >= bytes_.size()) return std::string_view::npos;
    const void* found = std::memchr(bytes_.data() + from, byte, bytes_.size() - from);
    return found ? static_cast<const char*>(found) - bytes_.data() : std::string_view::npos;
  }

  std::u16string_view text_;
  std::string_view bytes_;
  std::array<size_t, kMarkedUnits.size()> next_{};  // where each mark is in the bytes
};

// One pass for the three steps, with the result of doing them one after another over the whole
// text: an XHTML break never holds or joins a reference (no reference has "<" or a line end in
// it), and removing a span never makes a new "<".
void DecodeAndRemoveSpans(std::u16string& text, MarkFinder marks) {
  const std::u16string_view view(text);
  InPlaceWriter out(text);
  size_t read = 0;
  for (size_t at; (at = marks.Next(read)) != view.npos;) {
    out.PutRun(read, at - read);
    if (view.substr(at).starts_with(kXhtmlBreak)) {
      out.Put(kLineBreak);
      read = at + kXhtmlBreak.size();
    } else if (view[at] == kReferenceOpen) {
      DecodedReference decoded = DecodeReference(view, at);
      out.Put(decoded.text);
      read = decoded.next;
    } else {
      out.Put(view[at]);
      read = at + 1;
    }
  }
  out.PutRun(read, view.size() - read);
  out.Finish();
}

}  // namespace

void HtmlEntityDecoder::DecodeInPlace(std::u16string& text) const {
  DecodeAndRemoveSpans(text, MarkFinder(text));
  platform::TrimSpaces(text);
}

void HtmlEntityDecoder::DecodeWidened(std::string_view bytes, const platform::AnsiReader& reader,
                                      std::u16string& text) const {
  text.clear();
  reader.AppendWidened(bytes, text);
  // Each byte is then one unit of the text, and only ASCII bytes widen to the marked units.
  const bool unitPerByte = reader.WidensEachByteAlone() && text.size() == bytes.size();
  DecodeAndRemoveSpans(text, unitPerByte ? MarkFinder(bytes) : MarkFinder(text));
  platform::TrimSpaces(text);
}

CString HtmlEntityDecoder::Decode(const CString& text) const {
  std::u16string decoded(text.Str());
  DecodeInPlace(decoded);
  return CString(std::move(decoded));
}

}  // namespace mailslice::html
