// The address and subject readers, through the exports that hand them to the mail application.
#include "header/address_subject.h"

#include <gtest/gtest.h>
#include <mailslice/exports.h>

#include <string>
#include <vector>

#include "support/encoded_words.h"

namespace mailslice::header {
namespace {

using namespace mailslice::testing;

TEST(MailFromTest, DecodesTheNameAndGivesTheUnknownMessageForAnEmptyValue) {
  ScopedEnv messages("MAILSLICE_MESSAGES", std::nullopt);
  {
    ScopedLanguage japanese(81);
    EXPECT_EQ(GetMailFrom(CString()), u"(不明)");
    std::string name = Base64Word("ISO-2022-JP", InCodePage(kIso2022Jp, u"山田太郎"));
    EXPECT_EQ(GetMailTo(AsHeader(name + " <taro@example.jp>")), u"山田太郎 <taro@example.jp>");
  }
  // A Cyrillic name comes back alone, without the address behind it.
  ScopedLanguage russian(7);
  std::string name = Base64Word("koi8-r", InCodePage(kKoi8r, u"Иван Петров"));
  EXPECT_EQ(GetMailFrom(AsHeader(name + " <ivan@example.ru>")), u"Иван Петров");
}

TEST(MailFromAddressTest, TakesTheTextBetweenTheFirstOpenAndTheLastClose) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"Alice <alice@example.org>", u"alice@example.org"},
      {u"\"Bob\" <bob@x> (via <list>)", u"bob@x> (via <list"},
      {u"only <open", u"only <open"},  // and a value without brackets comes back whole
      {u"a> <b", u""}};
  for (auto [value, address] : cases) EXPECT_EQ(GetMailFromAddress(CString(value)), address);
}

TEST(ParsingSubjectTest, DecodesWordsAndDropsWhatStandsBetweenThem) {
  ScopedLanguage japanese(81);
  std::string meeting = Base64Word("ISO-2022-JP", InCodePage(kIso2022Jp, u"会議のお知らせ"));
  std::string second = Base64Word("ISO-2022-JP", InCodePage(kIso2022Jp, u"（第二回）"));
  const std::pair<std::string, std::u16string> cases[] = {
      {"Meeting notes", u"Meeting notes"},
      {"Re: " + meeting + " " + second, u"Re: 会議のお知らせ（第二回）"},
      {"Re: =?utf-8?B?QUJD?= =?utf-8?B?REVG?= tail", u"Re: ABCDEF tail"},
      {"=?utf-8?B?QUJD?=--=?utf-8?B?REVG?=", u"ABCDEF"},
      {"Fwd: " + Base64Word("utf-8", InCodePage(kUtf8, u"Привет 😀")), u"Fwd: Привет 😀"},
      // With no end the whole subject is decoded as one word, behind its prefix again.
      {"Re: =?utf-8?B?QUJD", u"Re: Re: ABC"},
      // The second look for an end, from 12 characters past the start, passes the "?=" of a
      // first "?Q?=C3"; when the two ends differ the word runs from the next start behind the
      // first end, or from the subject's start when there is none.
      {"=?utf-8?Q?=C3=A9t=C3=A9?=", u"été"},
      {"=?utf-8?Q?=C3=A9t=C3=A9?= x", u"été  x"},
      {"Re: =?utf-8?Q?R=C3=A9sum=C3=A9?= =?utf-8?Q?=20du?=", u"Re: RésuméRe: Résumé  du"},
      {"=?x?B?QUJD?= =?x?B?REVG?=", u"DEF"},
  };
  for (const auto& [subject, expected] : cases) {
    EXPECT_EQ(GetParsingSubject(AsHeader(subject)).Str(), expected) << subject;
  }
  ScopedLanguage russian(7);
  std::string report = Base64Word("koi8-r", InCodePage(kKoi8r, u"Отчёт"));
  EXPECT_EQ(GetParsingSubject(AsHeader("Re: " + report)), u"Re: Отчёт");  // the prefix stays
}

TEST(ParsingSubjectTest, HostileSubjectsReturn) {
  ScopedLanguage english(1);
  for (std::string piece : {"=?", "?=", "=?=", "=?a?Q?=", "=?x?B?QUJD?=", "=?utf-8?B?QUJD?= "}) {
    std::string subject = Repeated(piece, (1 << 20) / piece.size());
    EXPECT_LE(GetParsingSubject(AsHeader(subject)).GetLength(), 1 << 21) << piece;
  }
  EXPECT_EQ(GetParsingSubject(AsHeader("=?" + std::string(1 << 20, 'a'))), u"");
}

std::vector<std::u16string> Cc(const std::u16string& value) {
  CStringArray list;
  GetCCList(CString(value), &list);
  std::vector<std::u16string> items;
  for (int i = 0; i < list.GetSize(); ++i) items.push_back(list.GetAt(i).Str());
  return items;
}

TEST(CcListTest, SplitsAtEachCloseOrElseAtCommas) {
  using Items = std::vector<std::u16string>;
  EXPECT_EQ(Cc(u"Carol <c@x>, dave@y"), (Items{u"Carol <c@x>", u"dave@y"}));
  EXPECT_EQ(Cc(u"a@x, b@y,c@z"), (Items{u"a@x", u"b@y", u"c@z"}));
  EXPECT_EQ(Cc(u"\"Doe, John\" <j@x>,\r\n\tB <b@y>"), (Items{u"\"Doe, John\" <j@x>", u"B <b@y>"}));
  EXPECT_EQ(Cc(u"a@x, B <b@y>"), (Items{u"a@x, B <b@y>"}));  // a ">" ahead wins over commas
  EXPECT_EQ(Cc(u"x <a@x> y"), (Items{u"x <a@x>", u"y"}));
  EXPECT_EQ(Cc(u"<a@x> , , b@y"), (Items{u"<a@x>", u"", u"b@y"}));
  EXPECT_EQ(Cc(u" \r\n\t "), Items{});
  GetCCList(CString(u"a@x"), nullptr);             // no list: nothing to fill
  EXPECT_EQ(Cc(u"a\r\t\nb"), (Items{u"a\r\nb"}));  // CR LF pairs go before tabs
  EXPECT_EQ(Cc(Repeated(u"A <a@x>", 100'000) + Repeated(u"a@x,", 100'000)).size(), 200'000u);
  EXPECT_EQ(Cc(std::u16string(1 << 20, u',')).size(), (1u << 20) / 2);
}

}  // namespace
}  // namespace mailslice::header
