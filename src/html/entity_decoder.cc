// The decoder makes one pass over the text for the references instead of one pass per table
// row, with the same result as applying the rows one after another to the whole text:
// - A reference runs from "&" to the next ";" and holds neither, so references never overlap
//   and each is decoded by the first row (in table order) written the same way.
// - No replacement can form part of a reference except "&" (from "&#38;" and "&amp;"). That "&"
//   joins the text after it into a new reference, which only the rows after the one that made
//   it may still decode: "&#38;lt;" gives "<", but "&amp;lt;" stays "&lt;".
// - A numeric group is skipped when its trigger is absent, but every row of a group begins
//   with its trigger, so the skip never changes the result and needs no test here.
#include "html/entity_decoder.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "html/entity_tables.h"
#include "platform/wide_search.h"

namespace mailslice::html {
namespace {

constexpr const char16_t* kXhtmlBreak = u"<br />";
constexpr const char16_t* kLineBreak = u"\r\n";
constexpr char16_t kReferenceOpen = u'&';
constexpr char16_t kReferenceClose = u';';
constexpr std::u16string_view kMadeReferenceOpen = u"&";

// Every row of the tables, with its place in the order of application, found by its text.
class ReferenceIndex {
 public:
  struct Row {
    std::u16string_view entity;
    std::u16string_view replacement;
    size_t order;
  };

  ReferenceIndex() {
    for (const EntityGroup& group : kNumericEntityGroups) {
      for (const EntityRow& row : group.rows) Add(row);
    }
    for (const EntityRow& row : kNamedEntities) Add(row);
    std::stable_sort(rows_.begin(), rows_.end(),
                     [](const Row& a, const Row& b) { return a.entity < b.entity; });
  }

  // The first row at or after `fromOrder` that is written `entity`, or null.
  const Row* Find(std::u16string_view entity, size_t fromOrder) const {
    auto it =
        std::lower_bound(rows_.begin(), rows_.end(), entity,
                         [](const Row& row, std::u16string_view e) { return row.entity < e; });
    for (; it != rows_.end() && it->entity == entity; ++it) {
      if (it->order >= fromOrder) return &*it;
    }
    return nullptr;
  }

  size_t longest() const { return longest_; }

 private:
  void Add(const EntityRow& row) {
    rows_.push_back({row.entity, row.replacement, rows_.size()});
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

// Decodes the reference whose "&" is at `open`, following the chain of "&" that decoding may
// make, and appends the result. Returns where the copying of plain text goes on.
size_t AppendDecodedReference(std::u16string_view text, size_t open, std::u16string& out) {
  const ReferenceIndex& index = Index();
  size_t fromOrder = 0;
  while (true) {
    std::u16string_view entity = ReferenceAfter(text, open, index.longest());
    const ReferenceIndex::Row* row = entity.empty() ? nullptr : index.Find(entity, fromOrder);
    if (!row) break;
    size_t close = open + 1 + entity.size();
    if (row->replacement != kMadeReferenceOpen) {
      out.append(row->replacement);
      return close + 1;
    }
    // The ";" now stands where the new "&" is.
    open = close;
    fromOrder = row->order + 1;
  }
  out += kReferenceOpen;
  return open + 1;
}

std::u16string DecodeReferences(std::u16string_view text) {
  std::u16string out;
  out.reserve(text.size());
  size_t copyFrom = 0;
  for (size_t open;
       (open = platform::FindUnit(text, kReferenceOpen, copyFrom)) != std::u16string_view::npos;) {
    out.append(text.substr(copyFrom, open - copyFrom));
    copyFrom = AppendDecodedReference(text, open, out);
  }
  return out.append(text.substr(copyFrom));
}

// Removes each span from a "<" to the next ">"; an unmatched "<" and what follows it stay.
// Removing a span never makes a new "<", so the scan goes on where the span ended. The kept
// text moves down in place: it is written only behind the scan.
void RemoveTagSpans(std::u16string& text) {
  size_t kept = 0, copyFrom = 0;
  while (true) {
    size_t open = platform::FindUnit(text, u'<', copyFrom);
    size_t close = open == std::u16string::npos ? open : platform::FindUnit(text, u'>', open);
    if (close == std::u16string::npos) break;
    std::char_traits<char16_t>::move(text.data() + kept, text.data() + copyFrom, open - copyFrom);
    kept += open - copyFrom;
    copyFrom = close + 1;
  }
  size_t rest = text.size() - copyFrom;
  std::char_traits<char16_t>::move(text.data() + kept, text.data() + copyFrom, rest);
  text.resize(kept + rest);
}

}  // namespace

CString HtmlEntityDecoder::Decode(const CString& text) const {
  std::u16string decoded;
  if (platform::FindUnits(text.Str(), kXhtmlBreak) == std::u16string::npos) {
    decoded = DecodeReferences(text.Str());  // no copy for the breaks
  } else {
    CString withBreaks(text);
    withBreaks.Replace(kXhtmlBreak, kLineBreak);
    decoded = DecodeReferences(withBreaks.Str());
  }
  RemoveTagSpans(decoded);
  CString result(std::move(decoded));
  result.TrimRight();
  result.TrimLeft();
  return result;
}

}  // namespace mailslice::html
