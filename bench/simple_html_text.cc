#include "simple_html_text.h"

#include <cstdint>
#include <cstdlib>

namespace mailslice::bench {
namespace {

constexpr size_t kLongestEntity = 10;

struct NamedEntity {
  std::string_view name;
  std::string_view text;
};

constexpr NamedEntity kNamedEntities[] = {{"amp", "&"},   {"lt", "<"},   {"gt", ">"},
                                          {"quot", "\""}, {"apos", "'"}, {"nbsp", "\xC2\xA0"}};

// Tags after which a reader expects the text to go on on a new line.
constexpr std::string_view kBreakingTags[] = {"br", "p",  "/p", "div", "/div", "tr",  "/tr",
                                              "h1", "h2", "h3", "/h1", "/h2",  "/h3", "li"};

bool StartsWithNoCase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t at = 0; at < prefix.size(); ++at) {
    char ch = text[at];
    if (ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch - 'A' + 'a');
    if (ch != prefix[at]) return false;
  }
  return true;
}

// The tag's name, lower or upper case as written, "/" included for an end tag.
std::string_view TagName(std::string_view tag) {
  size_t end = tag.find_first_of(" \t\r\n/>", tag.starts_with('/') ? 1 : 0);
  return tag.substr(0, end == std::string_view::npos ? tag.size() : end);
}

bool IsBreakingTag(std::string_view name) {
  for (std::string_view breaking : kBreakingTags) {
    if (name.size() == breaking.size() && StartsWithNoCase(name, breaking)) return true;
  }
  return false;
}

void AppendUtf8(uint32_t code, std::string& text) {
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | (code >> 6));
    text += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | (code >> 12));
    text += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x110000) {
    text += static_cast<char>(0xF0 | (code >> 18));
    text += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    text += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (code & 0x3F));
  }
}

// `name` is what stands between "&" and ";". False when it is no entity this reduction knows.
bool AppendEntity(std::string_view name, std::string& text) {
  if (name.starts_with('#') && name.size() > 1) {
    bool hex = name[1] == 'x' || name[1] == 'X';
    std::string digits(name.substr(hex ? 2 : 1));
    char* end = nullptr;
    unsigned long code = std::strtoul(digits.c_str(), &end, hex ? 16 : 10);
    if (digits.empty() || *end != '\0') return false;
    AppendUtf8(static_cast<uint32_t>(code), text);
    return true;
  }
  for (const NamedEntity& entity : kNamedEntities) {
    if (entity.name == name) {
      text += entity.text;
      return true;
    }
  }
  return false;
}

// Where the text goes on after the tag that starts at `at`.
size_t SkipTag(std::string_view html, size_t at, std::string& text) {
  if (html.substr(at).starts_with("<!--")) {
    size_t end = html.find("-->", at + 4);
    return end == std::string_view::npos ? html.size() : end + 3;
  }
  size_t end = html.find('>', at);
  if (end == std::string_view::npos) return html.size();
  std::string_view name = TagName(html.substr(at + 1, end - at - 1));
  for (std::string_view hidden : {std::string_view("style"), std::string_view("script")}) {
    if (name.size() == hidden.size() && StartsWithNoCase(name, hidden)) {
      // Nothing inside is text; the search for the end tag is case-sensitive in both spellings.
      std::string closing = "</" + std::string(hidden);
      size_t close = html.find(closing, end);
      if (close == std::string_view::npos) close = html.find("</" + std::string(name), end);
      end = close == std::string_view::npos ? html.size() - 1 : html.find('>', close);
      return end == std::string_view::npos ? html.size() : end + 1;
    }
  }
  if (IsBreakingTag(name)) text += '\n';
  return end + 1;
}

}  // namespace

std::string TextOfHtml(std::string_view html) {
  std::string text;
  text.reserve(html.size() / 2);
  size_t at = 0;
  while (at < html.size()) {
    char ch = html[at];
    if (ch == '<') {
      at = SkipTag(html, at, text);
      continue;
    }
    if (ch == '&') {
      size_t length = html.substr(at + 1, kLongestEntity).find(';');
      if (length != std::string_view::npos && AppendEntity(html.substr(at + 1, length), text)) {
        at += length + 2;
        continue;
      }
    }
    if (ch != '\r') text += ch;
    ++at;
  }
  return text;
}

}  // namespace mailslice::bench
