#include "json_output.h"

#include <cstdio>
#include <string>

namespace mailslice::tools {

void PrintJsonLine(const Json& object) {
  std::string line = object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
}

Json AttachmentsJson(const std::vector<SizedAttachment>& attachments) {
  Json list = Json::array();
  for (const SizedAttachment& attachment : attachments) {
    Json entry = {{"name", attachment.name}, {"size", nullptr}};
    if (attachment.size) entry["size"] = *attachment.size;
    list.push_back(entry);
  }
  return list;
}

}  // namespace mailslice::tools
