// Symbol visibility for the public types and exports of libmailslice.
#ifndef MAILSLICE_VISIBILITY_H
#define MAILSLICE_VISIBILITY_H

#if defined(__GNUC__) || defined(__clang__)
#define MAILSLICE_API __attribute__((visibility("default")))
#else
#define MAILSLICE_API
#endif

#endif  // MAILSLICE_VISIBILITY_H
