// mailslice: reads a mail message file the way the library hands it to a mail application.
#include <mailslice/mailslice.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "datetime/date_display.h"
#include "message_loading.h"
#include "save_command.h"

namespace {

constexpr char kUsage[] =
    "usage: mailslice COMMAND [OPTIONS] FILE\n"
    "\n"
    "Reads an Internet mail message stored in FILE (RFC 822 / MIME).\n"
    "\n"
    "commands:\n"
    "  headers [--raw] FILE\n"
    "                 print the header values: From, To, Cc, Bcc, Subject, Date, Reply-To\n"
    "                 and the three delivery fields, and the Date in local time. From, To\n"
    "                 and Subject are decoded, the Cc addresses come one a line and the\n"
    "                 sender's bare address follows From; --raw prints every value as\n"
    "                 the message writes it\n"
    "  body FILE      print the readable body as the reader shows it\n"
    "  attachments FILE\n"
    "                 list the names of the attachments, one a line\n"
    "  save FILE [NAME...] [-o DIR]\n"
    "                 save the named attachments (all without names) into DIR (default: the\n"
    "                 current folder) under names that overwrite no file; print each path\n"
    "\n"
    "The device settings come from the environment (see README.md): MAILSLICE_DEVICE_TYPE,\n"
    "MAILSLICE_LANGUAGE, MAILSLICE_CODEPAGE, MAILSLICE_MESSAGES, MAILSLICE_REGISTRY,\n"
    "MAILSLICE_TEMP and TZ.\n";

struct LabelledField {
  const char* label;
  CString (*read)();
};

constexpr LabelledField kHeaderFields[] = {
    {"From", GetFrom},
    {"To", GetTo},
    {"Cc", GetCc},
    {"Bcc", GetBcc},
    {"Subject", GetSubject},
    {"Date", GetDate},
    {"Reply-To", GetReplyTo},
    {"Delivered-To", GetDelivered1},
    {"X-Apparently-To", GetDelivered2},
    {"Envelope-To", GetDelivered3},
};

int Fail(const std::string& file, const std::string& problem) {
  std::fprintf(stderr, "mailslice: %s: %s\n", file.c_str(), problem.c_str());
  return 1;
}

// The Date as the device shows it: moved into the device's zone and written in its language and
// 12- or 24-hour setting. A Date that cannot be read shows as the device words a date of zeros.
std::string LocalDate() {
  CString fields[8];
  GetParsingDate(GetDate(), fields);
  CString universalTime = GetNewDate(fields);
  auto local = mailslice::datetime::LocalDateOf(universalTime);
  if (!local) return ConvertToDisplayTime(universalTime).ToUtf8();
  return (GetDateMsg(0, 0, *local) + u" " + GetTimeMsg(0, 0, *local)).ToUtf8();
}

void PrintLine(const char* label, const CString& value) {
  std::printf("%s: %s\n", label, value.ToUtf8().c_str());
}

// The decoded view of a field as the mail application shows it; fields it leaves raw print
// as they are.
void PrintDecoded(const LabelledField& field) {
  CString value = field.read();
  if (field.read == GetFrom) {
    PrintLine(field.label, GetMailFrom(value));
    PrintLine("From address", GetMailFromAddress(value));
  } else if (field.read == GetTo) {
    PrintLine(field.label, GetMailTo(value));
  } else if (field.read == GetSubject) {
    PrintLine(field.label, GetParsingSubject(value));
  } else if (field.read == GetCc) {
    CStringArray addresses;
    GetCCList(value, &addresses);
    for (int index = 0; index < addresses.GetSize(); ++index) {
      PrintLine(field.label, addresses.GetAt(index));
    }
  } else {
    PrintLine(field.label, value);
  }
}

int ShowHeaders(std::vector<std::string> arguments) {
  auto rawOption = std::find(arguments.begin(), arguments.end(), "--raw");
  bool raw = rawOption != arguments.end();
  if (raw) arguments.erase(rawOption);
  if (arguments.size() != 1) {
    std::fputs("usage: mailslice headers [--raw] FILE\n", stderr);
    return 2;
  }
  const std::string& file = arguments[0];
  std::string problem;
  if (!mailslice::tools::LoadMessage(file, problem)) return Fail(file, problem);
  for (const LabelledField& field : kHeaderFields) {
    if (raw) {
      PrintLine(field.label, field.read());
    } else {
      PrintDecoded(field);
    }
    if (field.read == GetDate) std::printf("Local date: %s\n", LocalDate().c_str());
  }
  MessageMemoryFree();
  return 0;
}

}  // namespace

int ShowBody(const std::vector<std::string>& arguments) {
  if (arguments.size() != 1) {
    std::fputs("usage: mailslice body FILE\n", stderr);
    return 2;
  }
  const std::string& file = arguments[0];
  std::string problem;
  if (!mailslice::tools::LoadMessage(file, problem)) return Fail(file, problem);
  int alternative = 0;
  CString body = GetReadingBody(GetMessageText(), &alternative, u"", 0, 0, 0);
  body.Replace(u"\r\n", u"\n");  // the reader's line ends, as a terminal wants them
  std::printf("%s\n", body.ToUtf8().c_str());
  MessageMemoryFree();
  return 0;
}

int ListAttachments(const std::vector<std::string>& arguments) {
  if (arguments.size() != 1) {
    std::fputs("usage: mailslice attachments FILE\n", stderr);
    return 2;
  }
  const std::string& file = arguments[0];
  std::string problem;
  if (!mailslice::tools::LoadMessage(file, problem)) return Fail(file, problem);
  CString names;
  int count = 0;
  GetAttachFile(GetMessageText(), names, &count);
  for (int i = 0; i < GetAttachArrayCount(); ++i) {
    std::printf("%s\n", GetAttachArrayFile(i).ToUtf8().c_str());
  }
  MessageMemoryFree();
  return 0;
}

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.empty() || arguments[0] == "--help" || arguments[0] == "-h" ||
      arguments[0] == "help") {
    std::fputs(kUsage, arguments.empty() ? stderr : stdout);
    return arguments.empty() ? 2 : 0;
  }
  std::string command = arguments[0];
  arguments.erase(arguments.begin());
  if (command == "headers") return ShowHeaders(arguments);
  if (command == "attachments") return ListAttachments(arguments);
  if (command == "body") return ShowBody(arguments);
  if (command == "save") return mailslice::tools::SaveAttachments(arguments);
  std::fprintf(stderr, "mailslice: unknown command '%s' (try mailslice --help)\n", command.c_str());
  return 2;
}
