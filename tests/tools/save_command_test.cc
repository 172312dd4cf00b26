// mailslice save: whatever names a message gives its attachments, the files land inside the
// chosen folder and overwrite nothing.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/saving.h"

namespace {

namespace fs = std::filesystem;
using mailslice::testing::Contents;
using mailslice::testing::SaveScratch;

struct ProgramRun {
  int status;
  std::vector<std::string> lines;  // standard output
  std::string errors;
};

ProgramRun RunProgram(const SaveScratch& scratch, const std::string& arguments) {
#ifndef MAILSLICE_PROGRAM
  (void)scratch, (void)arguments;
  return {-1, {}, "the program is not built"};
#else
  std::string errors = scratch.Path("stderr");
  std::string command = std::string("MAILSLICE_TEMP='") + scratch.Path("temp") + "' '" +
                        MAILSLICE_PROGRAM + "' save " + arguments + " 2>'" + errors + "'";
  ProgramRun run{-1, {}, {}};
  FILE* out = popen(command.c_str(), "r");
  if (out == nullptr) return run;
  char line[4096];
  while (std::fgets(line, sizeof line, out) != nullptr) {
    std::string text(line);
    if (!text.empty() && text.back() == '\n') text.pop_back();
    run.lines.push_back(text);
  }
  int status = pclose(out);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.errors = Contents(errors).value_or("");
  fs::remove(errors);
  return run;
#endif
}

std::string Attachment(const std::string& parameter, const std::string& body) {
  return "--B\r\nContent-Disposition: attachment; " + parameter + "\r\n\r\n" + body + "\r\n";
}

std::string HostileMessage() {
  return "Subject: names\r\nContent-Type: multipart/mixed; boundary=\"B\"\r\n\r\n" +
         Attachment("filename=\"../../x\"", "up") + Attachment("filename=\"/etc/passwd\"", "abs") +
         Attachment("filename*=utf-8''a%00b%0Ac%2F..%5C.txt", "ctl") +
         Attachment("filename=\"..\"", "dots") + Attachment("filename=\"ok.txt\"", "ok") +
         "--B\r\nContent-Type: message/rfc822\r\n\r\nSubject: ../../etc/evil\r\n\r\nhi\r\n" +
         "--B--\r\n";
}

TEST(SaveCommandTest, HostileNamesStayInsideTheFolder) {
  SaveScratch scratch;
  std::string message = scratch.Path("message.eml");
  std::ofstream(message, std::ios::binary) << HostileMessage();
  fs::create_directory(scratch.Path("out"));
  std::ofstream(scratch.Path("out/ok.txt")) << "mine";
  ProgramRun run = RunProgram(scratch, "'" + message + "' -o '" + scratch.Path("out") + "'");
  if (run.status == -1) GTEST_SKIP() << run.errors;
  ASSERT_EQ(run.status, 0) << run.errors;
  std::set<std::string> saved;
  for (const std::string& path : run.lines) {
    fs::path file(path);
    EXPECT_EQ(file.parent_path(), fs::path(scratch.Path("out"))) << path;
    EXPECT_TRUE(fs::is_regular_file(file)) << path;
    saved.insert(file.filename().string());
  }
  EXPECT_EQ(saved, (std::set<std::string>{".._.._x", "_etc_passwd", "abc_.._.txt", "noname",
                                          "ok(0).txt", "....etcevil.eml"}));
  EXPECT_EQ(Contents(scratch.Path("out/ok.txt")), "mine");  // never overwritten
  EXPECT_EQ(Contents(scratch.Path("out/ok(0).txt")), "ok");
  std::set<std::string> top;
  for (const auto& entry : fs::directory_iterator(scratch.folder())) {
    top.insert(entry.path().filename().string());
  }
  EXPECT_EQ(top, (std::set<std::string>{"message.eml", "out", "temp"}));
  EXPECT_TRUE(fs::is_empty(scratch.Path("temp")));
}

TEST(SaveCommandTest, NamedAttachmentsAndErrors) {
  SaveScratch scratch;
  std::string message = scratch.Path("message.eml");
  std::ofstream(message, std::ios::binary) << HostileMessage();
  fs::create_directory(scratch.Path("out"));
  ProgramRun run = RunProgram(scratch, "'" + message + "' ok.txt -o '" + scratch.Path("out") + "'");
  if (run.status == -1) GTEST_SKIP() << run.errors;
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.lines, std::vector<std::string>{scratch.Path("out") + "/ok.txt"});
  // One line naming the file and the problem, and status 1; nothing is saved.
  run =
      RunProgram(scratch, "'" + message + "' ok.txt missing.pdf -o '" + scratch.Path("out") + "'");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.errors, "mailslice: " + message + ": has no attachment named 'missing.pdf'\n");
  EXPECT_FALSE(fs::exists(scratch.Path("out/ok(0).txt")));
}

}  // namespace
