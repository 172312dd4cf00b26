// The library-wide instances behind the exports.
#ifndef MAILSLICE_API_INSTANCES_H
#define MAILSLICE_API_INSTANCES_H

#include "api/mail_parser.h"
#include "api/message_buffer.h"
#include "codec/base64_coder.h"
#include "codec/base64_encoder.h"
#include "codec/japanese_converter.h"

namespace mailslice::api {

MailParser& MainParser();
codec::OutgoingEncoder& Encoder();
codec::JapaneseConverter& JapaneseConverter();
codec::Base64Coder& Base64Coder();
MessageBufferHolder& MessageBuffer();

}  // namespace mailslice::api

#endif  // MAILSLICE_API_INSTANCES_H
