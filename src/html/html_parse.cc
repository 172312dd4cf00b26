// The HTML reader: one pass over a NUL-terminated 8-bit body with a single cursor, building
// the element list. It is forgiving in the device's own way: unknown "<" stay in the text,
// quotes do not protect ">", and a byte 255 at the start of an item ends the page. Every look
// ahead stops at the terminating NUL and is bounded by what the cursor then passes over, so
// the cost grows with the page, not faster.
#include <array>
#include <cstring>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "html/html_document.h"
#include "html/tag_table.h"
#include "platform/byte_search.h"
#include "platform/spare_buffers.h"

namespace mailslice::html {
namespace {

// Read as a signed character, byte 255 is EOF (-1): the device's reader took it for the end of
// the page when an item starts there.
constexpr unsigned char kEndOfPageByte = 0xFF;
constexpr std::string_view kCommentOpen = "!--";
constexpr std::string_view kCommentClose = "-->";

// Builds the element list of a document.
class DocumentBuilder {
 public:
  using Element = std::unique_ptr<HtmlElement>;
  using Attribute = HtmlAttribute*;

  explicit DocumentBuilder(HtmlDocument& document) : document_(document) {}

  static Element MakeElement(std::string_view name) {
    std::unique_ptr<HtmlElement> element(new (std::nothrow) HtmlElement);
    if (element) element->SetName(name);
    return element;
  }

  // Null when memory ran out (the attribute is dropped).
  static Attribute AddAttribute(Element& element, std::string_view name) {
    return element ? element->AddAttribute(name) : nullptr;
  }

  // When memory runs out, the value is dropped and the attribute keeps none.
  static void StoreValue(Attribute attribute, std::string_view value) {
    if (attribute == nullptr) return;
    try {
      attribute->SetValue(value);
    } catch (const std::bad_alloc&) {
    }
  }

  // A pseudo-element carrying `content` in its "TEXT" attribute. Whatever memory could not be
  // found for (the element, the attribute or its value) is left out.
  static Element MakeContentElement(std::string_view name, std::string_view content) {
    Element element = MakeElement(name);
    StoreValue(AddAttribute(element, kContentAttributeName), content);
    return element;
  }

  void Append(Element element) { document_.Append(std::move(element)); }

 private:
  HtmlDocument& document_;
};

// True when `text` begins with `prefix`; stops at the terminating NUL.
bool StartsWith(const char* text, std::string_view prefix) {
  for (char ch : prefix) {
    if (*text++ != ch) return false;
  }
  return true;
}

// The bytes a tag name stops at: those that end it ("\n", " ", ">" and the terminating NUL), and
// "<", which may open other markup.
constexpr std::array<bool, 256> kStopsTagName = [] {
  std::array<bool, 256> stops{};
  for (unsigned char ch : {'\n', ' ', '>', '\0', '<'}) stops[ch] = true;
  return stops;
}();

bool StopsTagName(char ch) { return kStopsTagName[static_cast<unsigned char>(ch)]; }

// Hands each element to a BodyTextCollector as soon as it is complete, keeping only the one
// being read; names and values point into the page.
class TextBuilder {
 public:
  struct Pending {
    std::string_view name;
    std::vector<std::pair<std::string_view, std::optional<std::string_view>>> attributes;
  };
  using Element = Pending*;
  using Attribute = size_t;  // the attribute's place plus one, 0 for none

  explicit TextBuilder(BodyTextCollector& collector) : collector_(collector) {}

  // Every element made is appended before the next is made, so the collector learns of it at
  // once: it then tells which of its attributes it will read, and only those are kept.
  Element MakeElement(std::string_view name) {
    // A name the element list would refuse leaves the element without one.
    bool fits = !name.empty() && name.size() <= HtmlElement::kMaxNameLength;
    pending_.name = fits ? name : std::string_view();
    pending_.attributes.clear();
    collector_.Element(pending_.name);
    return &pending_;
  }

  Attribute AddAttribute(Element& element, std::string_view name) {
    if (element == nullptr || !collector_.Reads(name)) return 0;
    element->attributes.emplace_back(name, std::nullopt);
    return element->attributes.size();
  }

  void StoreValue(Attribute attribute, std::string_view value) {
    if (attribute != 0) pending_.attributes[attribute - 1].second = value;
  }

  // Text runs and comments go to the collector at once, and make no element to append: their
  // names open and close nothing.
  Element MakeContentElement(std::string_view, std::string_view content) {
    collector_.Content(content);
    return Element();
  }

  void Append(Element element) {
    if (element == nullptr) return;
    for (const auto& [name, value] : element->attributes) collector_.Attribute(name, value);
  }

 private:
  BodyTextCollector& collector_;
  Pending pending_;
};

template <typename Builder>
class Parser {
 public:
  using Element = typename Builder::Element;

  // The end is found once, so that each later search knows its length and none scans the rest
  // of the page again.
  Parser(const char* text, Builder& builder)
      : cursor_(text), end_(text + std::strlen(text)), builder_(builder) {}

  void Run() {
    while (cursor_ && *cursor_ != '\0' && static_cast<unsigned char>(*cursor_) != kEndOfPageByte) {
      cursor_ = SkipHtmlSpace(cursor_);
      if (*cursor_ == '\0') break;
      if (*cursor_ == '>') {
        cursor_ = SkipHtmlSpace(cursor_ + 1);
        continue;
      }
      builder_.Append(*cursor_ == '<' ? ReadMarkup() : ReadTextRun());
    }
  }

 private:
  // At "<": a comment or a tag; a "<" the reader does not know is read as a tag here too.
  Element ReadMarkup() {
    cursor_ = SkipHtmlSpace(cursor_ + 1);
    return ClassifyAt(cursor_) == Markup::kComment ? ReadComment() : ReadTag();
  }

  // A run of text ends at the first "<" that opens a comment or a known tag; any other "<"
  // ("a < 3", "x<<y") stays in the run. A run that reaches the end of the page ends the parse.
  // The run starts past white space, at a byte other than NUL, "<" and ">".
  Element ReadTextRun() {
    const char* start = cursor_;
    const char* end = FindLessThan(start);
    while (end && !MarkupFollows(end)) end = FindLessThan(end + 1);
    cursor_ = end;  // null when the run takes the rest of the page
    return builder_.MakeContentElement(kTextElementName,
                                       std::string_view(start, (end ? end : end_) - start));
  }

  // An unterminated comment swallows the rest of the page.
  Element ReadComment() {
    if (StartsWith(cursor_, kCommentOpen)) cursor_ += kCommentOpen.size();
    const std::string_view rest(cursor_, end_ - cursor_);
    const size_t close = rest.find(kCommentClose);
    if (close == std::string_view::npos) {
      cursor_ = end_;
      return Element();
    }
    cursor_ += close + kCommentClose.size();
    if (close == 0) return Element();
    return builder_.MakeContentElement(kCommentElementName, rest.substr(0, close));
  }

  // Tab and CR do not end a tag name: "<td\tclass=c>" is one name. A name that reaches
  // kMaxNameLength characters is given up, and the rest of it is read as text. The name starts
  // past white space.
  Element ReadTag() {
    const char* start = cursor_;
    const char* const giveUp = start + HtmlElement::kMaxNameLength;
    while (true) {
      // Any byte may stand beyond giveUp, up to the terminating NUL: the name is looked at to
      // its stop, and given up if that lies too far.
      while (!StopsTagName(*cursor_)) ++cursor_;
      if (cursor_ >= giveUp) {
        cursor_ = giveUp;
        return Element();
      }
      if (*cursor_ != '<') break;
      if (MarkupFollows(cursor_)) {
        return builder_.MakeElement(std::string_view(start, cursor_ - start));
      }
      if (++cursor_ == giveUp) return Element();
    }
    Element element = builder_.MakeElement(std::string_view(start, cursor_ - start));
    ReadAttributes(element);
    if (*cursor_ == '>') ++cursor_;
    return element;
  }

  // Reads attributes up to ">" or a "<" that opens other markup; with no element (memory ran
  // out) they are read and dropped.
  void ReadAttributes(Element& element) {
    while (true) {
      cursor_ = SkipHtmlSpace(cursor_);
      if (AtTagEnd()) return;
      const char* name = cursor_;
      while ((cursor_ = FindFirstOf(cursor_, ' ', '=', '<', '>')) != end_ && AtStrayLessThan()) {
        ++cursor_;
      }
      if (*cursor_ == '\0' || cursor_ == name) return;
      auto attribute = builder_.AddAttribute(element, std::string_view(name, cursor_ - name));
      cursor_ = SkipHtmlSpace(cursor_);
      if (AtTagEnd()) return;
      // A stray "<" after a name is taken for "=", as the device did.
      if (*cursor_ != '=' && *cursor_ != '<') continue;
      cursor_ = SkipHtmlSpace(cursor_ + 1);
      std::string_view value = ReadAttributeValue();
      if (!value.empty()) builder_.StoreValue(attribute, value);
    }
  }

  // Classify, remembering the last answer: a text run ends at a "<" whose markup is then read,
  // and a tag's end is looked at again as its attributes are read.
  Markup ClassifyAt(const char* text) const {
    if (text != classified_) {
      classified_ = text;
      markup_ = Classify(text);
    }
    return markup_;
  }

  bool MarkupFollows(const char* lessThan) const {
    return ClassifyAt(SkipHtmlSpace(lessThan + 1)) != Markup::kNone;
  }

  // At ">", or at a "<" that opens other markup (the cursor stays on it).
  bool AtTagEnd() const { return *cursor_ == '>' || (*cursor_ == '<' && MarkupFollows(cursor_)); }

  // At a "<" that opens nothing the reader knows: it is part of the name or value around it.
  bool AtStrayLessThan() const { return *cursor_ == '<' && !MarkupFollows(cursor_); }

  // Quotes do not protect ">" or "<": "href='x>y'" has the value "x".
  std::string_view ReadAttributeValue() {
    char quote = (*cursor_ == '\'' || *cursor_ == '"') ? *cursor_ : '\0';
    if (quote != '\0') ++cursor_;
    char stop = quote != '\0' ? quote : ' ';
    const char* start = cursor_;
    while ((cursor_ = FindFirstOf(cursor_, stop, '>', '<')) != end_ && AtStrayLessThan()) {
      ++cursor_;
    }
    std::string_view value(start, cursor_ - start);
    if (quote != '\0' && *cursor_ == quote) ++cursor_;
    return value;
  }

  // The first of `bytes` at or after `from`, or the end of the page.
  template <typename... Bytes>
  const char* FindFirstOf(const char* from, Bytes... bytes) const {
    size_t at = platform::FindAnyByte(std::string_view(from, end_ - from), 0, bytes...);
    return at == std::string_view::npos ? end_ : from + at;
  }

  const char* FindLessThan(const char* from) const {
    return static_cast<const char*>(std::memchr(from, '<', end_ - from));
  }

  const char* cursor_;     // null once a text run has taken the rest of the page
  const char* const end_;  // the terminating NUL
  Builder& builder_;
  mutable const char* classified_ = nullptr;  // where the last classified markup starts
  mutable Markup markup_ = Markup::kNone;
};

}  // namespace

CString HtmlDocument::ReadBodyText(const char* text) {
  std::u16string collected;
  ReadBodyTextInto(text, collected);
  return CString(std::move(collected));
}

namespace {

template <typename Take>
void ReadBodyTextWith(const char* text, std::u16string& storage, Take take) {
  // The gathered text takes about as much room as the page.
  BodyTextCollector collector(
      std::move(storage), platform::TakeSpareBytes(text != nullptr ? std::strlen(text) + 2 : 0));
  if (text != nullptr) {
    TextBuilder builder(collector);
    Parser<TextBuilder>(text, builder).Run();
  }
  storage = take(collector);
  platform::KeepSpare(collector.TakeBytes());
}

}  // namespace

void HtmlDocument::ReadBodyTextInto(const char* text, std::u16string& storage) {
  ReadBodyTextWith(text, storage,
                   [](BodyTextCollector& collector) { return collector.TakeText(); });
}

void HtmlDocument::ReadDecodedBodyTextInto(const char* text, std::u16string& storage) {
  ReadBodyTextWith(text, storage,
                   [](BodyTextCollector& collector) { return collector.TakeDecodedText(); });
}

int HtmlDocument::Parse(const char* text) {
  if (!text) return 0;
  DocumentBuilder builder(*this);
  Parser<DocumentBuilder>(text, builder).Run();
  return 1;
}

}  // namespace mailslice::html
