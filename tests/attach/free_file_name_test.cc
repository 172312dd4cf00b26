#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/test_support.h"

namespace {

struct Case {
  std::vector<std::string> existing;  // files in the folder
  std::string asked;                  // relative to the folder
  std::string chosen;
};

// The first free numbered name, counting from 0; the extension follows the last dot of the
// name, never a dot in a folder, and a name without one is numbered at its end.
const Case kCases[] = {
    {{}, "a.txt", "a.txt"},
    {{"a.txt"}, "a.txt", "a(0).txt"},
    {{"a.txt", "a(0).txt"}, "a.txt", "a(1).txt"},
    {{"a.txt", "a(1).txt"}, "a.txt", "a(0).txt"},
    {{"r.tar.gz"}, "r.tar.gz", "r.tar(0).gz"},
    {{"a"}, "a", "a(0)"},
    {{".profile"}, ".profile", ".profile(0)"},
    {{"a."}, "a.", "a(0)."},
    {{"v.d/a"}, "v.d/a", "v.d/a(0)"},
    {{"x.y\\a"}, "x.y\\a", "x.y\\a(0)"},  // a backslash ends a folder name too
    {{"x\\b.c"}, "x\\b.c", "x\\b(0).c"},
};

TEST(FreeFileNameTest, NumbersFromZero) {
  for (const Case& c : kCases) {
    mailslice::testing::ScratchFolder folder;
    for (const std::string& name : c.existing) folder.Write(name, "taken");
    std::string base = folder.path().string() + "/";
    CString path = CString::FromUtf8(base + c.asked);
    EXPECT_EQ(IsFile(0, path), 1);
    EXPECT_EQ(path.ToUtf8(), base + c.chosen) << c.asked;
  }
}

TEST(FreeFileNameTest, PathsWithoutFolder) {
  mailslice::testing::ScratchFolder folder;
  folder.Write("n.txt", "taken");
  std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  CString path(u"n.txt");
  IsFile(0, path);
  std::filesystem::current_path(before);
  EXPECT_EQ(path, u"n(0).txt");
  CString empty;
  EXPECT_EQ(IsFile(0, empty), 1);
  EXPECT_EQ(empty, u"");
}

}  // namespace
