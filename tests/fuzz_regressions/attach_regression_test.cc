// Saving attachments one by one, as the fuzzed reader flow does: the second and later saves of
// one message reuse its cut parts, and must still notice a different message or device.
#include <gtest/gtest.h>
#include <mailslice/mailslice.h>

#include <fstream>
#include <sstream>
#include <string>

#include "support/test_support.h"

namespace {

using mailslice::testing::ScopedEnv;
using mailslice::testing::ScratchFolder;

std::string Message(const std::string& name, const std::string& body) {
  return "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"B\"\r\n\r\n"
         "--B\r\nContent-Type: text/plain\r\n\r\nhello\r\n"
         "--B\r\nContent-Type: text/plain\r\nContent-Disposition: attachment; filename=\"" +
         name + "\"\r\n\r\n" + body + "\r\n--B--\r\n";
}

class SaveOneByOneTest : public ::testing::Test {
 protected:
  // Lists the message and saves the attachment listed first; its bytes, or "<not saved>".
  std::string SaveFirst(const char* text) {
    CString names;
    int count = 0;
    GetAttachFile(text, names, &count);
    if (GetAttachArrayCount() < 1) return "<not listed>";
    CString name = GetAttachArrayFile(0);
    std::string path = (scratch_.path() / "saved").string();
    if (SaveAttachedFile(text, name, CString::FromUtf8(path), u"B", name) != 1) {
      return "<not saved>";
    }
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
  }

  ScratchFolder scratch_;
  ScopedEnv temp_{"MAILSLICE_TEMP", (scratch_.path() / "temp").string()};
  ScopedEnv codePage_{"MAILSLICE_CODEPAGE", std::nullopt};
};

// An application may read the next message into the buffer that held the last one.
TEST_F(SaveOneByOneTest, AnotherMessageInTheSameBufferIsCutAgain) {
  std::string first = Message("a.txt", "first body");
  std::string second = Message("a.txt", "other body");
  ASSERT_EQ(first.size(), second.size());
  std::string buffer = first;
  EXPECT_EQ(SaveFirst(buffer.c_str()), "first body");
  EXPECT_EQ(SaveFirst(buffer.c_str()), "first body");
  buffer.replace(0, buffer.size(), second);
  EXPECT_EQ(SaveFirst(buffer.c_str()), "other body");
}

// The same encoded name reads differently in another code page; each language saves the
// attachment under the name it lists.
TEST_F(SaveOneByOneTest, AnotherDeviceLanguageNamesTheAttachmentsAgain) {
  std::string message = Message("=?windows-1251?B?z/Do4uXy?=.txt", "body");
  for (const char* language : {"7", "1", "7"}) {
    ScopedEnv device("MAILSLICE_LANGUAGE", language);
    EXPECT_EQ(SaveFirst(message.c_str()), "body") << "language " << language;
  }
}

// A boundary parameter whose value is only a line break reads as an empty boundary; the list
// is cut at it all the same, and so must be the search of the attachment to save.
TEST_F(SaveOneByOneTest, AnEmptyDeclaredBoundaryCutsTheSavesAsTheList) {
  std::string message =
      "Content-Type: multipart/mixed; boundary=\n\r\n\r\n--\r\n"
      "Content-Disposition: attachment; filename=\"a.txt\"\r\n\r\nbody\r\n--\r\n";
  EXPECT_EQ(SaveFirst(message.c_str()), "body");
}

}  // namespace
