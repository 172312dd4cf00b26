// The pieces the corpus messages are assembled from: the header block, subjects, boundaries in
// the styles of common mailers, text and HTML parts sized to a budget, attachments and
// multipart containers. Every part text ends in CR LF, so containers just join them.
#ifndef MAILSLICE_BENCH_CORPUS_MESSAGE_PARTS_H
#define MAILSLICE_BENCH_CORPUS_MESSAGE_PARTS_H

#include <string>
#include <vector>

#include "corpus/mail_text.h"

namespace mailslice::corpus {

// Return-Path, Received, From, To (and sometimes Cc), Subject, Date, Message-ID and
// MIME-Version, each line ending in CR LF; the content fields follow.
std::string MessageHeaders(Dice& dice, Script script, const std::string& subject);
// A subject value in that script, in encoded words where it is not ASCII.
std::string Subject(Dice& dice, Script script);
std::string Boundary(Dice& dice);

// A text/plain part whose encoded body is about `budget` bytes, in a charset and transfer
// encoding a mailer of that script would choose.
std::string PlainTextPart(Dice& dice, Script script, size_t budget);
// A text/html part of about `budget` bytes: UTF-8 quoted-printable, or ISO-2022-JP 7bit.
std::string HtmlPart(Dice& dice, Script script, size_t budget);
// An attachment of `bytes` bytes, number `ordinal` in its message (which keeps names unique).
std::string AttachmentPart(Dice& dice, Script script, int ordinal, size_t bytes);

// "Content-Type: multipart/<subtype>; boundary=..." and the body holding the parts.
std::string Multipart(const std::string& subtype, const std::string& boundary,
                      const std::vector<std::string>& parts, bool withPreamble);

}  // namespace mailslice::corpus

#endif  // MAILSLICE_BENCH_CORPUS_MESSAGE_PARTS_H
