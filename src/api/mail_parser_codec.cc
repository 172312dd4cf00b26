// The main parser's transfer decodings.
#include "api/mail_parser.h"
#include "codec/base64_decoder.h"
#include "codec/quoted_printable.h"

namespace mailslice::api {

char* MailParser::Base64Decode(const char* text, int* length) const {
  return codec::DecodeBase64(text, length);
}

char* MailParser::QPdecode(const char* text) const {
  return codec::DecodeQuotedPrintable(text, nullptr);
}

}  // namespace mailslice::api
