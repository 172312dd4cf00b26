// The element list that the HTML reader builds from a body: flat and in page order, with end
// tags as elements of their own and nothing checking nesting. Runs of text and comments are
// pseudo-elements ("TEXT_DATA", "COMMENT_DATA") that carry their content in a "TEXT" attribute.
#ifndef MAILSLICE_HTML_HTML_DOCUMENT_H
#define MAILSLICE_HTML_HTML_DOCUMENT_H

#include <mailslice/cstring.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/code_page.h"

namespace mailslice::html {

inline constexpr std::string_view kTextElementName = "TEXT_DATA";
inline constexpr std::string_view kCommentElementName = "COMMENT_DATA";
inline constexpr std::string_view kContentAttributeName = "TEXT";

class HtmlAttribute {
 public:
  explicit HtmlAttribute(std::string_view name) : name_(name) {}
  // Tears the rest of the chain down in a loop, so a tag with a million attributes cannot
  // exhaust the stack.
  ~HtmlAttribute();
  HtmlAttribute(const HtmlAttribute&) = delete;
  HtmlAttribute& operator=(const HtmlAttribute&) = delete;

  std::string_view name() const { return name_; }
  // Nothing for an attribute written without a value.
  const std::optional<std::string>& value() const { return value_; }
  void SetValue(std::string_view value) { value_.emplace(value); }
  const HtmlAttribute* next() const { return next_.get(); }

 private:
  friend class HtmlElement;
  std::unique_ptr<HtmlAttribute> next_;
  std::string name_;
  std::optional<std::string> value_;
};

class HtmlElement {
 public:
  static constexpr size_t kMaxNameLength = 64;

  HtmlElement() = default;
  // Tears the rest of the list down in a loop (see HtmlAttribute).
  ~HtmlElement();
  HtmlElement(const HtmlElement&) = delete;
  HtmlElement& operator=(const HtmlElement&) = delete;

  // Takes a name of 1 to kMaxNameLength characters; any other leaves the name as it was (so
  // an element may keep an empty name) and returns false.
  bool SetName(std::string_view name);
  std::string_view name() const;

  // Appends an attribute and returns it; null when memory ran out (the attribute is dropped).
  HtmlAttribute* AddAttribute(std::string_view name);
  const HtmlAttribute* first_attribute() const { return first_attribute_.get(); }
  const HtmlElement* next() const { return next_.get(); }

 private:
  friend class HtmlDocument;
  std::unique_ptr<HtmlElement> next_;
  std::unique_ptr<HtmlAttribute> first_attribute_;
  HtmlAttribute* last_attribute_ = nullptr;
  std::array<char, kMaxNameLength + 1> name_{};
};

// The readable text of a body, gathered element by element in page order: the text runs (and
// comments, and "TEXT" attributes) between a lower-case "body" tag and a lower-case "/body"
// tag, each trimmed and followed by CR LF; runs that start with "//" are left out.
class BodyTextCollector {
 public:
  BodyTextCollector() = default;
  // Collects into `storage`, emptied first: its room is used, as is that of `bytes`.
  explicit BodyTextCollector(std::u16string&& storage, std::string&& bytes = std::string())
      : text_(std::move(storage)), bytes_(std::move(bytes)) {
    text_.clear();
    bytes_.clear();
  }

  // An element of that name begins (its attributes follow).
  void Element(std::string_view name) {
    if (name.starts_with(kBodyOpenPrefix)) {
      inBody_ = true;
    } else if (name.starts_with(kBodyClosePrefix)) {
      inBody_ = false;
    }
  }
  // An attribute of the last element; nothing for one written without a value.
  void Attribute(std::string_view name, std::optional<std::string_view> value) {
    // An attribute written without a value reads as empty text.
    if (Reads(name)) Line(value.value_or(std::string_view()));
  }
  // A text run or comment: an element whose one attribute is its "TEXT".
  void Content(std::string_view content) {
    if (inBody_) Line(content);
  }
  // Whether an attribute of that name of the last element adds to the text. Any attribute named
  // TEXT... counts, so comments and a body tag's own TEXT colour are read as text too, as the
  // device always did.
  bool Reads(std::string_view name) const {
    return inBody_ && name.starts_with(kContentAttributeName);
  }
  CString Take() { return CString(TakeText()); }
  std::u16string TakeText();
  // TakeText's text after HtmlEntityDecoder::DecodeInPlace; bytes gathered on a page that
  // widens each byte alone are decoded as they are widened, in one pass.
  std::u16string TakeDecodedText();
  // The buffer the bytes were gathered in, for another use of its room.
  std::string TakeBytes() { return std::move(bytes_); }

 private:
  // The device's own prefix tests, case-sensitive: "<BODY>" in capitals never opens the body.
  static constexpr std::string_view kBodyOpenPrefix = "body";
  static constexpr std::string_view kBodyClosePrefix = "/body";

  // Adds a line of text: trimmed, and left out when empty or starting with "//".
  void Line(std::string_view run) {
    if (bytewise_) return GatherBytes(run);
    WidenLine(run);
  }
  void GatherBytes(std::string_view run);
  void WidenLine(std::string_view run);
  // The bytes gathered are the first gathered_ of bytes_, whose room beyond is sized ahead.
  std::string_view Gathered() const { return std::string_view(bytes_).substr(0, gathered_); }

  platform::AnsiReader reader_;
  // On a device code page that widens each byte on its own, the runs are gathered as bytes
  // (trimmed as their wide text would be, as only ASCII reads as white space) and widened
  // once at the end, instead of run by run.
  bool bytewise_ = reader_.WidensEachByteAlone();
  std::u16string text_;
  std::string bytes_;
  size_t gathered_ = 0;
  bool inBody_ = false;
};

class HtmlDocument {
 public:
  HtmlDocument() = default;
  HtmlDocument(const HtmlDocument&) = delete;
  HtmlDocument& operator=(const HtmlDocument&) = delete;

  // Reads a NUL-terminated 8-bit HTML text into the element list. Returns 0 for a null text,
  // else 1, also when nothing was recognised.
  int Parse(const char* text);

  // The text runs (and comments, and "TEXT" attributes) between a lower-case "body" tag and a
  // lower-case "/body" tag, each trimmed and followed by CR LF; runs that start with "//" are
  // left out.
  CString CollectBodyText() const;

  // The text CollectBodyText gives for the document that Parse makes of `text`, read without
  // building the element list.
  static CString ReadBodyText(const char* text);
  // The same, written into `storage` (emptied first; its room is used).
  static void ReadBodyTextInto(const char* text, std::u16string& storage);
  // ReadBodyTextInto, then HtmlEntityDecoder::DecodeInPlace on the text.
  static void ReadDecodedBodyTextInto(const char* text, std::u16string& storage);

  void Append(std::unique_ptr<HtmlElement> element);
  uint32_t count() const { return count_; }
  const HtmlElement* first() const { return first_.get(); }

 private:
  uint32_t count_ = 0;
  std::unique_ptr<HtmlElement> first_;
  HtmlElement* last_ = nullptr;
};

}  // namespace mailslice::html

#endif  // MAILSLICE_HTML_HTML_DOCUMENT_H
