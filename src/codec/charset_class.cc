#include "codec/charset_class.h"

#include <initializer_list>
#include <string_view>

namespace mailslice::codec {
namespace {

struct CharsetNames {
  int charsetClass;
  std::initializer_list<std::string_view> names;
};

// The spellings met in mail, tested in this order; the first prefix that matches wins.
const CharsetNames kCharsetNames[] = {
    {kCharsetJapanese, {"iso-2022-jp", "ISO-2022-JP", "SHIFT_JIS", "shift_jis", "Shift_JIS"}},
    {kCharsetJapanese, {"\x1B$B", "\x1B$@"}},  // a raw ISO-2022-JP run names no charset
    {kCharsetUtf8, {"utf-8", "UTF-8"}},
    {kCharsetEucJp, {"euc-jp", "EUC-JP"}},
    {kCharsetEucKr, {"euc-kr", "EUC-KR"}},
    {kCharsetUtf7, {"utf-7", "UTF-7"}},
    {kCharsetKsc5601, {"ks_c_5601-1987", "KS_C_5601-1987"}},
    {kCharsetKoi8r, {"koi8-r", "KOI8-R"}},
    {kCharsetWindows1251, {"windows-1251", "WINDOWS-1251"}},
};

constexpr std::string_view kShiftJisNames[] = {"SHIFT_JIS", "shift_jis", "Shift_JIS"};
constexpr std::string_view kIso2022JpNames[] = {"iso-2022-jp", "ISO-2022-JP"};

// A byte-wise prefix test that stops at the first difference, so it never reads past the NUL
// that ends `at` (names hold no NUL).
bool StartsWith(const char* at, std::string_view name) {
  for (char ch : name) {
    if (*at++ != ch) return false;
  }
  return true;
}

template <typename Names>
bool StartsWithAny(const char* at, const Names& names) {
  for (std::string_view name : names) {
    if (StartsWith(at, name)) return true;
  }
  return false;
}

}  // namespace

int ClassifyCharset(const char* at) {
  if (at == nullptr) return kCharsetOther;
  for (const CharsetNames& entry : kCharsetNames) {
    if (StartsWithAny(at, entry.names)) return entry.charsetClass;
  }
  return kCharsetOther;
}

size_t JapaneseCharsetNameLength(const char* at) {
  if (at == nullptr) return 0;
  if (StartsWithAny(at, kShiftJisNames)) return kShiftJisNames[0].size();
  if (StartsWithAny(at, kIso2022JpNames)) return kIso2022JpNames[0].size();
  return 0;
}

}  // namespace mailslice::codec
