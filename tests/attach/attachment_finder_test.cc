// Which part SaveAttachedFile saves for a name, and which bytes of it.
#include "attach/attachment_finder.h"

#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <string>

#include "support/saving.h"

namespace {

using mailslice::attach::PartBody;
using mailslice::testing::Contents;
using mailslice::testing::SaveScratch;

std::string Attachment(const std::string& name, const std::string& body,
                       const std::string& encoding = "7bit") {
  return "--B\r\nContent-Disposition: attachment; filename=\"" + name +
         "\"\r\nContent-Transfer-Encoding: " + encoding + "\r\n\r\n" + body + "\r\n";
}

std::string Message(const std::string& parts, const std::string& closing = "--B--\r\n") {
  return "Content-Type: multipart/mixed; boundary=\"B\"\r\n\r\n" + parts + closing;
}

// What SaveAttachedFile writes for the name (or, failing that, the second form), or nothing
// when it finds no part, answering 0.
std::optional<std::string> Saved(const char* message, const char16_t* name,
                                 const char16_t* altName = u"") {
  SaveScratch scratch;
  std::string destination = scratch.Path("saved");
  int result = SaveAttachedFile(message, altName, CString::FromUtf8(destination), u"B", name);
  EXPECT_FALSE(scratch.HoldsTempFile());
  std::optional<std::string> saved = Contents(destination);
  EXPECT_EQ(result, saved ? 1 : 0);
  return saved;
}

std::optional<std::string> Saved(const std::string& message, const char16_t* name,
                                 const char16_t* altName = u"") {
  return Saved(message.c_str(), name, altName);
}

TEST(AttachmentFinderTest, NameChoosesThePart) {
  std::string message = Message(Attachment("a.txt", "first") + Attachment("b.txt", "bee") +
                                Attachment("a.txt", "second"));
  EXPECT_EQ(Saved(message, u"a.txt"), "first");  // of two equal names the first wins
  EXPECT_EQ(Saved(message, u"b.txt", u"a.txt"), "bee");
  EXPECT_EQ(Saved(message, u"c.txt", u"b.txt"), "bee");  // the second form stands in
  EXPECT_EQ(Saved(message, u"", u"b.txt"), "bee");
  EXPECT_EQ(Saved(message, u"c.txt"), std::nullopt);
  EXPECT_EQ(Saved(message, u"A.TXT"), std::nullopt);
  EXPECT_EQ(Saved("no attachment here", u"a.txt"), std::nullopt);
  EXPECT_EQ(Saved(nullptr, u"a.txt"), std::nullopt);
}

TEST(AttachmentFinderTest, NamesAreTheListedOnes) {
  // A doubled extension is listed once, folder separators become "_", and an attached message
  // is listed by its subject: each is found under the name the list shows.
  std::string message =
      Message(Attachment("r.pdf.pdf", "pdf") + Attachment("../x", "x") +
              "--B\r\nContent-Type: message/rfc822\r\n\r\nSubject: Plan\r\n\r\nthe plan\r\n");
  EXPECT_EQ(Saved(message, u"r.pdf"), "pdf");
  EXPECT_EQ(Saved(message, u"r.pdf.pdf"), std::nullopt);
  EXPECT_EQ(Saved(message, u".._x"), "x");
  EXPECT_EQ(Saved(message, u"Plan.eml"), "Subject: Plan\r\n\r\nthe plan");
}

TEST(AttachmentFinderTest, EncodingsNestedPartsAndOddShapes) {
  std::string nested =
      "--B\r\nContent-Type: multipart/alternative; boundary=\"I\"\r\n\r\n"
      "--I\r\nContent-Type: text/plain\r\n\r\ntext\r\n"
      "--I\r\nContent-Disposition: attachment; filename=\"in.bin\"\r\n"
      "Content-Transfer-Encoding: Base64\r\n\r\naW5uZXI=\r\n--I--\r\n\r\n";
  std::string message =
      Message(nested + Attachment("q.txt", "a=3Db=\r\nc", "quoted-printable") +
              Attachment("b.bin", "aGk=", "BASE64") + Attachment("u.bin", "aGk=", "x-uuencode"));
  EXPECT_EQ(Saved(message, u"in.bin"), "inner");
  EXPECT_EQ(Saved(message, u"q.txt"), "a=bc");
  EXPECT_EQ(Saved(message, u"b.bin"), "hi");
  EXPECT_EQ(Saved(message, u"u.bin"), "aGk=");  // an unknown encoding is saved as it came
  // Lines that end in a lone LF.
  EXPECT_EQ(Saved("Content-Type: multipart/mixed; boundary=B\n\n--B\nContent-Disposition: "
                  "attachment; filename=a.txt\n\nline one\nline two\n--B--\n",
                  u"a.txt"),
            "line one\nline two");
  // Cut off before the closing delimiter: the parts before the open last one are found.
  std::string open = Message(Attachment("a.txt", "aaa") + Attachment("b.txt", "bbb"), "");
  EXPECT_EQ(Saved(open, u"a.txt"), "aaa");
  // A part that is all header has an empty body.
  EXPECT_EQ(Saved(Message("--B\r\nContent-Disposition: attachment; filename=e.txt\r\n"), u"e.txt"),
            "");
  EXPECT_EQ(PartBody("--B\r\nH: x\r\n\r\n"), "");
}

}  // namespace
