// The library-wide instances. They are defined here, in one translation unit, so that they
// are built in this order when the library is loaded and destroyed in the reverse order when
// it is unloaded:
//   1. the main mail parser,
//   2. the encoder, 3. the Japanese converter, 4. the Base64 coder (with the codecs),
//   5. the message buffer holder.
// (The device build had a sixth object after these; no export uses it, so it is not made.)
#include "api/instances.h"

namespace mailslice::api {
namespace {

MailParser g_mainParser;
codec::OutgoingEncoder g_encoder;
codec::JapaneseConverter g_japaneseConverter;
codec::Base64Coder g_base64Coder;
MessageBufferHolder g_messageBuffer;

}  // namespace

MailParser& MainParser() { return g_mainParser; }
codec::OutgoingEncoder& Encoder() { return g_encoder; }
codec::JapaneseConverter& JapaneseConverter() { return g_japaneseConverter; }
codec::Base64Coder& Base64Coder() { return g_base64Coder; }
MessageBufferHolder& MessageBuffer() { return g_messageBuffer; }

}  // namespace mailslice::api
