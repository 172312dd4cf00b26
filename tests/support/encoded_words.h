// Building header text the way mail programs write it: text put into a charset by iconv and
// wrapped in MIME encoded words.
#ifndef MAILSLICE_TESTS_SUPPORT_ENCODED_WORDS_H
#define MAILSLICE_TESTS_SUPPORT_ENCODED_WORDS_H

#include <mailslice/cstring.h>

#include <optional>
#include <string>
#include <string_view>

#include "support/test_support.h"

namespace mailslice::testing {

// Windows code page numbers of the charsets mail arrives in. ks_c_5601-1987 is CP949, whose
// Hangul bytes are EUC-KR's.
inline constexpr unsigned kShiftJis = 932, kKorean = 949, kWindows1251 = 1251;
inline constexpr unsigned kLatin1Windows = 1252, kKoi8r = 20866, kIso2022Jp = 50220;
inline constexpr unsigned kEucJp = 51932, kUtf7 = 65000, kUtf8 = 65001;

// `text` in code page `codePage`, converted by iconv.
std::string InCodePage(unsigned codePage, std::u16string_view text);

// "=?charset?B?...?=" around `bytes` in Base64. `marker` may be 'b'.
std::string Base64Word(std::string_view charset, std::string_view bytes, char marker = 'B');

// "=?charset?Q?...?=" around `bytes`: spaces as underscores, and bytes outside printable ASCII
// (and "=", "?", "_") as upper-case escapes.
std::string QuotedPrintableWord(std::string_view charset, std::string_view bytes);

// A header value as the message buffer hands it over: 8-bit text widened through the device
// code page.
CString AsHeader(std::string_view bytes);

// The device set to `language`, with the code page that goes with it (or `codePage`).
class ScopedLanguage {
 public:
  explicit ScopedLanguage(int language, std::optional<std::string> codePage = std::nullopt)
      : language_("MAILSLICE_LANGUAGE", std::to_string(language)),
        codePage_("MAILSLICE_CODEPAGE", std::move(codePage)) {}

 private:
  ScopedEnv language_, codePage_;
};

}  // namespace mailslice::testing

#endif  // MAILSLICE_TESTS_SUPPORT_ENCODED_WORDS_H
