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
  struct Limit {
    const char* deviceType;
    uintmax_t largest;
  };
  for (Limit limit : {Limit{"3", 4'500'000}, Limit{"4", 6'500'000}, Limit{"7", 6'500'000},
                      Limit{"8", 9'900'000}, Limit{"11", 9'900'000}}) {
    SCOPED_TRACE(limit.deviceType);
    ScopedEnv type("MAILSLICE_DEVICE_TYPE", limit.deviceType);
    ASSERT_EQ(Load(first_), 1);
    EXPECT_EQ(Load(SparseFile(limit.largest + 1)), 0);
    EXPECT_EQ(GetSubject(), u"first");  // refused before the previous message was given up
    EXPECT_EQ(Load(SparseFile(limit.largest)), 1);
    EXPECT_EQ(GetMessageText()[0], '\0');
  }
  for (const char* unlimited : {"0", "1", "2", "12"}) {
    ScopedEnv type("MAILSLICE_DEVICE_TYPE", unlimited);
    EXPECT_EQ(Load(SparseFile(9'900'001)), 1) << unlimited;
  }
}

TEST_F(MessageBufferTest, EmptyOrMissingFileKeepsThePreviousMessage) {
  ASSERT_EQ(Load(first_), 1);
  EXPECT_EQ(Load(folder_.Write("empty.eml", "")), 0);
  EXPECT_EQ(Load((folder_.path() / "missing.eml").string()), 0);
  EXPECT_EQ(Load(folder_.path().string()), 0);  // a folder is no message
  EXPECT_EQ(GetSubject(), u"first");
}

TEST_F(MessageBufferTest, SecondLoadReplacesTheFirstAndFreeingTwiceIsHarmless) {
  ASSERT_EQ(Load(first_), 1);
  ASSERT_EQ(Load(folder_.Write("second.eml", "Subject: second\n\nbody\n")), 1);
  EXPECT_EQ(GetSubject(), u"second");
  EXPECT_STREQ(GetMessageText(), "Subject: second\n\nbody\n");
  MessageMemoryFree();
  MessageMemoryFree();
  EXPECT_EQ(GetMessageText(), nullptr);
  EXPECT_EQ(GetSubject(), u"");
}

TEST_F(MessageBufferTest, NulByteEndsTheTextForEveryReader) {
  std::string message("Subject: a\r\n\r\nbody\0To: hidden\r\n\r\n", 33);
  ASSERT_EQ(Load(folder_.Write("nul.eml", message)), 1);
  EXPECT_EQ(std::strlen(GetMessageText()), 18u);
  EXPECT_EQ(GetTo(), u"");
}

TEST_F(MessageBufferTest, PathsAreUtf8HostPaths) {
  ASSERT_EQ(Load(folder_.Write("письмо 日本.eml", "Subject: unicode path\n\nx\n")), 1);
  EXPECT_EQ(GetSubject(), u"unicode path");
}

}  // namespace

namespace {

class HeaderExportsTest : public ::testing::Test {
 protected:
  ~HeaderExportsTest() override { MessageMemoryFree(); }
  void Load(const std::string& message) {
    ASSERT_EQ(MessageFileOpenAndMemoryAlloc(CString::FromUtf8(folder_.Write("m.eml", message))), 1);
  }
  ScratchFolder folder_;
};

TEST_F(HeaderExportsTest, EachExportReadsItsField) {
  Load(
      "Delivered-To: d1\r\nX-Apparently-To: d2\r\nEnvelope-to: d3\r\nFrom: f\r\nTo: t\r\n"
      "Cc: c\r\nBcc: b\r\nDate: Mon, 5 Jan 2009\r\nSubject: s\r\n\r\nbody\r\n");
  EXPECT_EQ(GetDelivered1(), u"d1");
  EXPECT_EQ(GetDelivered2(), u"d2");
  EXPECT_EQ(GetDelivered3(), u"d3");
  EXPECT_EQ(GetFrom(), u"f");
  EXPECT_EQ(GetTo(), u"t");
  EXPECT_EQ(GetCc(), u"c");
  EXPECT_EQ(GetBcc(), u"b");
  EXPECT_EQ(GetBody(), u"b");  // the Bcc value, not the body
  EXPECT_EQ(GetDate(), u"Mon, 5 Jan 2009");
  EXPECT_EQ(GetSubject(), u"s");
}

TEST_F(HeaderExportsTest, ReplyToFallsBackToFromSenderAndReturnPath) {
  Load("From: f\r\nSender: s\r\nReturn-Path: r\r\n\r\nx");
  EXPECT_EQ(GetReplyTo(), u"f");
  Load("Sender: s\r\nReturn-Path: r\r\n\r\nx");
  EXPECT_EQ(GetReplyTo(), u"s");
  Load("Return-Path: r\r\n\r\nx");
  EXPECT_EQ(GetReplyTo(), u"r");
  Load("Reply-To: rt\r\nFrom: f\r\n\r\nx");
  EXPECT_EQ(GetReplyTo(), u"rt");
  Load("X: 1\r\n\r\nx");
  EXPECT_EQ(GetReplyTo(), u"");
  EXPECT_EQ(GetBody(), u"");
}

}  // namespace
