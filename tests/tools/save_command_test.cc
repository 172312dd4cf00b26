// mailslice save: whatever names a message gives its attachments, the files land inside the
// chosen folder and overwrite nothing.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
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

std::string Attachment(const std::string& parameter, const std::string& body) {
  return "--B\r\nContent-Disposition: attachment; " + parameter + "\r\n\r\n" + body + "\r\n";
}

class SaveCommandTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(message_, std::ios::binary)
        << "Subject: names\r\nContent-Type: multipart/mixed; boundary=\"B\"\r\n\r\n" +
               Attachment("filename=\"../../x\"", "up") +
               Attachment("filename=\"/etc/passwd\"", "abs") +
               Attachment("filename*=utf-8''a%00b%0Ac%2F..%5C.txt", "ctl") +
               Attachment("filename=\"..\"", "dots") + Attachment("filename=\"ok.txt\"", "ok") +
               "--B\r\nContent-Type: message/rfc822\r\n\r\nSubject: ../../etc/evil\r\n\r\nhi\r\n" +
               "--B--\r\n";
    fs::create_directory(out_);
    std::ofstream(out_ + "/ok.txt") << "mine";
  }

  // Runs "mailslice save MESSAGE NAMES -o FOLDER": the exit status, the lines of standard
  // output and the standard error.
  int Save(const std::string& names) {
#ifndef MAILSLICE_PROGRAM
    (void)names;
    return -1;
#else
    std::string out = scratch_.Path("stdout"), err = scratch_.Path("stderr");
    std::string command = "MAILSLICE_TEMP='" + scratch_.Path("temp") +
                          "' '" MAILSLICE_PROGRAM "' save '" + message_ + "' " + names + " -o '" +
                          out_ + "' >'" + out + "' 2>'" + err + "'";
    int status = std::system(command.c_str());
    std::istringstream lines(Contents(out).value_or(""));
    lines_.clear();
    for (std::string line; std::getline(lines, line);) lines_.push_back(line);
    errors_ = Contents(err).value_or("");
    fs::remove(out), fs::remove(err);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
  }

  mailslice::testing::SaveScratch scratch_;
  std::string message_ = scratch_.Path("message.eml"), out_ = scratch_.Path("out"), errors_;
  std::vector<std::string> lines_;
};

TEST_F(SaveCommandTest, HostileNamesStayInsideTheFolder) {
  int status = Save("");
  if (status == -1) GTEST_SKIP() << "the program is not built";
  ASSERT_EQ(status, 0) << errors_;
  std::set<std::string> saved, top;
  for (const std::string& path : lines_) {
    EXPECT_EQ(fs::path(path).parent_path(), fs::path(out_)) << path;
    EXPECT_TRUE(fs::is_regular_file(path)) << path;
    saved.insert(fs::path(path).filename().string());
  }
  EXPECT_EQ(saved, (std::set<std::string>{".._.._x", "_etc_passwd", "abc_.._.txt", "noname",
                                          "ok(0).txt", "....etcevil.eml"}));
  EXPECT_EQ(Contents(out_ + "/ok.txt"), "mine");  // never overwritten
  EXPECT_EQ(Contents(out_ + "/ok(0).txt"), "ok");
  for (const auto& entry : fs::directory_iterator(scratch_.folder())) {
    top.insert(entry.path().filename().string());
  }
  EXPECT_EQ(top, (std::set<std::string>{"message.eml", "out", "temp"}));
  EXPECT_TRUE(fs::is_empty(scratch_.Path("temp")));
}

TEST_F(SaveCommandTest, NamedAttachmentsAndErrors) {
  fs::remove(out_ + "/ok.txt");
  int status = Save("ok.txt");
  if (status == -1) GTEST_SKIP() << "the program is not built";
  EXPECT_EQ(status, 0);
  EXPECT_EQ(lines_, std::vector<std::string>{out_ + "/ok.txt"});
  // One line naming the file and the problem, and status 1; nothing is saved.
  EXPECT_EQ(Save("ok.txt missing.pdf"), 1);
  EXPECT_EQ(errors_, "mailslice: " + message_ + ": has no attachment named 'missing.pdf'\n");
  EXPECT_FALSE(fs::exists(out_ + "/ok(0).txt"));
}

}  // namespace
