// libmailslice: a small reader of Internet mail messages (RFC 822 / MIME).
#ifndef MAILSLICE_MAILSLICE_H
#define MAILSLICE_MAILSLICE_H

#include <mailslice/cstring.h>
#include <mailslice/device.h>
#include <mailslice/exports.h>
#include <mailslice/part_record.h>

#endif  // MAILSLICE_MAILSLICE_H
