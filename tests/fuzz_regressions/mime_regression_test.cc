// Messages the fuzz targets found to break the MIME layer, cut down to what breaks it.
#include <gtest/gtest.h>
#include <mailslice/mailslice.h>

#include <memory>
#include <string>
#include <vector>

namespace {

// Counts and cuts `text` through the exports, as an application does: count + 1 records.
std::vector<std::string> CutPieces(const std::string& text, const CString& boundary) {
  int count = -1;
  EXPECT_EQ(GetMultiPartNoInAttachFile(text.c_str(), boundary, &count), 0);
  std::vector<PartRecord*> records;
  for (int i = 0; i <= count; ++i) records.push_back(new PartRecord());
  GetMultiPart(text.c_str(), boundary, records.data());
  std::vector<std::string> pieces;
  for (int i = 0; i < count; ++i) pieces.push_back(records[i]->partText);
  EXPECT_EQ(records[count]->partText, nullptr);
  OnDeleteMailMessage(records.data(), count + 1);
  return pieces;
}

// A "boundary=" that names our own boundary marks a forwarded message to step over, up to
// the first closing delimiter. Here that closing delimiter stands before the delimiters the
// walk has passed already: the walk goes on forward instead of cutting a piece that ends
// before it starts.
TEST(MimeRegressionTest, EmbeddedMessageEndingBehindTheWalkIsNotJumpedBackTo) {
  const std::string text = "r\n--inner--inner--innerboundary=\"inner\"--inner\n";
  EXPECT_EQ(CutPieces(text, u"inner"),
            (std::vector<std::string>{"--inner", "--inner", "--innerboundary=\"inner\""}));
  int alternative = 0;
  EXPECT_EQ(GetReadingBody(text.c_str(), &alternative, u"", 0, 0, 0), u"");
  CString names;
  int count = 0;
  EXPECT_EQ(GetAttachFile(text.c_str(), names, &count), 0);
}

}  // namespace
