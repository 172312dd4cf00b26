#include "header/field_lookup.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <vector>

#include "header/header_block.h"
#include "platform/code_page.h"
#include "platform/device_settings.h"
#include "platform/letter_case.h"
#include "platform/white_space.h"
#include "platform/wide_search.h"

namespace mailslice::header {
namespace {

enum class LineEnds { kCrLf, kLf };

std::u16string Folded(std::u16string_view text) {
  std::u16string folded(text);
  std::transform(folded.begin(), folded.end(), folded.begin(), platform::ToLowerLetter);
  return folded;
}

std::u16string Joined(std::u16string_view first, std::u16string_view second,
                      std::u16string_view third = {}) {
  std::u16string joined;
  joined.reserve(first.size() + second.size() + third.size());
  return joined.append(first).append(second).append(third);
}

bool IsBlank(char16_t ch) { return ch == u' ' || ch == u'\t'; }

// Where the value that starts at `start` ends: at the line break that is not followed by a
// continuation line, or at a NUL, or at the end of the block. Bare-LF headers look two
// characters ahead, so a line that starts with a single blank after an LF does not continue
// the field. `folded` tells whether the value holds an LF, which only a folded (or broken)
// value does.
size_t ValueEnd(std::u16string_view text, size_t start, LineEnds lineEnds, bool& folded) {
  auto at = [&](size_t i) { return i < text.size() ? text[i] : u'\0'; };
  // CR LF headers stop at an LF too, only to note it: a bare one stays in the value.
  const char16_t stops[] = {u'\0', u'\n', u'\r'};
  const size_t stopCount = lineEnds == LineEnds::kCrLf ? 3 : 2;
  folded = false;
  for (size_t i = start; (i = platform::FindAnyUnit(text, {stops, stopCount}, i)) != text.npos;
       ++i) {
    switch (text[i]) {
      case u'\0':
        return i;
      case u'\n':
        if (lineEnds == LineEnds::kLf && !IsBlank(at(i + 2))) return i;
        folded = true;
        break;
      default:  // a CR
        if (at(i + 1) == u'\n' && !IsBlank(at(i + 2))) return i;
        break;
    }
  }
  return text.size();
}

// Removes CR LF pairs until none is left (taking out one pair can bring a CR and an LF
// together, and that pair goes too).
std::u16string WithoutCrLfPairs(std::u16string_view text) {
  std::u16string result;
  result.reserve(text.size());
  for (size_t from = 0; from < text.size();) {
    size_t lf = std::min(platform::FindUnit(text, u'\n', from), text.size());
    result.append(text.substr(from, lf - from));
    if (lf == text.size()) break;
    if (!result.empty() && result.back() == u'\r') {
      result.pop_back();
    } else {
      result += u'\n';
    }
    from = lf + 1;
  }
  return result;
}

// Joins the lines of a folded value. The blank that begins a continuation line is kept.
std::u16string Unfold(std::u16string value, LineEnds lineEnds) {
  size_t crlf = value.find(u"\r\n");
  if (lineEnds == LineEnds::kLf) {
    if (crlf != std::u16string::npos) value.erase(crlf, 1);  // the CR of the first CR LF
    std::erase(value, u'\n');
    return value;
  }
  if (crlf == std::u16string::npos) {
    size_t lf = value.find(u'\n');
    if (lf == std::u16string::npos) return value;
    value.erase(lf, 2);  // a bare LF in a CR LF header takes the character after it along
  }
  return WithoutCrLfPairs(value);
}

// The search for a field anywhere in the block, for any name: the block folded to lower case
// is searched for a line break, the folded name and a colon. Returns where the value starts
// and how the header ends its lines, or npos.
struct FoundValue {
  size_t start = std::u16string::npos;
  LineEnds lineEnds = LineEnds::kCrLf;
};

FoundValue SearchValue(std::u16string_view text, std::u16string_view name, int occurrence) {
  std::u16string folded = Folded(text);
  std::u16string foldedName = Folded(name);
  std::u16string pattern = Joined(u"\r\n", foldedName, u":");
  LineEnds lineEnds = LineEnds::kCrLf;
  size_t match = platform::FindUnits(folded, pattern);
  if (match == std::u16string::npos) {
    pattern = Joined(u"\n", foldedName, u":");
    lineEnds = LineEnds::kLf;
    match = platform::FindUnits(folded, pattern);
  }
  for (int skipped = 0; skipped < occurrence && match != std::u16string::npos; ++skipped) {
    match = platform::FindUnits(folded, pattern, match + pattern.size());
  }
  if (match == std::u16string::npos) return {};
  return {match + pattern.size(), lineEnds};
}

// A header block made ready for lookups: with a line break in front, so that a field on the
// first line matches like any other, the places where its lines start (just past each LF),
// where a field's name can begin, and the first character of each line folded to lower case,
// which passes over most lines at one look.
struct PreparedBlock {
  std::u16string text;
  std::vector<size_t> lineStarts;
  std::u16string lineFirsts;  // u'\0' for a line start at the end of the block
};

void IndexLines(PreparedBlock& block) {
  block.lineStarts.clear();
  block.lineFirsts.clear();
  std::u16string_view text = block.text;
  for (size_t lf = 0; (lf = platform::FindUnit(text, u'\n', lf)) != text.npos;) {
    block.lineStarts.push_back(++lf);
    block.lineFirsts += lf < text.size() ? platform::ToLowerLetter(text[lf]) : u'\0';
  }
}

void Prepare(std::u16string_view headerBlock, PreparedBlock& block) {
  block.text.assign(u"\r\n").append(headerBlock);
  IndexLines(block);
}

// The same from the header bytes, widened through the device ANSI code page behind the line
// break.
void PrepareBytes(std::string_view headerBytes, PreparedBlock& block) {
  block.text.assign(u"\r\n");
  platform::DeviceAnsiReader().AppendWidened(headerBytes, block.text);
  IndexLines(block);
}

// Whether a line start can find `name`: a name without a colon or line break cannot run over
// a line start, so its matches are the lines that begin with it and a colon, in order.
bool FitsLineStarts(std::u16string_view name) {
  return name.find_first_of(u":\r\n") == std::u16string_view::npos;
}

bool NameAt(std::u16string_view text, size_t start, std::u16string_view name) {
  if (text.size() - start <= name.size() || text[start + name.size()] != u':') return false;
  for (size_t at = 0; at < name.size(); ++at) {
    if (platform::ToLowerLetter(text[start + at]) != platform::ToLowerLetter(name[at])) {
      return false;
    }
  }
  return true;
}

// The lines that begin with `name` and a colon: after a CR LF in the first pass, after any
// LF in the second, which is made only when the first finds none. As the search above.
FoundValue IndexedValue(const PreparedBlock& block, std::u16string_view name, int occurrence) {
  std::u16string_view firsts = block.lineFirsts;
  const char16_t first = name.empty() ? u'\0' : platform::ToLowerLetter(name[0]);
  // The next line from `line` that may begin with the name: any line for an empty name, else
  // one that begins with its first letter.
  auto candidateFrom = [&](size_t line) {
    if (!name.empty()) return platform::FindUnit(firsts, first, line);
    return line < firsts.size() ? line : firsts.npos;
  };
  for (LineEnds lineEnds : {LineEnds::kCrLf, LineEnds::kLf}) {
    int seen = 0;
    for (size_t line = candidateFrom(0); line != firsts.npos; line = candidateFrom(line + 1)) {
      size_t start = block.lineStarts[line];
      if (lineEnds == LineEnds::kCrLf && block.text[start - 2] != u'\r') continue;
      if (!NameAt(block.text, start, name)) continue;
      if (seen++ >= occurrence) return {start + name.size() + 1, lineEnds};
    }
    if (seen > 0) return {};
  }
  return {};
}

// The value as shown: unfolded, tabs made spaces, trimmed. A value on one line needs no
// unfolding, and trimming it before its tabs become spaces leaves the same text, tab and
// space both being trimmed.
CString ValueFrom(std::u16string_view text, FoundValue found) {
  if (found.start == std::u16string::npos) return CString();
  bool folded = false;
  size_t end = ValueEnd(text, found.start, found.lineEnds, folded);
  std::u16string_view raw = text.substr(found.start, end - found.start);
  std::u16string value;
  if (!folded) {
    platform::TrimmedRange kept = platform::Untrimmed(raw);
    value.assign(raw.substr(kept.begin, kept.end - kept.begin));
  } else {
    value = Unfold(std::u16string(raw), found.lineEnds);
    platform::TrimSpaces(value);
  }
  // Tabs are rare in a value: they are looked for before anything is replaced.
  for (size_t tab = platform::FindUnit(value, u'\t'); tab != std::u16string::npos;
       tab = platform::FindUnit(value, u'\t', tab + 1)) {
    value[tab] = u' ';
  }
  return CString(std::move(value));
}

CString FindField(const PreparedBlock& block, std::u16string_view name, int occurrence) {
  if (!FitsLineStarts(name))
    return ValueFrom(block.text, SearchValue(block.text, name, occurrence));
  return ValueFrom(block.text, IndexedValue(block, name, occurrence));
}

// A message is asked for From, To, Cc, Subject and Date in turn: its header block is widened
// and indexed once and kept, with the bytes and the code page it came from, for the next
// lookup. A block is widened through the device ANSI code page alone, so the same bytes and
// the same code page give the same block.
class LastBlock {
 public:
  // The kept block, when `message` still has the header it was made from: the same text at
  // the same place, whose first CR LF CR LF ends the same header bytes as before.
  const PreparedBlock* Holding(const char* message, const std::string& codePage) const {
    if (!held_ || message != message_ || !endsAtCrLfPair_ || codePage != codePage_) {
      return nullptr;
    }
    // Stops at a NUL that a changed message may hold; the kept bytes have none.
    if (std::strncmp(message, bytes_.data(), bytes_.size()) != 0) return nullptr;
    return &block_;
  }

  const PreparedBlock& Of(const char* message, std::string_view bytes, std::string codePage) {
    std::string_view kept(bytes_.data(), bytes_.size() - (endsAtCrLfPair_ ? kCrLfPairSize : 0));
    if (!held_ || bytes != kept || codePage != codePage_) {
      held_ = false;
      PrepareBytes(bytes, block_);
      codePage_ = std::move(codePage);
      held_ = true;
    }
    // With bare LF endings the header ends at an LF pair only where no CR LF CR LF follows it
    // anywhere in the message, which comparing the header cannot tell.
    message_ = message;
    bytes_.assign(bytes);
    endsAtCrLfPair_ = std::strncmp(message + bytes.size(), kCrLfPair, kCrLfPairSize) == 0;
    if (endsAtCrLfPair_) bytes_.append(kCrLfPair);
    return block_;
  }

 private:
  static constexpr const char* kCrLfPair = "\r\n\r\n";
  static constexpr size_t kCrLfPairSize = 4;

  bool held_ = false;
  const char* message_ = nullptr;
  bool endsAtCrLfPair_ = false;
  std::string bytes_;  // the header bytes, and the CR LF CR LF when it ends them
  std::string codePage_;
  PreparedBlock block_;
};

// Larger blocks are not kept: they would hold memory long after the message is read.
constexpr size_t kMaxKeptHeaderBytes = 64 * 1024;

}  // namespace

CString LookupFieldInBlock(std::u16string_view headerBlock, std::u16string_view name,
                           int occurrence) {
  if (headerBlock.empty()) return CString();
  PreparedBlock block;
  Prepare(headerBlock, block);
  return FindField(block, name, occurrence);
}

CString LookupField(const char* message, std::u16string_view name, int occurrence) {
  thread_local LastBlock last;
  const std::string& codePage = platform::AnsiCodePageName();
  if (const PreparedBlock* block = last.Holding(message, codePage)) {
    return FindField(*block, name, occurrence);
  }
  auto bytes = HeaderBytes(message);
  if (!bytes || bytes->empty()) return CString();
  if (bytes->size() > kMaxKeptHeaderBytes) {
    return LookupFieldInBlock(platform::AnsiToWide(*bytes), name, occurrence);
  }
  return FindField(last.Of(message, *bytes, codePage), name, occurrence);
}

}  // namespace mailslice::header
