#include "attach/attachment_saver.h"

#include <gtest/gtest.h>
#include <mailslice/exports.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
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
  using Path = const std::string&;

 public:
  ErrorCode writeFailure = 0, closeFailure = 0, copyFailure = 0;
  size_t writableBytes = SIZE_MAX;

  std::unique_ptr<File> OpenForReading(Path path, ErrorCode* error) override {
    return host_.OpenForReading(path, error);
  }
  std::unique_ptr<File> CreateNew(Path path, ErrorCode* error) override {
    std::unique_ptr<File> file = host_.CreateNew(path, error);
    return file ? std::make_unique<FailingFile>(std::move(file), *this) : nullptr;
  }
  std::unique_ptr<File> CreateAtDestination(Path destination, uint64_t device) override {
    std::unique_ptr<File> file = host_.CreateAtDestination(destination, device);
    return file ? std::make_unique<FailingFile>(std::move(file), *this) : nullptr;
  }
  ErrorCode Copy(Path from, Path to) override {
    return copyFailure != 0 ? copyFailure : host_.Copy(from, to);
  }
  ErrorCode Rename(Path from, Path to) override { return host_.Rename(from, to); }
  ErrorCode Remove(Path path) override { return host_.Remove(path); }
  bool Exists(Path path) override { return host_.Exists(path); }
  std::optional<FileStatus> Status(Path path) override { return host_.Status(path); }
  ErrorCode MakeFolders(Path path, bool privateToUser) override {
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
      size_t room = std::min(files.writableBytes - written, size);
      written += room;
      file->Write(data, room);  // what fits lands on the disk
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

TEST(AttachmentSaverTest, FailedSavesLeaveNothingBehind) {
  // What fails (a write past a share of the body, the close, the copy), and what each saver
  // answers: the Base64 saver reports only a full disk, any other failure still answers 1 (but
  // the destination never gets the partial file).
  const struct {
    ErrorCode write;
    size_t writableDivisor;  // the body's size over the bytes that can be written
    ErrorCode close, copy;
    int results[3];  // Base64, plain, quoted-printable
  } failures[] = {{112, SIZE_MAX, 0, 0, {112, 112, 112}}, {112, 3, 0, 0, {112, 112, 112}},
                  {29, 600, 0, 0, {1, 29, 29}},           {0, 1, 112, 0, {112, 112, 112}},
                  {0, 1, 0, 112, {112, 112, 112}},        {0, 1, 0, 5, {1, 5, 5}}};
  FailingFiles files;
  mailslice::platform::ScopedFileSystem scope(files);
  // A large body goes through a staged file, a small one straight to the destination (where a
  // copy that fails cannot happen: its close is the last step).
  for (size_t size : {size_t{600'000}, size_t{6'000}}) {
    std::string body = RandomBytes(size, 1);
    for (const auto& failure : failures) {
      bool staged = size > 100'000;
      files.writeFailure = failure.write;
      files.writableBytes =
          failure.writableDivisor == 1 ? SIZE_MAX : size / failure.writableDivisor;
      files.closeFailure = failure.close;
      files.copyFailure = failure.copy;
      for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(::testing::Message()
                     << kSavers[i].name << " of " << size << " failing " << failure.write << "/"
                     << failure.close << "/" << failure.copy);
        SaveScratch scratch;
        int result = kSavers[i].save(kSavers[i].encode(body), scratch.Path("out"));
        if (staged || failure.copy == 0) {
          EXPECT_EQ(result, failure.results[i]);
          EXPECT_FALSE(scratch.HoldsTempFile() || scratch.Holds("out"));
        } else {
          EXPECT_EQ(result, 1);
          EXPECT_EQ(Contents(scratch.Path("out")), body);
        }
      }
    }
  }
}

// The host's own file system on a full volume: a small tmpfs mounted in the test's folder.
TEST(AttachmentSaverTest, FullVolumeGives112) {
  SaveScratch scratch;
  std::string small = scratch.Path("small");
  fs::create_directories(small);
  if (geteuid() != 0 || mount("tmpfs", small.c_str(), "tmpfs", 0, "size=256k,mode=0700") != 0) {
    GTEST_SKIP() << "no small tmpfs to fill; FailedSavesLeaveNothingBehind fakes a full disk";
  }
  struct Unmount {
    void operator()(const char* path) const { umount2(path, MNT_DETACH); }
  };
  std::unique_ptr<const char, Unmount> unmount(small.c_str());
  std::string body = RandomBytes(1'000'000, 2);
  for (const Saver& saver : kSavers) {
    SCOPED_TRACE(saver.name);
    std::string encoded = saver.encode(body);
    {
      mailslice::testing::ScopedEnv temp("MAILSLICE_TEMP", small);  // the temporary file fills it
      EXPECT_EQ(saver.save(encoded, scratch.Path("out")), 112);
      EXPECT_FALSE(scratch.Holds("out"));
    }
    EXPECT_EQ(saver.save(encoded, scratch.Path("small/out")), 112);  // the copy fills it
    EXPECT_TRUE(fs::is_empty(small));
    EXPECT_FALSE(scratch.HoldsTempFile());
  }
  // A small save written straight into its new destination on a volume that is nearly full:
  // the write fails and the new file goes again.
  std::ofstream(small + "/filler") << std::string(240'000, 'x');
  mailslice::testing::ScopedEnv temp("MAILSLICE_TEMP", small);
  std::string smallBody = RandomBytes(40'000, 3);
  for (const Saver& saver : kSavers) {
    SCOPED_TRACE(saver.name);
    EXPECT_EQ(saver.save(saver.encode(smallBody), scratch.Path("small/out")), 112);
    EXPECT_FALSE(scratch.Holds("small/out"));
  }
}

TEST(AttachmentSaverTest, TemporaryFileAndDestination) {
  SaveScratch scratch;
  auto save = [&](const std::string& to) { return kSavers[0].save("aGVsbG8=", scratch.Path(to)); };
  // A link planted at the temporary path is removed, not written through.
  std::string tempFile = scratch.Path("temp/AttachTempfile~.txt");
  fs::create_directories(scratch.Path("temp"));
  std::ofstream(scratch.Path("victim")) << "keep";
  fs::create_symlink(scratch.Path("victim"), tempFile);
  EXPECT_EQ(save("out"), 1);
  EXPECT_EQ(Contents(scratch.Path("out")), "hello");
  EXPECT_EQ(Contents(scratch.Path("victim")), "keep");
  EXPECT_FALSE(fs::exists(fs::symlink_status(tempFile)));
  // An existing destination is replaced.
  std::ofstream(scratch.Path("old")) << "a much longer old content";
  EXPECT_EQ(save("old"), 1);
  EXPECT_EQ(Contents(scratch.Path("old")), "hello");
  // A destination folder that is missing: only the Base64 saver keeps quiet about it.
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(kSavers[i].save("data", scratch.Path("none/out")), i == 0 ? 1 : 2);
    EXPECT_FALSE(scratch.HoldsTempFile());
  }
  // Something that cannot be deleted at the temporary path, a temporary folder that is a file,
  // a region that ends before it starts: nothing is saved.
  fs::create_directories(tempFile + "/inside");
  EXPECT_EQ(save("blocked"), 0);
  fs::remove_all(tempFile);
  const char* text = "aGVsbG8=";
  EXPECT_EQ(SaveAttachFile(text + 1, text, CString::FromUtf8(scratch.Path("a"))), 0);
  mailslice::testing::ScopedEnv temp("MAILSLICE_TEMP", scratch.Path("victim"));
  EXPECT_EQ(save("nowhere"), 0);
  EXPECT_FALSE(scratch.Holds("blocked") || scratch.Holds("a") || scratch.Holds("nowhere"));
}

// Gives `folder` the default ACL "user::rw-, group::---, other::---"; false where the file
// system keeps no ACLs.
bool SetOwnerOnlyDefaultAcl(const std::string& folder) {
  struct Entry {
    uint16_t tag, permissions;
    uint32_t id;
  };
  constexpr uint16_t kUserObject = 0x01, kGroupObject = 0x04, kOther = 0x20;
  constexpr uint32_t kNoId = 0xFFFFFFFF;
  struct {
    uint32_t version = 2;
    Entry entries[3] = {{kUserObject, 6, kNoId}, {kGroupObject, 0, kNoId}, {kOther, 0, kNoId}};
  } acl;
  return setxattr(folder.c_str(), "system.posix_acl_default", &acl, sizeof acl, 0) == 0;
}

// Whether the temporary file is moved to the destination or copied there, the saved file is
// the one a copy makes: the mode the umask gives a new file, the group of the folder's files.
TEST(AttachmentSaverTest, SavedFileIsANewFileOfItsFolder) {
  struct Umask {
    explicit Umask(mode_t mask) : previous(umask(mask)) {}
    ~Umask() { umask(previous); }
    mode_t previous;
  };
  auto modeOf = [](const std::string& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
  };
  for (mode_t mask : {mode_t{022}, mode_t{077}, mode_t{002}}) {
    Umask scoped(mask);
    SaveScratch scratch;
    // The temporary folder closed to others (the file moves), then open to them (it is copied).
    for (mode_t tempMode : {mode_t{0700}, mode_t{0755}}) {
      fs::create_directories(scratch.Path("temp"));
      chmod(scratch.Path("temp").c_str(), tempMode);
      ASSERT_EQ(kSavers[0].save("aGVsbG8=", scratch.Path("out")), 1);
      EXPECT_EQ(Contents(scratch.Path("out")), "hello");
      EXPECT_EQ(modeOf(scratch.Path("out")), 0666 & ~mask) << std::oct << mask << " " << tempMode;
      EXPECT_FALSE(scratch.HoldsTempFile());
    }
  }
  // A folder whose default ACL gives its files their access: the saved file has that access,
  // not the umask's (owner only here).
  {
    Umask scoped(022);
    SaveScratch scratch;
    std::string shaped = scratch.Path("shaped");
    fs::create_directories(shaped);
    if (SetOwnerOnlyDefaultAcl(shaped)) {
      ASSERT_EQ(kSavers[0].save("aGVsbG8=", shaped + "/out"), 1);
      EXPECT_EQ(modeOf(shaped + "/out"), 0600u);
    }
  }
  // A folder whose files take its group: the saved file has it too; a temporary folder whose
  // files take its group gives the saved file nothing of it.
  SaveScratch scratch;
  std::string shared = scratch.Path("shared");
  fs::create_directories(shared);
  if (geteuid() != 0 || chown(shared.c_str(), 0, 4242) != 0 || chmod(shared.c_str(), 02775) != 0) {
    GTEST_SKIP() << "no folder of another group to save into";
  }
  ASSERT_EQ(kSavers[0].save("aGVsbG8=", shared + "/out"), 1);
  struct stat status {};
  ASSERT_EQ(stat((shared + "/out").c_str(), &status), 0);
  EXPECT_EQ(status.st_gid, 4242u);
  mailslice::testing::ScopedEnv temp("MAILSLICE_TEMP", shared);
  ASSERT_EQ(chmod(shared.c_str(), 02700), 0);
  ASSERT_EQ(kSavers[0].save("aGVsbG8=", scratch.Path("plain")), 1);
  ASSERT_EQ(stat(scratch.Path("plain").c_str(), &status), 0);
  EXPECT_EQ(status.st_gid, getegid());
}

// The copy to the destination reads the temporary file from its start, also where the kernel
// cannot copy between the two file systems (a temporary folder in memory).
TEST(AttachmentSaverTest, CopiesAcrossFileSystems) {
  char shared[] = "/dev/shm/mailslice-test-XXXXXX";
  if (mkdtemp(shared) == nullptr) GTEST_SKIP() << "no /dev/shm to put the temporary folder in";
  struct Remove {
    void operator()(const char* path) const { fs::remove_all(path); }
  };
  std::unique_ptr<const char, Remove> remove(shared);
  SaveScratch scratch;
  mailslice::testing::ScopedEnv temp("MAILSLICE_TEMP", shared);
  std::string body = RandomBytes(300'000, 7, true);
  for (const Saver& saver : kSavers) {
    SCOPED_TRACE(saver.name);
    ASSERT_EQ(saver.save(saver.encode(body), scratch.Path("out")), 1);
    EXPECT_TRUE(Contents(scratch.Path("out")) == body);
    EXPECT_TRUE(fs::is_empty(shared));
  }
}

// The savers decode in blocks and chunks: what they save must be what the whole-text decoder
// gives.
TEST(AttachmentSaverTest, Base64BlocksDecodeAsTheWholeText) {
  // Noise the decoder skips (spaces, a stray "=" at a line start) and a padding "=" that ends
  // the text, spread over several blocks so that blocks end inside groups and inside noise.
  std::mt19937 generator(3);
  std::string lines = Base64Lines(RandomBytes(400'000, 4)), noisy;
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
                          "=C3=A9", "=\r\n=41", "_",       "=4\r\n", " \t", "=\r=41", "\r\n"};
  std::mt19937 generator(6);
  std::string text;
  for (int i = 0; i < 2000; ++i) text += pieces[generator() % std::size(pieces)];
  SaveScratch scratch;
  for (const std::string& whole : {text + "end", mailslice::testing::Repeated("=41==42", 300)}) {
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
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {"Content-Transfer-Encoding: base64\r\n\r\naGk=\r\n", "hi"},
      {"Content-Transfer-Encoding: Base64\r\n\r\naGk=\r\n", "aGk=\r\n"},
      {"Content-Transfer-Encoding: quoted-printable\r\n\r\na=3Db\r\n", "a=3Db\r\n"},
      {"Subject: no empty line\r\nbody", "body"},  // behind the first line break
      {"no line break at all", std::nullopt},      // nothing saved, result 0
      {nullptr, std::nullopt}};
  for (const auto& [part, saved] : cases) {
    fs::remove(scratch.Path("out"));
    EXPECT_EQ(SaveAttachedEmlFile(part, u"", CString::FromUtf8(scratch.Path("out")), u""),
              saved ? 1 : 0);
    EXPECT_EQ(Contents(scratch.Path("out")), saved);
  }
}

}  // namespace
