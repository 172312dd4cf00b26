// The wide encoded-word decoder for subjects and attachment names: one MIME encoded word
// "=?charset?B|Q?text?=" to wide text.
#ifndef MAILSLICE_CODEC_ENCODED_WORD_H
#define MAILSLICE_CODEC_ENCODED_WORD_H

#include <mailslice/cstring.h>

namespace mailslice::codec {

// Decodes `word`. UTF-8 and UTF-7 words become UTF-16 directly, so no character is lost to
// the device code page; a word in any other charset reads as the header decoder reads it.
// Text around the word is treated as the header decoder treats it. A malformed word never
// fails: a word with no "?=" runs to the end of the text, and what can be decoded is given.
CString DecodeEncodedWord(const CString& word);

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_ENCODED_WORD_H
