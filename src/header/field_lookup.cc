#include "header/field_lookup.h"

#include <algorithm>

#include "header/header_block.h"
#include "platform/code_page.h"
#include "platform/device_settings.h"
#include "platform/letter_case.h"
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
// continuation line, or at the end of the block. Bare-LF headers look two characters ahead,
// so a line that starts with a single blank after an LF does not continue the field.
size_t ValueEnd(std::u16string_view text, size_t start, LineEnds lineEnds) {
  auto at = [&](size_t i) { return i < text.size() ? text[i] : u'\0'; };
  for (size_t i = start; i < text.size(); ++i) {
    if (at(i) == u'\0') return i;
    if (lineEnds == LineEnds::kCrLf && at(i) == u'\r' && at(i + 1) == u'\n' &&
        !IsBlank(at(i + 2))) {
      return i;
    }
    if (lineEnds == LineEnds::kLf && at(i) == u'\n' && !IsBlank(at(i + 2))) return i;
  }
  return text.size();
}

// Removes CR LF pairs until none is left (taking out one pair can bring a CR and an LF
// together, and that pair goes too).
std::u16string WithoutCrLfPairs(std::u16string_view text) {
  std::u16string result;
  result.reserve(text.size());
  for (char16_t ch : text) {
    if (ch == u'\n' && !result.empty() && result.back() == u'\r') {
      result.pop_back();
    } else {
      result += ch;
    }
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

// A header block made ready for lookups: with a line break in front, so that a field on the
// first line matches like any other, and the same folded to lower case.
struct PreparedBlock {
  std::u16string text;
  std::u16string folded;
};

PreparedBlock Prepare(std::u16string_view headerBlock) {
  PreparedBlock block;
  block.text = Joined(u"\r\n", headerBlock);
  block.folded = Folded(block.text);
  return block;
}

CString FindField(const PreparedBlock& block, std::u16string_view name, int occurrence) {
  const std::u16string& text = block.text;
  const std::u16string& folded = block.folded;
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
  if (match == std::u16string::npos) return CString();
  size_t start = match + pattern.size();
  size_t end = ValueEnd(text, start, lineEnds);
  std::u16string value = Unfold(text.substr(start, end - start), lineEnds);
  std::replace(value.begin(), value.end(), u'\t', u' ');
  CString result(std::move(value));
  result.Trim();
  return result;
}

// A message is asked for From, To, Cc, Subject and Date in turn: its header block is widened
// and folded once and kept, with the bytes and the code page it came from, for the next
// lookup. A block is widened through the device ANSI code page alone, so the same bytes and
// the same code page give the same block.
class LastBlock {
 public:
  const PreparedBlock& Of(std::string_view bytes) {
    std::string codePage = platform::AnsiCodePageName();
    if (!held_ || bytes != bytes_ || codePage != codePage_) {
      held_ = false;
      block_ = Prepare(platform::AnsiToWide(bytes));
      bytes_.assign(bytes);
      codePage_ = std::move(codePage);
      held_ = true;
    }
    return block_;
  }

 private:
  bool held_ = false;
  std::string bytes_;
  std::string codePage_;
  PreparedBlock block_;
};

// Larger blocks are not kept: they would hold memory long after the message is read.
constexpr size_t kMaxKeptHeaderBytes = 64 * 1024;

}  // namespace

CString LookupFieldInBlock(std::u16string_view headerBlock, std::u16string_view name,
                           int occurrence) {
  if (headerBlock.empty()) return CString();
  return FindField(Prepare(headerBlock), name, occurrence);
}

CString LookupField(const char* message, std::u16string_view name, int occurrence) {
  auto bytes = HeaderBytes(message);
  if (!bytes || bytes->empty()) return CString();
  if (bytes->size() > kMaxKeptHeaderBytes) {
    return LookupFieldInBlock(platform::AnsiToWide(*bytes), name, occurrence);
  }
  thread_local LastBlock last;
  return FindField(last.Of(*bytes), name, occurrence);
}

}  // namespace mailslice::header
