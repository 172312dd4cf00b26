#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <cstring>
#include <filesystem>

#include "support/test_support.h"

namespace {

using mailslice::testing::ScopedEnv;
using mailslice::testing::ScratchFolder;

class MessageBufferTest : public ::testing::Test {
 protected:
  ~MessageBufferTest() override { MessageMemoryFree(); }

  // A sparse file of `size` bytes: fast to make, read as zeros.
  std::string SparseFile(uintmax_t size) {
    std::string path = folder_.Write("sparse-" + std::to_string(size), "");
    std::filesystem::resize_file(path, size);
    return path;
  }

  static int Load(const std::string& path) {
    return MessageFileOpenAndMemoryAlloc(CString::FromUtf8(path));
  }

  ScratchFolder folder_;
  std::string first_ = folder_.Write("first.eml", "Subject: first\r\n\r\nbody\r\n");
};

TEST_F(MessageBufferTest, DeviceTypeGroupsLimitTheSizeInclusively) {
  const std::pair<const char*, uintmax_t> limits[] = {
      {"3", 4'500'000}, {"4", 6'500'000}, {"7", 6'500'000}, {"8", 9'900'000}, {"11", 9'900'000}};
  for (auto [deviceType, largest] : limits) {
    ScopedEnv type("MAILSLICE_DEVICE_TYPE", deviceType);
    ASSERT_EQ(Load(first_), 1);
    EXPECT_EQ(Load(SparseFile(largest + 1)), 0) << deviceType;
    EXPECT_EQ(GetSubject(), u"first");  // refused before the previous message was given up
    EXPECT_EQ(Load(SparseFile(largest)), 1) << deviceType;
    EXPECT_EQ(GetMessageText()[0], '\0');
  }
  for (const char* unlimited : {"0", "1", "2", "12"}) {
    ScopedEnv type("MAILSLICE_DEVICE_TYPE", unlimited);
    EXPECT_EQ(Load(SparseFile(9'900'001)), 1) << unlimited;
  }
}

TEST_F(MessageBufferTest, AFailedLoadKeepsThePreviousMessageAndALoadReplacesIt) {
  ASSERT_EQ(Load(first_), 1);
  EXPECT_EQ(Load(folder_.Write("empty.eml", "")), 0);
  EXPECT_EQ(Load((folder_.path() / "missing.eml").string()), 0);
  EXPECT_EQ(Load(folder_.path().string()), 0);  // a folder is no message
  EXPECT_EQ(GetSubject(), u"first");
  // Paths are UTF-8 host paths.
  ASSERT_EQ(Load(folder_.Write("письмо 日本.eml", "Subject: second\n\nbody\n")), 1);
  EXPECT_EQ(GetSubject(), u"second");
  EXPECT_STREQ(GetMessageText(), "Subject: second\n\nbody\n");
  MessageMemoryFree();
  MessageMemoryFree();  // twice is harmless
  EXPECT_EQ(GetMessageText(), nullptr);
  EXPECT_EQ(GetSubject(), u"");
}

TEST_F(MessageBufferTest, NulByteEndsTheTextForEveryReader) {
  const char message[] = "Subject: a\r\n\r\nbody\0To: x\r\n\r\n";
  ASSERT_EQ(Load(folder_.Write("nul.eml", std::string(message, sizeof message - 1))), 1);
  EXPECT_EQ(std::strlen(GetMessageText()), 18u);
  EXPECT_EQ(GetTo(), u"");
}

// Each export reads its own field; GetBody gives the Bcc value, not the body, and Reply-To
// falls back to From, Sender and Return-Path in turn.
TEST_F(MessageBufferTest, EachHeaderExportReadsItsField) {
  ASSERT_EQ(Load(folder_.Write("m.eml",
                               "Delivered-To: d1\r\nX-Apparently-To: d2\r\nEnvelope-to: d3\r\n"
                               "From: f\r\nTo: t\r\nCc: c\r\nBcc: b\r\nDate: Mon, 5 Jan 2009\r\n"
                               "Subject: s\r\nSender: r\r\n\r\nbody\r\n")),
            1);
  CString (*exports[])() = {GetDelivered1, GetDelivered2, GetDelivered3, GetFrom,
                            GetTo,         GetCc,         GetBcc,        GetBody,
                            GetDate,       GetSubject,    GetReplyTo};
  std::string values;
  for (auto get : exports) values += get().ToUtf8() + "|";
  EXPECT_EQ(values, "d1|d2|d3|f|t|c|b|b|Mon, 5 Jan 2009|s|f|");
  const std::pair<const char*, const char16_t*> replyTo[] = {
      {"Sender: s\r\nReturn-Path: r\r\n\r\nx", u"s"},
      {"Return-Path: r\r\n\r\nx", u"r"},
      {"Reply-To: rt\r\nFrom: f\r\n\r\nx", u"rt"},
      {"X: 1\r\n\r\nx", u""}};
  for (auto [message, expected] : replyTo) {
    ASSERT_EQ(Load(folder_.Write("m.eml", message)), 1);
    EXPECT_EQ(GetReplyTo(), expected) << message;
  }
}

}  // namespace
