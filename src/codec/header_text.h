// Decoding header text (a subject, a display name, an attachment name) that still carries the
// raw bytes of the message: MIME encoded words "=?charset?B|Q?text?=" and raw ISO-2022-JP runs
// are undone and converted by their charset, and the whole becomes wide text through the
// device's code page.
#ifndef MAILSLICE_CODEC_HEADER_TEXT_H
#define MAILSLICE_CODEC_HEADER_TEXT_H

#include <mailslice/cstring.h>

#include <optional>
#include <string>
#include <string_view>

namespace mailslice::codec {

// The decoded display text of a raw header value. Text between encoded words stays, except CR
// and LF; a word with no "?=" ends the text; the first KOI8-R or windows-1251 word is returned
// alone, without the text around it.
CString DecodeHeaderText(const CString& source);

// What a caller of the header walk may change about it.
struct HeaderWalkRules {
  // An encoded word with no "?=" runs to the end of the text instead of ending the walk.
  bool unterminatedWordRunsToEnd = false;
  // Gives the wide text of a word's decoded bytes for charsets that need not pass through the
  // device code page, or nothing to leave the word to its class's converter. May be null.
  std::optional<std::u16string> (*wideWord)(int charsetClass, std::string_view bytes) = nullptr;
};

// DecodeHeaderText with the walk changed by `rules`.
CString DecodeHeaderText(const CString& source, const HeaderWalkRules& rules);

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_HEADER_TEXT_H
