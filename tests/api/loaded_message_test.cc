// The loaded message is read in place (its parts are ended where they lie while they are read)
// and a caller's text through copies: both readings must give the same body, the same list and
// the same saved bytes, and leave the loaded message as it was.
#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/saving.h"
#include "support/test_support.h"

namespace {

using mailslice::testing::Contents;
using mailslice::testing::SaveScratch;
using mailslice::testing::ScopedEnv;

std::vector<std::filesystem::path> Messages() {
  std::vector<std::filesystem::path> found;
  const std::filesystem::path root = std::filesystem::path(MAILSLICE_EXAMPLES).parent_path();
  for (const char* folder : {"examples", "tests/data", "fuzz/seeds"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
      if (entry.path().extension() == ".eml") found.push_back(entry.path());
    }
  }
  return found;
}

struct Reading {
  std::string body;
  int alternative = 0;
  std::vector<std::string> names;
  std::vector<std::string> saved;
};

Reading Read(const char* text, const SaveScratch& scratch) {
  Reading reading;
  reading.body = GetReadingBody(text, &reading.alternative, CString(), 0, 0, 0).ToUtf8();
  CString names;
  int count = 0;
  GetAttachFile(text, names, &count);
  for (int i = 0; i < GetAttachArrayCount(); ++i) {
    CString name = GetAttachArrayFile(i);
    reading.names.push_back(name.ToUtf8());
    std::string destination = scratch.Path("saved");
    std::filesystem::remove(destination);
    int result = SaveAttachedFile(text, CString(), CString::FromUtf8(destination), u"B", name);
    reading.saved.push_back(std::to_string(result) + ":" + Contents(destination).value_or("-"));
  }
  return reading;
}

TEST(LoadedMessageTest, ReadsInPlaceAsThroughACopy) {
  SaveScratch scratch;
  for (const char* language : {"1", "81"}) {
    ScopedEnv device("MAILSLICE_LANGUAGE", language);
    for (const auto& path : Messages()) {
      SCOPED_TRACE(path.string() + " language " + language);
      if (MessageFileOpenAndMemoryAlloc(CString::FromUtf8(path.string())) != 1) continue;
      const std::string original = GetMessageText();
      Reading inPlace = Read(GetMessageText(), scratch);
      EXPECT_EQ(GetMessageText(), original);
      Reading copied = Read(original.c_str(), scratch);
      EXPECT_EQ(inPlace.body, copied.body);
      EXPECT_EQ(inPlace.alternative, copied.alternative);
      EXPECT_EQ(inPlace.names, copied.names);
      EXPECT_EQ(inPlace.saved, copied.saved);
      MessageMemoryFree();
    }
  }
}

}  // namespace
