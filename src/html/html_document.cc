// The element list and the walk that collects the readable text of the body.
#include "html/html_document.h"

#include <algorithm>
#include <new>

#include "html/entity_decoder.h"
#include "platform/code_page.h"
#include "platform/white_space.h"

namespace mailslice::html {
namespace {

constexpr std::u16string_view kScriptCommentPrefix = u"//";
constexpr std::u16string_view kLineBreak = u"\r\n";
constexpr std::string_view kScriptCommentBytes = "//";
constexpr std::string_view kLineBreakBytes = "\r\n";

}  // namespace

HtmlAttribute::~HtmlAttribute() {
  while (next_) next_ = std::move(next_->next_);
}

HtmlElement::~HtmlElement() {
  while (next_) next_ = std::move(next_->next_);
}

bool HtmlElement::SetName(std::string_view name) {
  if (name.empty() || name.size() > kMaxNameLength) return false;
  std::fill(std::copy(name.begin(), name.end(), name_.begin()), name_.end(), '\0');
  return true;
}

std::string_view HtmlElement::name() const {
  return std::string_view(name_.data(),
                          std::find(name_.begin(), name_.end(), '\0') - name_.begin());
}

HtmlAttribute* HtmlElement::AddAttribute(std::string_view name) {
  std::unique_ptr<HtmlAttribute> attribute;
  try {
    attribute = std::make_unique<HtmlAttribute>(name);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  HtmlAttribute* added = attribute.get();
  (last_attribute_ ? last_attribute_->next_ : first_attribute_) = std::move(attribute);
  last_attribute_ = added;
  return added;
}

void HtmlDocument::Append(std::unique_ptr<HtmlElement> element) {
  if (!element) return;
  HtmlElement* added = element.get();
  (last_ ? last_->next_ : first_) = std::move(element);
  last_ = added;
  ++count_;
}

void BodyTextCollector::WidenLine(std::string_view run) {
  // The line is widened onto the end of the text, trimmed there and moved down over what was
  // trimmed off its start.
  const size_t start = text_.size();
  reader_.AppendWidened(run, text_);
  platform::TrimmedRange kept = platform::Untrimmed(std::u16string_view(text_).substr(start));
  std::u16string_view line =
      std::u16string_view(text_).substr(start + kept.begin, kept.end - kept.begin);
  if (line.empty() || line.starts_with(kScriptCommentPrefix)) {
    text_.resize(start);
    return;
  }
  std::char_traits<char16_t>::move(text_.data() + start, line.data(), line.size());
  text_.resize(start + line.size() + kLineBreak.size());
  kLineBreak.copy(text_.data() + start + line.size(), kLineBreak.size());
}

void BodyTextCollector::GatherBytes(std::string_view run) {
  platform::TrimmedRange kept = platform::Untrimmed(run);
  std::string_view line = run.substr(kept.begin, kept.end - kept.begin);
  if (line.empty() || line.starts_with(kScriptCommentBytes)) return;
  const size_t needed = gathered_ + line.size() + kLineBreakBytes.size();
  // The room grows by doubling, so the zeros written ahead cost no more than the text.
  if (needed > bytes_.size()) bytes_.resize(std::max(needed, 2 * bytes_.size()));
  char* out = bytes_.data() + gathered_;
  line.copy(out, line.size());
  kLineBreakBytes.copy(out + line.size(), kLineBreakBytes.size());
  gathered_ = needed;
}

std::u16string BodyTextCollector::TakeText() {
  if (gathered_ != 0) {
    reader_.AppendWidened(Gathered(), text_);
    gathered_ = 0;
  }
  return std::move(text_);
}

std::u16string BodyTextCollector::TakeDecodedText() {
  if (bytewise_) {
    HtmlEntityDecoder().DecodeWidened(Gathered(), reader_, text_);
    gathered_ = 0;
  } else {
    HtmlEntityDecoder().DecodeInPlace(text_);
  }
  return std::move(text_);
}

CString HtmlDocument::CollectBodyText() const {
  BodyTextCollector collector;
  for (const HtmlElement* element = first(); element; element = element->next()) {
    collector.Element(element->name());
    for (const HtmlAttribute* attribute = element->first_attribute(); attribute;
         attribute = attribute->next()) {
      const std::optional<std::string>& value = attribute->value();
      collector.Attribute(attribute->name(),
                          value ? std::optional<std::string_view>(*value) : std::nullopt);
    }
  }
  return collector.Take();
}

}  // namespace mailslice::html
