// Linux implementation of the code-page conversions, on glibc iconv.
#include "platform/code_page.h"

#include <errno.h>
#include <iconv.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "platform/code_page_fast.h"
#include "platform/device_settings.h"
#include "platform/wide_search.h"

namespace mailslice::platform {
namespace {

constexpr const char* kUtf16Name =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
// A code page name that iconv does not know is replaced by this one.
constexpr const char* kFallbackCodePage = "CP1252";
constexpr char16_t kReplacementCharacter = 0xFFFD;
constexpr char kDefaultCharacter = '?';

// The iconv name of a code page other than the device's.
std::string OtherIconvName(unsigned codePage) {
  switch (codePage) {
    case kUtf7CodePage:
      return "UTF-7";
    case kUtf8CodePage:
      return "UTF-8";
    case 20866:
      return "KOI8-R";
    case 28592:
      return "ISO-8859-2";
    case 28596:
      return "ISO-8859-6";
    case 50220:
      return "ISO-2022-JP";
    case 51932:
      return "EUC-JP";
    default:
      return "CP" + std::to_string(codePage);
  }
}

// The iconv name of `codePage`. The device's is lent by the settings (a conversion asks for
// it every time); another is made into `made`.
const std::string& IconvName(unsigned codePage, std::string& made) {
  if (codePage == kAnsiCodePage) return AnsiCodePageName();
  made = OtherIconvName(codePage);
  return made;
}

// iconv descriptors are costly to open; each thread keeps the ones it used.
class ConverterCache {
 public:
  ~ConverterCache() {
    for (auto& entry : entries_) iconv_close(entry.descriptor);
  }

  iconv_t Get(const std::string& from, const std::string& to) {
    for (auto& entry : entries_) {
      if (entry.from == from && entry.to == to) {
        iconv(entry.descriptor, nullptr, nullptr, nullptr, nullptr);  // back to the initial state
        return entry.descriptor;
      }
    }
    iconv_t descriptor = iconv_open(to.c_str(), from.c_str());
    if (descriptor == reinterpret_cast<iconv_t>(-1)) return descriptor;
    if (entries_.size() == kMaxEntries) {
      iconv_close(entries_.front().descriptor);
      entries_.erase(entries_.begin());
    }
    entries_.push_back({from, to, descriptor});
    return descriptor;
  }

 private:
  struct Entry {
    std::string from, to;
    iconv_t descriptor;
  };
  static constexpr size_t kMaxEntries = 16;
  std::vector<Entry> entries_;
};

ConverterCache& Cache() {
  thread_local ConverterCache cache;
  return cache;
}

iconv_t Converter(std::string from, std::string to) {
  ConverterCache& cache = Cache();
  iconv_t descriptor = cache.Get(from, to);
  if (descriptor != reinterpret_cast<iconv_t>(-1)) return descriptor;
  if (from != kUtf16Name) from = kFallbackCodePage;
  if (to != kUtf16Name) to = kFallbackCodePage;
  return cache.Get(from, to);
}

// What to do with input that iconv refuses: how many input bytes to pass over and what to
// write instead, or stop the conversion.
struct Refusal {
  size_t skip = 0;
  std::string_view replacement;
  bool stop = false;
};

// glibc converts through an intermediate buffer of several kilobytes and, at a character the
// target refuses, converts that stretch again to find its place in the input. Handing the input
// over a short window at a time keeps a text full of refused characters (a mail in a script
// the device cannot show) linear instead of costing kilobytes for each of them.
constexpr size_t kWindowBytes = 256;

// Runs one whole conversion; `onRefusal` decides about each refused position (`incomplete`
// tells an input that ends inside a character).
template <typename OnRefusal>
std::string Run(iconv_t descriptor, std::string_view input, OnRefusal onRefusal) {
  std::string output(input.size() * 2 + 16, '\0');
  char* in = const_cast<char*>(input.data());
  size_t inLeft = input.size();
  size_t written = 0;
  size_t window = kWindowBytes;
  while (true) {
    char* out = output.data() + written;
    size_t outLeft = output.size() - written;
    // Once the input is used up, a stateful code page (ISO-2022-JP) writes its closing shift.
    bool flushing = inLeft == 0;
    size_t slice = std::min(window, inLeft);
    size_t sliceLeft = slice;
    size_t result = flushing ? iconv(descriptor, nullptr, nullptr, &out, &outLeft)
                             : iconv(descriptor, &in, &sliceLeft, &out, &outLeft);
    int error = errno;
    inLeft -= slice - sliceLeft;
    written = output.size() - outLeft;
    if (result != static_cast<size_t>(-1)) {
      if (flushing) break;
      window = kWindowBytes;
      continue;
    }
    if (error == E2BIG) {
      output.resize(output.size() * 2);
      continue;
    }
    if (error == EINVAL && sliceLeft < inLeft) {
      window *= 2;  // the window cut a character: the rest of it follows
      continue;
    }
    Refusal refusal = onRefusal(std::string_view(in, inLeft), error == EINVAL);
    if (written + refusal.replacement.size() > output.size()) {
      output.resize(output.size() * 2 + refusal.replacement.size());
    }
    refusal.replacement.copy(output.data() + written, refusal.replacement.size());
    written += refusal.replacement.size();
    if (refusal.stop) break;
    in += refusal.skip;
    inLeft -= refusal.skip;
    iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
  }
  output.resize(written);
  return output;
}

std::string_view AsBytes(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

std::u16string FromBytes(const std::string& bytes) {
  std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
  std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
  return text;
}

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// Bytes taken by the UTF-16 character at the start of `rest`: a surrogate pair counts whole.
size_t CharacterBytes(std::string_view rest) {
  char16_t units[2] = {0, 0};
  std::memcpy(units, rest.data(), std::min(rest.size(), sizeof(units)));
  bool pair = rest.size() >= 4 && IsHighSurrogate(units[0]) && IsLowSurrogate(units[1]);
  return pair ? 4 : 2;
}

// The Windows code pages that mail programs name by another charset, which the messages'
// bytes really are in.
constexpr std::pair<std::string_view, std::string_view> kCharsetAliases[] = {
    {"shift_jis", "CP932"},   {"x-sjis", "CP932"},         {"sjis", "CP932"},
    {"euc-kr", "CP949"},      {"ks_c_5601-1987", "CP949"}, {"ks_c_5601", "CP949"},
    {"iso-8859-1", "CP1252"}, {"us-ascii", "CP1252"},      {"gb2312", "GBK"},
};

std::string LowerAscii(std::string_view text) {
  std::string lower(text);
  for (char& ch : lower) {
    if (ch >= 'A' && ch <= 'Z') ch = static_cast<char>(ch - 'A' + 'a');
  }
  return lower;
}

std::u16string ConvertToWide(iconv_t descriptor, std::string_view bytes) {
  static const char16_t kReplacement[1] = {kReplacementCharacter};
  const std::string_view replacement = AsBytes(std::u16string_view(kReplacement, 1));
  return FromBytes(Run(descriptor, bytes, [&](std::string_view, bool incomplete) {
    return Refusal{1, replacement, incomplete};
  }));
}

std::u16string IconvToWide(const std::string& name, std::string_view bytes) {
  return ConvertToWide(Converter(name, kUtf16Name), bytes);
}

std::string IconvToNarrow(const std::string& name, std::u16string_view text) {
  static const char kDefault[1] = {kDefaultCharacter};
  iconv_t descriptor = Converter(kUtf16Name, name);
  return Run(descriptor, AsBytes(text), [&](std::string_view rest, bool incomplete) {
    return Refusal{CharacterBytes(rest), std::string_view(kDefault, 1), incomplete};
  });
}

std::string IconvToNarrowUntilFailure(const std::string& name, std::u16string_view text) {
  iconv_t descriptor = Converter(kUtf16Name, name);
  return Run(descriptor, AsBytes(text), [](std::string_view, bool) {
    return Refusal{0, {}, true};
  });
}

// The fast paths convert up to where they cannot be sure and leave the rest to iconv (which
// keeps no state across the cut in the code pages they take).
constexpr ExactConversions kExactConversions{IconvToWide, IconvToNarrow, IconvToNarrowUntilFailure};

}  // namespace

std::optional<std::u16string> CharsetToWide(std::string_view charset, std::string_view bytes) {
  std::string name = LowerAscii(charset);
  for (auto [alias, codePage] : kCharsetAliases) {
    if (name == alias) name = codePage;
  }
  iconv_t descriptor = Cache().Get(name, kUtf16Name);
  if (name.empty() || descriptor == reinterpret_cast<iconv_t>(-1)) return std::nullopt;
  return ConvertToWide(descriptor, bytes);
}

std::u16string MultiByteToWideThroughIconv(unsigned codePage, std::string_view bytes) {
  std::string made;
  return IconvToWide(IconvName(codePage, made), bytes);
}

std::string WideToMultiByteThroughIconv(unsigned codePage, std::u16string_view text) {
  std::string made;
  return IconvToNarrow(IconvName(codePage, made), text);
}

std::string WideToMultiByteUntilFailureThroughIconv(std::u16string_view text) {
  return IconvToNarrowUntilFailure(AnsiCodePageName(), text.substr(0, text.find(u'\0')));
}

namespace {

std::u16string NamedToWide(const std::string& name, std::string_view bytes) {
  std::u16string wide;
  size_t done = FastPrefixToWide(name, bytes, wide, kExactConversions);
  if (done < bytes.size()) wide += IconvToWide(name, bytes.substr(done));
  return wide;
}

}  // namespace

std::u16string MultiByteToWide(unsigned codePage, std::string_view bytes) {
  std::string made;
  return NamedToWide(IconvName(codePage, made), bytes);
}

AnsiReader::AnsiReader() : name_(AnsiCodePageName()), fast_(name_, kExactConversions) {}

std::u16string AnsiReader::Widen(std::string_view bytes) const {
  std::u16string wide;
  AppendWidened(bytes, wide);
  return wide;
}

void AnsiReader::AppendWidened(std::string_view bytes, std::u16string& wide) const {
  size_t done = fast_.Append(bytes, wide);
  if (done < bytes.size()) wide += IconvToWide(name_, bytes.substr(done));
}

std::string WideToMultiByte(unsigned codePage, std::u16string_view text) {
  std::string narrow;
  WideToMultiByte(codePage, text, narrow);
  return narrow;
}

void WideToMultiByte(unsigned codePage, std::u16string_view text, std::string& narrow) {
  std::string made;
  const std::string& name = IconvName(codePage, made);
  size_t done = FastPrefixToNarrow(name, text, narrow, kExactConversions);
  if (done < text.size()) narrow += IconvToNarrow(name, text.substr(done));
}

std::string WideToMultiByteUntilFailure(std::u16string_view text) {
  std::string narrow;
  WideToMultiByteUntilFailure(text, narrow);
  return narrow;
}

void WideToMultiByteUntilFailure(std::u16string_view text, std::string& narrow) {
  text = text.substr(0, FindUnit(text, u'\0'));
  const std::string& name = AnsiCodePageName();
  size_t done = FastPrefixToNarrow(name, text, narrow, kExactConversions, true);
  if (done < text.size()) narrow += IconvToNarrowUntilFailure(name, text.substr(done));
}

std::u16string WideThroughAnsi(std::u16string text, bool untilFailure) {
  const std::string& name = AnsiCodePageName();
  bool cut = false;
  size_t done = FastRoundTrip(name, text, untilFailure, cut, kExactConversions);
  if (cut || done == text.size()) {
    text.resize(done);
    return text;
  }
  std::u16string_view rest = std::u16string_view(text).substr(done);
  std::string narrow =
      untilFailure ? WideToMultiByteUntilFailure(rest) : WideToMultiByte(kAnsiCodePage, rest);
  std::u16string back = AnsiToWide(std::string_view(narrow).substr(0, narrow.find('\0')));
  text.resize(done);
  return text.append(back);
}

std::u16string Utf8ThroughAnsi(std::string_view utf8, bool untilFailure) {
  std::u16string shown;
  Utf8ThroughAnsi(utf8, untilFailure, shown);
  return shown;
}

void Utf8ThroughAnsi(std::string_view utf8, bool untilFailure, std::u16string& shown) {
  size_t taken =
      FastUtf8ThroughPage(AnsiCodePageName(), utf8, untilFailure, shown, kExactConversions);
  if (taken == utf8.size()) return;
  std::u16string rest = MultiByteToWide(kUtf8CodePage, utf8.substr(taken));
  shown.append(WideThroughAnsi(std::move(rest), untilFailure));
}

size_t Utf8ThroughAnsi(std::string_view utf8, bool untilFailure, std::u16string& shown,
                       char* narrowed) {
  size_t narrowedCount = std::string::npos;
  size_t taken = FastUtf8ThroughPage(AnsiCodePageName(), utf8, untilFailure, shown,
                                     kExactConversions, narrowed, &narrowedCount);
  if (taken == utf8.size()) return narrowedCount;
  // The bytes written lie behind those taken: the rest is read as it came.
  std::u16string rest = MultiByteToWide(kUtf8CodePage, utf8.substr(taken));
  shown.append(WideThroughAnsi(std::move(rest), untilFailure));
  return std::string::npos;
}

size_t Utf8ThroughAnsiPage(std::string_view utf8, bool untilFailure, char* page, size_t* written) {
  return FastUtf8ToPage(AnsiCodePageName(), utf8, untilFailure, page, written, kExactConversions);
}

const AnsiReader& DeviceAnsiReader() {
  // Short texts (field values, parameters) are widened by the thousand: the reader of the
  // device code page is kept for as long as the page stays the same.
  thread_local std::optional<AnsiReader> reader;
  if (!reader || reader->name() != AnsiCodePageName()) reader.emplace();
  return *reader;
}

std::u16string AnsiToWide(std::string_view bytes) { return DeviceAnsiReader().Widen(bytes); }

std::string WideToAnsi(std::u16string_view text) { return WideToMultiByte(kAnsiCodePage, text); }

}  // namespace mailslice::platform
