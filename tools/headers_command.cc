// mailslice headers [--raw] [--json] FILE: the header values as the mail application shows them.
#include <cstdio>
#include <memory>

#include "exit_status.h"
#include "json_output.h"
#include "message_fields.h"
#include "message_loading.h"
#include "program.h"

namespace mailslice::tools {
namespace {

struct HeadersOptions {
  std::string file;
  bool raw = false;
  bool json = false;
};

void PrintLine(const char* label, const std::string& value) {
  std::printf("%s: %s\n", label, value.c_str());
}

// The decoded view of a field; fields the mail application leaves raw print as they are.
void PrintDecoded(const HeaderField& field) {
  CString value = field.read();
  if (field.read == GetFrom) {
    PrintLine(field.label, GetMailFrom(value).ToUtf8());
    PrintLine("From address", GetMailFromAddress(value).ToUtf8());
  } else if (field.read == GetTo) {
    PrintLine(field.label, GetMailTo(value).ToUtf8());
  } else if (field.read == GetSubject) {
    PrintLine(field.label, GetParsingSubject(value).ToUtf8());
  } else if (field.read == GetCc) {
    for (const std::string& address : CcAddresses(value)) PrintLine(field.label, address);
  } else {
    PrintLine(field.label, value.ToUtf8());
  }
}

void PrintText(bool raw) {
  for (const HeaderField& field : kHeaderFields) {
    if (raw) {
      PrintLine(field.label, field.read().ToUtf8());
    } else {
      PrintDecoded(field);
    }
    if (field.read == GetDate) PrintLine("Local date", LocalDate());
  }
}

// The same view as one object: the decoded view holds "from_address" and a "cc" array; the raw
// one holds every value as written, "cc" a string.
Json JsonOf(const std::string& file, bool raw) {
  Json object = {{"file", file}};
  for (const HeaderField& field : kHeaderFields) {
    CString value = field.read();
    if (raw) {
      object[field.jsonKey] = value.ToUtf8();
    } else if (field.read == GetFrom) {
      object[field.jsonKey] = GetMailFrom(value).ToUtf8();
      object["from_address"] = GetMailFromAddress(value).ToUtf8();
    } else if (field.read == GetTo) {
      object[field.jsonKey] = GetMailTo(value).ToUtf8();
    } else if (field.read == GetSubject) {
      object[field.jsonKey] = GetParsingSubject(value).ToUtf8();
    } else if (field.read == GetCc) {
      object[field.jsonKey] = CcAddresses(value);
    } else {
      object[field.jsonKey] = value.ToUtf8();
    }
  }
  object["local_date"] = LocalDate();
  return object;
}

int ShowHeaders(const HeadersOptions& options) {
  if (auto problem = LoadMessage(options.file)) return Fail(options.file, *problem);
  LoadedMessage loaded;
  if (options.json) {
    PrintJsonLine(JsonOf(options.file, options.raw));
  } else {
    PrintText(options.raw);
  }
  return kStatusDone;
}

}  // namespace

void AddHeadersCommand(Program& program) {
  auto options = std::make_shared<HeadersOptions>();
  CLI::App& command = program.AddCommand(
      "headers", "print the header values",
      "Prints From, To, Cc, Bcc, Subject, Date, Reply-To, Delivered-To, X-Apparently-To and\n"
      "Envelope-To, one labelled line each, and after Date the Date in local time. From, To and\n"
      "Subject are decoded, the Cc addresses come one a line and the sender's bare address\n"
      "follows From; --raw prints every value as the message writes it.",
      [options] { return ShowHeaders(*options); });
  command.add_option("FILE", options->file, "the message file")->required()->type_name("");
  command.add_flag("--raw", options->raw, "print every value as the message writes it");
  command.add_flag("--json", options->json, "print one JSON object (see README.md)");
}

}  // namespace mailslice::tools
