// The library-wide instances behind the exports.
#ifndef MAILSLICE_API_INSTANCES_H
#define MAILSLICE_API_INSTANCES_H

#include "api/mail_parser.h"
#include "api/message_buffer.h"

namespace mailslice::api {

MailParser& MainParser();
MessageBufferHolder& MessageBuffer();

}  // namespace mailslice::api

#endif  // MAILSLICE_API_INSTANCES_H
