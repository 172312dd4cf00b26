// mailslice scan [--json] PATH...: one summary line for every message in files, folders and
// Maildir folders.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <memory>

#include "exit_status.h"
#include "json_output.h"
#include "message_fields.h"
#include "message_loading.h"
#include "message_walk.h"
#include "program.h"
#include "progress_bar.h"

namespace mailslice::tools {
namespace {

struct ScanOptions {
  std::vector<std::string> paths;
  bool json = false;
};

struct Summary {
  std::string date;
  std::string from;
  std::string subject;
  size_t attachments = 0;
};

Summary Summarize() {
  return {LocalDateAndTime(), GetMailFrom(GetFrom()).ToUtf8(),
          GetParsingSubject(GetSubject()).ToUtf8(), AttachmentNames().size()};
}

// Tabs separate the columns; a control character inside a value (a tab or a line break from
// an encoded word) becomes a blank so that each message keeps to its line.
std::string Column(std::string value) {
  for (char& ch : value) {
    if (static_cast<unsigned char>(ch) < ' ' || ch == '\x7F') ch = ' ';
  }
  return value;
}

void PrintLine(const std::string& file, const Summary& summary) {
  std::string line = Column(file) + '\t' + Column(summary.date) + '\t' + Column(summary.from) +
                     '\t' + Column(summary.subject) + '\t' + std::to_string(summary.attachments);
  std::printf("%s\n", line.c_str());
}

void PrintFailure(const std::string& file, const LoadProblem& problem) {
  std::printf("%s\terror: %s\n", Column(file).c_str(), problem.why.c_str());
}

void PrintJson(const std::string& file, const Summary& summary) {
  PrintJsonLine({{"file", file},
                 {"local_date", summary.date},
                 {"from", summary.from},
                 {"subject", summary.subject},
                 {"attachment_count", summary.attachments}});
}

void PrintJsonFailure(const std::string& file, const LoadProblem& problem) {
  PrintJsonLine({{"file", file}, {"error", problem.why}, {"status", problem.status}});
}

// Reads one message and prints its line; false when it could not be read.
bool ScanOne(const WalkEntry& entry, bool json) {
  const std::string& file = entry.path;
  std::optional<LoadProblem> problem;
  if (entry.unlisted) {
    problem = LoadProblem{kStatusUnreadable, *entry.unlisted};
  } else {
    problem = LoadMessage(file);
  }
  if (problem) {
    json ? PrintJsonFailure(file, *problem) : PrintFailure(file, *problem);
    return false;
  }
  LoadedMessage loaded;
  Summary summary = Summarize();
  json ? PrintJson(file, summary) : PrintLine(file, summary);
  return true;
}

int Scan(const ScanOptions& options) {
  auto start = std::chrono::steady_clock::now();
  std::vector<WalkEntry> files = MessageFiles(options.paths);
  ProgressBar progress(files.size());
  bool sharedTerminal = isatty(STDOUT_FILENO) == 1;
  size_t failures = 0;
  for (const WalkEntry& entry : files) {
    if (sharedTerminal) progress.Clear();
    if (!ScanOne(entry, options.json)) ++failures;
    std::fflush(stdout);
    progress.Advance();
  }
  progress.Clear();
  std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
  std::fprintf(stderr, "mailslice: %zu message%s, %zu could not be read, %.2f s\n", files.size(),
               files.size() == 1 ? "" : "s", failures, seconds.count());
  return failures == 0 ? kStatusDone : kStatusSomeUnread;
}

}  // namespace

void AddScanCommand(Program& program) {
  auto options = std::make_shared<ScanOptions>();
  CLI::App& command = program.AddCommand(
      "scan", "list every message in files, folders and Maildirs",
      "Prints one line for every message in the files, folders and Maildir folders (cur/ and\n"
      "new/): file, local date, sender, subject and number of attachments, tab-separated. A\n"
      "message that cannot be read gets 'error: WHY' after its file and the scan goes on. The\n"
      "number of messages and failures and the time taken follow on standard error; a progress\n"
      "bar shows there when it is a terminal and there are 100 messages or more.",
      [options] { return Scan(*options); });
  command.add_option("PATH", options->paths, "message files and folders")
      ->required()
      ->type_name("");
  command.add_flag("--json", options->json, "print one JSON object per message instead");
}

}  // namespace mailslice::tools
