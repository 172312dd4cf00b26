// mailslice: reads a mail message file the way the library hands it to a mail application.
#include "program.h"

int main(int argc, char** argv) {
  mailslice::tools::Program program;
  mailslice::tools::AddShowCommand(program);
  mailslice::tools::AddHeadersCommand(program);
  mailslice::tools::AddBodyCommand(program);
  mailslice::tools::AddAttachmentsCommand(program);
  mailslice::tools::AddSaveCommand(program);
  mailslice::tools::AddScanCommand(program);
  return program.Run(argc, argv);
}
