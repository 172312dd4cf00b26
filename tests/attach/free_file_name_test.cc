#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <string>
#include <vector>

#include "support/test_support.h"

namespace {

// The first free numbered name, counting from 0; the extension follows the last dot of the
// name, never a dot in a folder (a backslash ends a folder name too), and a name without one
// is numbered at its end.
TEST(FreeFileNameTest, NumbersFromZero) {
  const std::tuple<std::vector<std::string>, std::string, std::string> cases[] = {
      {{}, "a.txt", "a.txt"},
      {{"a.txt"}, "a.txt", "a(0).txt"},
      {{"a.txt", "a(0).txt"}, "a.txt", "a(1).txt"},
      {{"a.txt", "a(1).txt"}, "a.txt", "a(0).txt"},
      {{"r.tar.gz"}, "r.tar.gz", "r.tar(0).gz"},
      {{"a"}, "a", "a(0)"},
      {{".profile"}, ".profile", ".profile(0)"},
      {{"a."}, "a.", "a(0)."},
      {{"v.d/a"}, "v.d/a", "v.d/a(0)"},
      {{"x.y\\a"}, "x.y\\a", "x.y\\a(0)"},
      {{"x\\b.c"}, "x\\b.c", "x\\b(0).c"}};
  for (const auto& [existing, asked, chosen] : cases) {
    mailslice::testing::ScratchFolder folder;
    for (const std::string& name : existing) folder.Write(name, "taken");
    std::string base = folder.path().string() + "/";
    CString path = CString::FromUtf8(base + asked);
    EXPECT_EQ(IsFile(0, path), 1);
    EXPECT_EQ(path.ToUtf8(), base + chosen) << asked;
  }
}

TEST(FreeFileNameTest, PathsWithoutFolder) {
  mailslice::testing::ScratchFolder folder;
  folder.Write("n.txt", "taken");
  std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  CString path(u"n.txt"), empty;
  IsFile(0, path);
  std::filesystem::current_path(before);
  EXPECT_EQ(path, u"n(0).txt");
  EXPECT_EQ(IsFile(0, empty), 1);
  EXPECT_EQ(empty, u"");
}

}  // namespace
