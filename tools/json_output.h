// JSON output: one object per message on one line, UTF-8.
#ifndef MAILSLICE_TOOLS_JSON_OUTPUT_H
#define MAILSLICE_TOOLS_JSON_OUTPUT_H

#include <nlohmann/json.hpp>
#include <vector>

#include "attachment_sizes.h"

namespace mailslice::tools {

// Keys keep the order they are written in, the order README.md documents.
using Json = nlohmann::ordered_json;

// Prints the object on one line of standard output. Bytes that are not UTF-8 (a file name
// from the command line, say) become U+FFFD rather than ending the output.
void PrintJsonLine(const Json& object);

// The attachments as show and attachments list them: [{"name": ..., "size": bytes or null}].
Json AttachmentsJson(const std::vector<SizedAttachment>& attachments);

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_JSON_OUTPUT_H
