// mailslice --json: every object parses, has the documented keys in the documented order, and
// says what the text view of the same command says.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "support/test_support.h"

namespace {

using Json = nlohmann::ordered_json;
using mailslice::testing::ScratchFolder;

struct ProgramRun {
  int status = -1;
  std::string out;
};

// Runs the program in the source tree with settings of its own: no message files, the zone
// given, a registry store and temporary folder in a scratch folder.
ProgramRun RunProgram(const std::string& arguments) {
#ifndef MAILSLICE_PROGRAM
  (void)arguments;
  return {};
#else
  static ScratchFolder scratch;
  std::string command = "cd '" + std::string(MAILSLICE_EXAMPLES) +
                        "/..' && env -u MAILSLICE_LANGUAGE -u MAILSLICE_CODEPAGE "
                        "-u MAILSLICE_MESSAGES -u MAILSLICE_DEVICE_TYPE TZ=UTC0 "
                        "MAILSLICE_REGISTRY='" +
                        (scratch.path() / "registry.reg").string() + "' MAILSLICE_TEMP='" +
                        (scratch.path() / "temp").string() + "' '" + MAILSLICE_PROGRAM + "' " +
                        arguments + " 2>/dev/null";
  ProgramRun run;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return run;
  char buffer[4096];
  for (size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
    run.out.append(buffer, got);
  int status = pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
#endif
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> Keys(const Json& object) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : object.items()) keys.push_back(key);
  return keys;
}

// Options of each example: the device language its text needs.
const std::vector<std::pair<std::string, std::string>> kExamples = {
    {"examples/welcome.eml", ""},
    {"examples/with-attachments.eml", ""},
    {"examples/plain.eml", ""},
    {"examples/japanese.eml", "--language 81"},
    {"examples/korean.eml", "--language 82"},
    {"examples/russian.eml", "--language 7 --codepage KOI8-R"},
    {"examples/newsletter.eml", ""},
    {"examples/forwarded.eml", ""},
};

TEST(ProgramJsonTest, ShowSaysWhatTheTextSays) {
  for (const auto& [file, options] : kExamples) {
    SCOPED_TRACE(file);
    ProgramRun text = RunProgram("show --24h " + options + " " + file);
    ProgramRun json = RunProgram("show --json --24h " + options + " " + file);
    if (text.status == -1) GTEST_SKIP() << "the program is not built";
    ASSERT_EQ(json.status, 0);
    ASSERT_EQ(Lines(json.out).size(), 1u);
    Json object = Json::parse(json.out);
    EXPECT_EQ(Keys(object),
              (std::vector<std::string>{"file", "from", "from_address", "to", "cc", "subject",
                                        "date", "local_date", "body", "attachments"}));
    std::string header = "From: " + object["from"].get<std::string>() +
                         "\nTo: " + object["to"].get<std::string>() + "\n";
    std::string cc;
    for (const Json& address : object["cc"])
      cc += (cc.empty() ? "" : ", ") + address.get<std::string>();
    if (!cc.empty()) header += "Cc: " + cc + "\n";
    header += "Subject: " + object["subject"].get<std::string>() +
              "\nDate: " + object["local_date"].get<std::string>() + "\n";
    for (const Json& attachment : object["attachments"]) {
      header += "Attachment: " + attachment["name"].get<std::string>() + " (" +
                std::to_string(attachment["size"].get<uint64_t>()) + " bytes)\n";
    }
    std::string body = object["body"];
    EXPECT_EQ(text.out, header + "\n" + body + (body.ends_with('\n') ? "" : "\n"));
    EXPECT_EQ(object["file"], file);
  }
}

TEST(ProgramJsonTest, HeadersDecodedAndRaw) {
  ProgramRun text = RunProgram("headers --24h examples/welcome.eml");
  if (text.status == -1) GTEST_SKIP() << "the program is not built";
  Json decoded = Json::parse(RunProgram("headers --json --24h examples/welcome.eml").out);
  EXPECT_EQ(Keys(decoded),
            (std::vector<std::string>{"file", "from", "from_address", "to", "cc", "bcc", "subject",
                                      "date", "reply_to", "delivered_to", "x_apparently_to",
                                      "envelope_to", "local_date"}));
  EXPECT_EQ(decoded["cc"], Json::parse(R"(["Carol <carol@example.net>", "dave@example.net"])"));
  EXPECT_NE(text.out.find("Local date: " + decoded["local_date"].get<std::string>() + "\n"),
            std::string::npos);
  Json raw = Json::parse(RunProgram("headers --raw --json --24h examples/plain.eml").out);
  EXPECT_FALSE(raw.contains("from_address"));
  EXPECT_EQ(raw["cc"], "Tom Baker <tom@example.com>, lee@example.com");
  EXPECT_EQ(raw["subject"], "=?utf-8?B?THVuY2ggb24gRnJpZGF5PyDigJMgY2Fmw6k=?=");
  EXPECT_EQ(raw["delivered_to"], "team@example.com");
}

// The sizes are those of the files that save writes.
TEST(ProgramJsonTest, AttachmentSizesAreTheSavedSizes) {
  ScratchFolder saved;
  ProgramRun save =
      RunProgram("save examples/with-attachments.eml -o '" + saved.path().string() + "'");
  if (save.status == -1) GTEST_SKIP() << "the program is not built";
  Json listed = Json::parse(RunProgram("attachments --json examples/with-attachments.eml").out);
  std::vector<std::string> names =
      Lines(RunProgram("attachments examples/with-attachments.eml").out);
  ASSERT_EQ(listed["attachments"].size(), names.size());
  ASSERT_EQ(names.size(), 2u);
  for (size_t index = 0; index < names.size(); ++index) {
    const Json& attachment = listed["attachments"][index];
    EXPECT_EQ(attachment["name"], names[index]);
    EXPECT_EQ(attachment["size"], std::filesystem::file_size(saved.path() / names[index]));
  }
}

TEST(ProgramJsonTest, ScanGivesOneObjectPerMessage) {
  ProgramRun scan = RunProgram("scan --json tests/data/program/scan");
  if (scan.status == -1) GTEST_SKIP() << "the program is not built";
  EXPECT_EQ(scan.status, 7);
  std::vector<std::string> lines = Lines(scan.out);
  ASSERT_EQ(lines.size(), 6u);
  int failures = 0;
  for (const std::string& line : lines) {
    Json object = Json::parse(line);
    if (object.contains("error")) {
      ++failures;
      EXPECT_EQ(Keys(object), (std::vector<std::string>{"file", "error", "status"}));
      EXPECT_EQ(object["status"], 5);
    } else {
      EXPECT_EQ(Keys(object), (std::vector<std::string>{"file", "local_date", "from", "subject",
                                                        "attachment_count"}));
    }
  }
  EXPECT_EQ(failures, 2);
  EXPECT_EQ(Json::parse(lines[1])["attachment_count"], 2);
}

}  // namespace
