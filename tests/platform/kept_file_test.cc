#include "platform/kept_file.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "support/test_support.h"

namespace mailslice::platform {
namespace {

constexpr int64_t kSecond = 1'000'000'000;

// Files held in memory, with the status the test gives them; counts the opens.
class MemoryFiles final : public FileSystem {
 public:
  struct Entry {
    std::string content;
    FileStatus status;
  };
  std::map<std::string, Entry> files;
  int opens = 0;

  std::unique_ptr<File> OpenForReading(const std::string& path, ErrorCode* error) override {
    ++opens;
    auto found = files.find(path);
    if (found == files.end()) {
      *error = kErrorFileNotFound;
      return nullptr;
    }
    return std::make_unique<MemoryFile>(found->second);
  }
  std::optional<FileStatus> Status(const std::string& path) override {
    auto found = files.find(path);
    if (found == files.end()) return std::nullopt;
    return found->second.status;
  }
  std::unique_ptr<File> CreateNew(const std::string&, ErrorCode* error) override {
    *error = kErrorAccessDenied;
    return nullptr;
  }
  ErrorCode Copy(const std::string&, const std::string&) override { return kErrorAccessDenied; }
  ErrorCode Rename(const std::string&, const std::string&) override { return kErrorAccessDenied; }
  ErrorCode Remove(const std::string&) override { return kErrorAccessDenied; }
  bool Exists(const std::string& path) override { return files.count(path) != 0; }
  ErrorCode MakeFolders(const std::string&, bool) override { return kErrorAccessDenied; }

 private:
  struct MemoryFile final : File {
    explicit MemoryFile(const Entry& entry) : entry(entry) {}
    std::optional<uint64_t> Size() override { return entry.content.size(); }
    std::optional<FileStatus> Status() override { return entry.status; }
    ErrorCode Read(void* buffer, size_t size, size_t* got) override {
      *got = std::min(size, entry.content.size() - at);
      std::memcpy(buffer, entry.content.data() + at, *got);
      at += *got;
      return kErrorSuccess;
    }
    ErrorCode Write(const void*, size_t) override { return kErrorAccessDenied; }
    ErrorCode Close() override { return kErrorSuccess; }
    Entry entry;
    size_t at = 0;
  };
};

TEST(KeptFileTest, ReadsAgainOnlyWhenTheFileMayHaveChanged) {
  MemoryFiles files;
  ScopedFileSystem scope(files);
  FileStatus settled;
  settled.inode = 7;
  settled.size = 3;
  settled.modificationTime = settled.changeTime = NowNanoseconds() - 60 * kSecond;
  files.files["/store"] = {"old", settled};
  KeptFile kept;
  ASSERT_NE(kept.Read("/store"), nullptr);
  EXPECT_EQ(*kept.Read("/store"), "old");
  EXPECT_EQ(files.opens, 1);  // the second read found the file as it was
  // Any change of identity, size or times is a new file.
  auto changes = std::initializer_list<void (*)(FileStatus&)>{
      [](FileStatus& s) { ++s.inode; }, [](FileStatus& s) { ++s.device; },
      [](FileStatus& s) { s.changeTime += 1; }, [](FileStatus& s) { s.modificationTime -= 1; }};
  std::string content = "abc";
  for (auto change : changes) {
    content[0] = static_cast<char>(content[0] + 1);
    change(files.files["/store"].status);
    files.files["/store"].content = content;
    int before = files.opens;
    EXPECT_EQ(*kept.Read("/store"), content);
    EXPECT_EQ(files.opens, before + 1);
  }
  // Another path is another file; a file gone is no content.
  files.files["/other"] = {"xyz", settled};
  EXPECT_EQ(*kept.Read("/other"), "xyz");
  files.files.erase("/other");
  EXPECT_EQ(kept.Read("/other"), nullptr);
}

TEST(KeptFileTest, AReadSoonAfterAChangeIsNotTrusted) {
  MemoryFiles files;
  ScopedFileSystem scope(files);
  FileStatus fresh;
  fresh.size = 3;
  fresh.modificationTime = fresh.changeTime = NowNanoseconds();
  files.files["/store"] = {"one", fresh};
  KeptFile kept;
  EXPECT_EQ(*kept.Read("/store"), "one");
  // Changed within the same timestamp tick: the status is the same, the content is not.
  files.files["/store"].content = "two";
  EXPECT_EQ(*kept.Read("/store"), "two");
}

// On the host: a file replaced right after it was read is read again.
TEST(KeptFileTest, SeesAFileRewrittenOnTheHost) {
  testing::ScratchFolder folder;
  std::string path = folder.Write("store", "first");
  KeptFile kept;
  EXPECT_EQ(*kept.Read(path), "first");
  folder.Write("store", "other");
  EXPECT_EQ(*kept.Read(path), "other");
}

}  // namespace
}  // namespace mailslice::platform
