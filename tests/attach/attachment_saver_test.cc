#include "attach/attachment_saver.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <mailslice/exports.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include "codec/base64_decoder.h"
#include "codec/quoted_printable.h"
#include "platform/file_system.h"
#include "support/saving.h"

namespace {

using mailslice::attach::SaveQuotedPrintableFile;
using mailslice::platform::ErrorCode;
using mailslice::platform::File;
using mailslice::platform::FileStatus;
using mailslice::platform::FileSystem;
using mailslice::testing::Base64Lines;
using mailslice::testing::Contents;
using mailslice::testing::QuotedPrintableLines;
using mailslice::testing::RandomBytes;
using mailslice::testing::SaveScratch;
namespace fs = std::filesystem;

// The three savers over one body: Base64, as it is, quoted-printable.
struct Saver {
  const char* name;
  std::function<std::string(const std::string&)> encode;
  std::function<int(const std::string&, const std::string&)> save;
};

const Saver kSavers[] = {
    {"Base64", Base64Lines,
     [](const std::string& text, const std::string& to) {
       return SaveBase64File(text.data(), text.data() + text.size(), CString::FromUtf8(to));
     }},
    {"plain", [](const std::string& bytes) { return bytes; },
     [](const std::string& text, const std::string& to) {
       return SaveAttachFile(text.data(), text.data() + text.size(), CString::FromUtf8(to));
     }},
    {"quoted-printable", QuotedPrintableLines,
     [](const std::string& text, const std::string& to) {
       return SaveQuotedPrintableFile(text, to);
     }},
};

std::string Decoded(const std::string& text, char* (*decode)(const char*, int*, int*)) {
  int length = static_cast<int>(text.size());
  char* bytes = decode(text.c_str(), &length, nullptr);
  std::string result(bytes, static_cast<size_t>(length));
  std::free(bytes);
  return result;
}

// The host's file system, failing where a test says: writes past a number of bytes, the close,
// or the copy.
class FailingFiles final : public FileSystem {
 public:
  ErrorCode writeFailure = 0, closeFailure = 0, copyFailure = 0;
  size_t writableBytes = SIZE_MAX;

  std::unique_ptr<File> OpenForReading(const std::string& path, ErrorCode* error) override {
    return host_.OpenForReading(path, error);
  }
  std::unique_ptr<File> CreateNew(const std::string& path, ErrorCode* error) override {
    std::unique_ptr<File> file = host_.CreateNew(path, error);
    return file ? std::make_unique<FailingFile>(std::move(file), *this) : nullptr;
  }
  ErrorCode Copy(const std::string& from, const std::string& to) override {
    return copyFailure != 0 ? copyFailure : host_.Copy(from, to);
  }
  ErrorCode Rename(const std::string& from, const std::string& to) override {
    return host_.Rename(from, to);
  }
  ErrorCode Remove(const std::string& path) override { return host_.Remove(path); }
  bool Exists(const std::string& path) override { return host_.Exists(path); }
  std::optional<FileStatus> Status(const std::string& path) override { return host_.Status(path); }
  ErrorCode MakeFolders(const std::string& path, bool privateToUser) override {
    return host_.MakeFolders(path, privateToUser);
  }

 private:
  struct FailingFile final : File {
    FailingFile(std::unique_ptr<File> file, FailingFiles& files)
        : file(std::move(file)), files(files) {}
    std::optional<uint64_t> Size() override { return file->Size(); }
    ErrorCode Read(void* buffer, size_t size, size_t* got) override {
      return file->Read(buffer, size, got);
    }
    ErrorCode Write(const void* data, size_t size) override {
      size_t room = files.writableBytes - written;
      written += std::min(room, size);
      file->Write(data, std::min(room, size));  // what fits lands on the disk
      return room < size ? files.writeFailure : 0;
    }
    ErrorCode Close() override {
      ErrorCode closed = file->Close();
      return files.closeFailure != 0 ? files.closeFailure : closed;
    }
    std::unique_ptr<File> file;
    FailingFiles& files;
    size_t written = 0;
  };

  FileSystem& host_ = mailslice::platform::Files();
};

struct Failure {
  const char* what;
  ErrorCode write;
  size_t writableBytes;
  ErrorCode close, copy;
  int base64Result, plainResult, quotedPrintableResult;
};

// The Base64 saver reports only a full disk; any other failure still answers 1 (but the
// destination never gets the partial file).
const Failure kFailures[] = {
    {"disk full at once", 112, 0, 0, 0, 112, 112, 112},
    {"disk full after a block", 112, 200'000, 0, 0, 112, 112, 112},
    {"write fault", 29, 1000, 0, 0, 1, 29, 29},
    {"disk full on close", 0, SIZE_MAX, 112, 0, 112, 112, 112},
    {"disk full on copy", 0, SIZE_MAX, 0, 112, 112, 112, 112},
    {"copy refused", 0, SIZE_MAX, 0, 5, 1, 5, 5},
};

TEST(AttachmentSaverTest, FailedSavesLeaveNothingBehind) {
  std::string body = RandomBytes(600'000, 1);
  FailingFiles files;
  mailslice::platform::ScopedFileSystem scope(files);
  for (const Failure& failure : kFailures) {
    files.writeFailure = failure.write;
    files.writableBytes = failure.writableBytes;
    files.closeFailure = failure.close;
    files.copyFailure = failure.copy;
    const int expected[] = {failure.base64Result, failure.plainResult,
                            failure.quotedPrintableResult};
    for (int i = 0; i < 3; ++i) {
      SCOPED_TRACE(std::string(failure.what) + ", " + kSavers[i].name);
      SaveScratch scratch;
      EXPECT_EQ(kSavers[i].save(kSavers[i].encode(body), scratch.Path("out")), expected[i]);
      EXPECT_FALSE(scratch.HoldsTempFile());
      EXPECT_FALSE(scratch.Holds("out"));
    }
  }
}

// A small tmpfs mounted inside the test's own folder, unmounted again at the end.
class SmallVolume {
 public:
  explicit SmallVolume(const std::string& path) : path_(path) {
    fs::create_directories(path);
    if (geteuid() != 0) {
      problem_ = "not running as root";
    } else if (mount("tmpfs", path.c_str(), "tmpfs", 0, "size=256k,mode=0700") != 0) {
      problem_ = std::string("mount failed: ") + std::strerror(errno);
    }
  }
  ~SmallVolume() {
    if (problem_.empty()) umount2(path_.c_str(), MNT_DETACH);
  }
  const std::string& problem() const { return problem_; }

 private:
  std::string path_, problem_;
};

TEST(AttachmentSaverTest, FullVolumeGives112) {
  SaveScratch scratch;
  SmallVolume volume(scratch.Path("small"));
  if (!volume.problem().empty()) {
    GTEST_SKIP() << "no small tmpfs to fill (" << volume.problem()
                 << "); FailedSavesLeaveNothingBehind covers a full disk with a fake one";
  }
  std::string body = RandomBytes(1'000'000, 2);
  for (const Saver& saver : kSavers) {
    SCOPED_TRACE(saver.name);
    std::string encoded = saver.encode(body);
    {
      // The temporary file fills the volume.
      mailslice::testing::ScopedEnv temp("MAILSLICE_TEMP", scratch.Path("small"));
      EXPECT_EQ(saver.save(encoded, scratch.Path("out")), 112);
      EXPECT_FALSE(scratch.Holds("out"));
    }
    // The copy fills it.
    EXPECT_EQ(saver.save(encoded, scratch.Path("small/out")), 112);
    EXPECT_TRUE(fs::is_empty(scratch.Path("small")));
    EXPECT_FALSE(scratch.HoldsTempFile());
  }
}

TEST(AttachmentSaverTest, TemporaryFileAndDestination) {
  SaveScratch scratch;
  std::string text = "aGVsbG8=";
  auto save = [&](const std::string& to) {
    return SaveBase64File(text.data(), text.data() + text.size(), CString::FromUtf8(to));
  };
  // A link planted at the temporary path is removed, not written through.
  std::string tempFile = scratch.Path("temp/AttachTempfile~.txt");
  fs::create_directories(scratch.Path("temp"));
  std::ofstream(scratch.Path("victim")) << "keep";
  fs::create_symlink(scratch.Path("victim"), tempFile);
  EXPECT_EQ(save(scratch.Path("out")), 1);
  EXPECT_EQ(Contents(scratch.Path("out")), "hello");
  EXPECT_EQ(Contents(scratch.Path("victim")), "keep");
  EXPECT_FALSE(fs::exists(fs::symlink_status(tempFile)));
  // An existing destination is replaced.
  std::ofstream(scratch.Path("old")) << "a much longer old content";
  EXPECT_EQ(save(scratch.Path("old")), 1);
  EXPECT_EQ(Contents(scratch.Path("old")), "hello");
  // A destination folder that is missing: only the Base64 saver keeps quiet about it.
  const int missingFolder[] = {1, 2, 2};
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(kSavers[i].save("data", scratch.Path("none/out")), missingFolder[i]);
    EXPECT_FALSE(scratch.HoldsTempFile());
  }
  // Something that cannot be deleted at the temporary path, a temporary folder that is a file,
  // a region that ends before it starts: nothing is saved.
  fs::create_directories(tempFile + "/inside");
  EXPECT_EQ(save(scratch.Path("blocked")), 0);
  fs::remove_all(tempFile);
  EXPECT_EQ(SaveAttachFile(text.data() + 1, text.data(), CString::FromUtf8(scratch.Path("a"))), 0);
  mailslice::testing::ScopedEnv temp("MAILSLICE_TEMP", scratch.Path("victim"));
  EXPECT_EQ(save(scratch.Path("nowhere")), 0);
  EXPECT_FALSE(scratch.Holds("blocked") || scratch.Holds("a") || scratch.Holds("nowhere"));
}

TEST(AttachmentSaverTest, Base64BlocksDecodeAsTheWholeText) {
  // Noise the decoder skips (spaces, a stray "=" at a line start) and a padding "=" that ends
  // the text, spread over several blocks so that blocks end inside groups and inside noise.
  std::mt19937 generator(3);
  std::string lines = Base64Lines(RandomBytes(400'000, 4));
  std::string noisy;
  for (char ch : lines) {
    noisy += ch;
    if (generator() % 97 == 0) noisy += ' ';
    if (ch == '\n' && generator() % 5 == 0) noisy += '=';
  }
  std::string stopped = Base64Lines(RandomBytes(200'000, 5)) + Base64Lines("xy") + lines;
  SaveScratch scratch;
  for (const std::string& text : {noisy, stopped, lines.substr(0, 131'073)}) {
    ASSERT_EQ(kSavers[0].save(text, scratch.Path("out")), 1);
    EXPECT_TRUE(Contents(scratch.Path("out")) == Decoded(text, mailslice::codec::DecodeBase64));
  }
}

TEST(AttachmentSaverTest, QuotedPrintableChunksDecodeAsTheWholeText) {
  // Every kind of escape, in lines of many lengths, cut into chunks of many sizes.
  const char* pieces[] = {"a=3Db",  "=\r\n",    "x=A\r\n", "=\n",    "=3d", "==\r\n", "plain text",
                          "=C3=A9", "=\r\n=41", "_",       "=4\r\n", " \t", "=\r=41"};
  std::mt19937 generator(6);
  std::string text;
  for (int i = 0; i < 2000; ++i) {
    text += pieces[generator() % std::size(pieces)];
    if (generator() % 7 == 0) text += "\r\n";
  }
  std::string escapes;
  for (int i = 0; i < 300; ++i) escapes += "=41==42";
  SaveScratch scratch;
  for (const std::string& whole : {text + "end", escapes}) {
    for (size_t chunk = 12; chunk < whole.size() + 2; chunk += 1 + chunk / 4) {
      ASSERT_EQ(SaveQuotedPrintableFile(whole, scratch.Path("out"), chunk), 1);
      ASSERT_TRUE(Contents(scratch.Path("out")) ==
                  Decoded(whole, mailslice::codec::DecodeQuotedPrintable))
          << "chunks of " << chunk;
    }
  }
  // An escape cut off by the end of the body ends it.
  for (auto [cut, saved] : {std::pair{"end=4", "end"}, {"x==", "x"}, {"=", ""}}) {
    EXPECT_EQ(SaveQuotedPrintableFile(cut, scratch.Path("out")), 1);
    EXPECT_EQ(Contents(scratch.Path("out")), saved) << cut;
  }
}

TEST(AttachmentSaverTest, EmlPartsAreSavedByTheirExactEncoding) {
  SaveScratch scratch;
  struct Case {
    const char* part;
    const char* saved;  // null: nothing saved, result 0
  } cases[] = {
      {"Content-Transfer-Encoding: base64\r\n\r\naGk=\r\n", "hi"},
      {"Content-Transfer-Encoding: Base64\r\n\r\naGk=\r\n", "aGk=\r\n"},
      {"Content-Transfer-Encoding: quoted-printable\r\n\r\na=3Db\r\n", "a=3Db\r\n"},
      {"Subject: no empty line\r\nbody", "body"},  // behind the first line break
      {"no line break at all", nullptr},
      {nullptr, nullptr},
  };
  for (const Case& c : cases) {
    std::string to = scratch.Path("out");
    fs::remove(to);
    EXPECT_EQ(SaveAttachedEmlFile(c.part, u"", CString::FromUtf8(to), u""), c.saved ? 1 : 0);
    EXPECT_EQ(Contents(to), c.saved ? std::optional<std::string>(c.saved) : std::nullopt);
  }
}

}  // namespace
