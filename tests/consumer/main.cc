// Reads a message through the installed library: its subject, sender and attachment names.
// Prints them and returns 0 when they are what the example message holds.
#include <mailslice/mailslice.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: consumer examples/with-attachments.eml\n", stderr);
    return 2;
  }
  if (MessageFileOpenAndMemoryAlloc(CString::FromUtf8(argv[1])) != 1) {
    std::fprintf(stderr, "consumer: cannot load %s\n", argv[1]);
    return 1;
  }
  std::string subject = GetParsingSubject(GetSubject()).ToUtf8();
  std::string sender = GetMailFromAddress(GetFrom()).ToUtf8();
  CString names;
  int count = 0;
  GetAttachFile(GetMessageText(), names, &count);
  std::printf("%s\n%s\n", subject.c_str(), sender.c_str());
  for (int index = 0; index < GetAttachArrayCount(); ++index) {
    std::printf("%s\n", GetAttachArrayFile(index).ToUtf8().c_str());
  }
  bool expected = subject == "Quarterly report" && sender == "alice@example.org" &&
                  GetAttachArrayCount() == 2 && GetAttachArrayFile(0) == u"report.pdf";
  MessageMemoryFree();
  return expected ? 0 : 1;
}
