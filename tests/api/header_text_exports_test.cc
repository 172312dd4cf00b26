// The address and subject exports forward to the main parser and hand over its results.
#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include "support/encoded_words.h"

namespace {

TEST(HeaderTextExportsTest, ForwardToTheParser) {
  mailslice::testing::ScopedEnv messages("MAILSLICE_MESSAGES", std::nullopt);
  mailslice::testing::ScopedLanguage english(1);
  EXPECT_EQ(GetMailFrom(CString()), u"(unknown)");
  EXPECT_EQ(GetMailTo(CString(u"=?utf-8?Q?Jos=C3=A9?= <j@x>")), u"José <j@x>");
  EXPECT_EQ(GetMailFromAddress(CString(u"José <j@x>")), u"j@x");
  EXPECT_EQ(GetParsingSubject(CString(u"Re: =?utf-8?B?w6l0w6k=?=")), u"Re: été");
  CStringArray list;
  GetCCList(CString(u"B <b@y>, a@x"), &list);
  EXPECT_EQ(list.GetSize(), 2);
  GetCCList(CString(u"a@x"), nullptr);
}

}  // namespace
