// The fast conversions against iconv alone, on every short sequence where they could differ.
#include <gtest/gtest.h>
#include <mailslice/cstring.h>

#include <random>
#include <string>

#include "platform/code_page.h"
#include "support/test_support.h"

namespace mailslice::platform {
namespace {

using testing::ScopedEnv;

constexpr const char* kSingleBytePages[] = {"CP1250", "CP1251", "CP1252", "CP1256"};

std::u16string Unit(unsigned value) { return std::u16string(1, static_cast<char16_t>(value)); }

// Every lead byte with every one or two following bytes, each between ASCII neighbours and
// also cut off at the end: well-formed, overlong, surrogate, too short and stray sequences.
TEST(CodePageFastTest, Utf8ReadsEveryShortSequenceAsIconvDoes) {
  for (unsigned lead = 0x80; lead < 0x100; ++lead) {
    for (unsigned second = 0; second < 0x100; ++second) {
      std::string pair{static_cast<char>(lead), static_cast<char>(second)};
      for (const std::string& text : {"a" + pair + "b", "a" + pair}) {
        ASSERT_EQ(MultiByteToWide(kUtf8CodePage, text),
                  MultiByteToWideThroughIconv(kUtf8CodePage, text))
            << lead << " " << second;
      }
      if (lead < 0xE0 || second < 0x80 || second >= 0xC0) continue;
      for (unsigned third = 0; third < 0x100; third += (third >= 0x7F && third < 0xC0) ? 1 : 17) {
        std::string text = "ab" + pair + static_cast<char>(third) + "c";
        ASSERT_EQ(MultiByteToWide(kUtf8CodePage, text),
                  MultiByteToWideThroughIconv(kUtf8CodePage, text))
            << lead << " " << second << " " << third;
      }
    }
  }
}

TEST(CodePageFastTest, RandomTextsConvertAsThroughIconv) {
  std::mt19937 random(20240611);
  const std::string pieces[] = {"plain ascii text ",
                                "\xC3\xA9",
                                "\xE2\x82\xAC",
                                "\xEF\xBB\xBF",
                                "\xF0\x9F\x98\x80",
                                "\xC3",
                                "\xE2\x82",
                                "\xFF",
                                "\x80",
                                "\r\n",
                                std::string(1, '\0'),
                                "\xD0\x9F\xD1\x80",
                                "\xED\xA0\x80"};
  for (size_t round = 0; round < 400; ++round) {
    std::string text;
    while (text.size() < 64 + round) text += pieces[random() % std::size(pieces)];
    std::u16string wide = MultiByteToWide(kUtf8CodePage, text);
    ASSERT_EQ(wide, MultiByteToWideThroughIconv(kUtf8CodePage, text)) << text;
    for (const char* page : kSingleBytePages) {
      ScopedEnv codePage("MAILSLICE_CODEPAGE", page);
      ASSERT_EQ(WideToAnsi(wide), WideToMultiByteThroughIconv(kAnsiCodePage, wide)) << page;
      ASSERT_EQ(WideToMultiByteUntilFailure(wide), WideToMultiByteUntilFailureThroughIconv(wide))
          << page;
      ASSERT_EQ(AnsiToWide(text), MultiByteToWideThroughIconv(kAnsiCodePage, text)) << page;
    }
  }
}

// UTF-16 written as UTF-8: every character of the plane, pairs, unpaired surrogates at every
// place and NUL, as iconv writes them.
TEST(CodePageFastTest, Utf8WritesAsIconvDoes) {
  std::u16string all;
  for (unsigned unit = 1; unit < 0x10000; ++unit) {
    if (unit < 0xD800 || unit > 0xDFFF) all += static_cast<char16_t>(unit);
  }
  ASSERT_EQ(WideToMultiByte(kUtf8CodePage, all), WideToMultiByteThroughIconv(kUtf8CodePage, all));
  const std::u16string pieces[] = {u"plain text ", u"\u00E9",       u"\u20AC",    u"\U0001F600",
                                   Unit(0xD83D),   Unit(0xDE00),    Unit(0xDBFF), Unit(0xDC00),
                                   Unit(0),        u"\u07FF\u0800", u"\uFFFF"};
  std::mt19937 random(8);
  for (int round = 0; round < 2000; ++round) {
    std::u16string text;
    for (size_t count = random() % 12; count > 0; --count) {
      text += pieces[random() % std::size(pieces)];
    }
    ASSERT_EQ(WideToMultiByte(kUtf8CodePage, text),
              WideToMultiByteThroughIconv(kUtf8CodePage, text))
        << round;
    ASSERT_EQ(CString(text).ToUtf8(), WideToMultiByteThroughIconv(kUtf8CodePage, text)) << round;
  }
}

// Each byte and each wide character of the device pages, alone and inside text, including
// bytes the page leaves undefined, characters it cannot hold and unpaired surrogates.
TEST(CodePageFastTest, SingleBytePagesConvertEveryCharacterAsIconvDoes) {
  for (const char* page : kSingleBytePages) {
    ScopedEnv codePage("MAILSLICE_CODEPAGE", page);
    std::string all;
    for (unsigned byte = 0; byte < 0x100; ++byte) {
      std::string text = "x" + std::string(1, static_cast<char>(byte)) + "y";
      ASSERT_EQ(AnsiToWide(text), MultiByteToWideThroughIconv(kAnsiCodePage, text)) << page;
      all += static_cast<char>(byte);
    }
    ASSERT_EQ(AnsiToWide(all), MultiByteToWideThroughIconv(kAnsiCodePage, all)) << page;
    // A text of several of the pieces the widening goes through, at every offset.
    std::string longText;
    for (int copy = 0; copy < 9; ++copy) longText += all.substr(copy) + all.substr(0, copy);
    ASSERT_EQ(AnsiToWide(longText), MultiByteToWideThroughIconv(kAnsiCodePage, longText)) << page;
    // Short texts (header values) of every length, bytes beyond ASCII at every place.
    std::string mixed;
    for (unsigned k = 0; k < 200; ++k) {
      mixed += static_cast<char>(k % 3 == 0 ? 0x80 + (k * 7) % 0x80 : 'a' + k % 26);
    }
    for (size_t length = 0; length <= 100; ++length) {
      for (size_t offset = 0; offset < 3; ++offset) {
        std::string text = mixed.substr(offset, length);
        ASSERT_EQ(AnsiToWide(text), MultiByteToWideThroughIconv(kAnsiCodePage, text))
            << page << " " << length;
      }
    }
    for (unsigned unit = 1; unit < 0x10000; ++unit) {
      std::u16string text = u"x" + Unit(unit) + u"y";
      ASSERT_EQ(WideToAnsi(text), WideToMultiByteThroughIconv(kAnsiCodePage, text))
          << page << " " << unit;
      ASSERT_EQ(WideToMultiByteUntilFailure(text), WideToMultiByteUntilFailureThroughIconv(text))
          << page << " " << unit;
    }
    std::u16string surrogates =
        u"a\xD83D\xDE00"
        u"b\xDC00"
        u"c\xD800";
    ASSERT_EQ(WideToAnsi(surrogates), WideToMultiByteThroughIconv(kAnsiCodePage, surrogates));
    ASSERT_EQ(WideToMultiByteUntilFailure(surrogates),
              WideToMultiByteUntilFailureThroughIconv(surrogates));
  }
}

// Narrowed and widened back in one go, as the two conversions one after the other give it.
std::u16string ThroughAnsiInTwoSteps(std::u16string_view text, bool untilFailure) {
  std::string narrow = untilFailure ? WideToMultiByteUntilFailureThroughIconv(text)
                                    : WideToMultiByteThroughIconv(kAnsiCodePage, text);
  return MultiByteToWideThroughIconv(kAnsiCodePage, narrow.substr(0, narrow.find('\0')));
}

TEST(CodePageFastTest, RoundTripThroughTheDevicePageMatchesTheTwoConversions) {
  std::u16string below, above;  // the surrogates hand the rest to iconv
  for (unsigned unit = 1; unit < 0xD800; ++unit) below += static_cast<char16_t>(unit);
  for (unsigned unit = 0xE000; unit < 0x10000; ++unit) above += static_cast<char16_t>(unit);
  const std::u16string texts[] = {below,
                                  above,
                                  u"plain text, long enough for a block or two",
                                  std::u16string(u"ab\0cd\u00E9", 6),
                                  u"caf\u00E9 \u65E5 x",
                                  u"a\xD83D\xDE00"
                                  u"b\xDC00"
                                  u"c\xD800",
                                  u"",
                                  u"\u0100 tail"};
  for (const char* page : {"CP1250", "CP1251", "CP1252", "CP1256", "CP932"}) {
    ScopedEnv codePage("MAILSLICE_CODEPAGE", page);
    for (const std::u16string& text : texts) {
      for (bool untilFailure : {false, true}) {
        ASSERT_EQ(WideThroughAnsi(text, untilFailure), ThroughAnsiInTwoSteps(text, untilFailure))
            << page << " " << untilFailure << " " << text.size();
      }
    }
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
      std::u16string text = u"x" + Unit(unit) + u"y";
      ASSERT_EQ(WideThroughAnsi(text, true), ThroughAnsiInTwoSteps(text, true)) << unit;
    }
  }
}

// Long texts cross the blocks the fused path decodes in; the pieces bring every way out of it.
TEST(CodePageFastTest, Utf8ThroughTheDevicePageMatchesTheStepsOneByOne) {
  std::mt19937 random(4711);
  const std::string pieces[] = {std::string(300, 'x'),
                                "caf\xC3\xA9 ",
                                "\xE2\x82\xAC",
                                "\xE6\x97\xA5",
                                "\xC4\x80",
                                "\xC3",
                                "\xFF",
                                "\xF0\x9F\x98\x80",
                                std::string(1, '\0'),
                                "\r\n"};
  for (const char* page : {"CP1250", "CP1252", "CP932"}) {
    ScopedEnv codePage("MAILSLICE_CODEPAGE", page);
    for (int round = 0; round < 60; ++round) {
      std::string text;
      size_t length = random() % 12000;
      while (text.size() < length) {
        text += pieces[random() % 4 == 0 ? random() % std::size(pieces) : random() % 3];
      }
      for (bool untilFailure : {false, true}) {
        std::u16string wide = MultiByteToWideThroughIconv(kUtf8CodePage, text);
        ASSERT_EQ(Utf8ThroughAnsi(text, untilFailure), ThroughAnsiInTwoSteps(wide, untilFailure))
            << page << " " << untilFailure << " " << round;
      }
    }
  }
}

// Checks the passes that read UTF-8 through the device page against the conversions one by
// one: the shown text; the narrowed page that comes out of the same pass, which is the shown text
// narrowed as the HTML reader narrows it whenever the pass gives one (counted in
// `narrowedInPass`); and the page alone, whose text read back and the rest read on make the
// whole text (counted in `wholePages` when it takes the whole text).
void CheckPassesThroughThePage(const std::string& text, bool untilFailure, int& narrowedInPass,
                               int& wholePages) {
  std::u16string steps =
      ThroughAnsiInTwoSteps(MultiByteToWideThroughIconv(kUtf8CodePage, text), untilFailure);
  ASSERT_EQ(Utf8ThroughAnsi(text, untilFailure), steps);
  // Written into a buffer of its own, and over the UTF-8 text itself.
  std::string room(text.size(), 'z'), over = text;
  std::u16string shown, shownOver;
  size_t count = Utf8ThroughAnsi(text, untilFailure, shown, room.data());
  size_t countOver = Utf8ThroughAnsi(over, untilFailure, shownOver, over.data());
  ASSERT_EQ(shown, steps);
  ASSERT_EQ(shownOver, steps);
  ASSERT_EQ(countOver, count);
  if (count != std::string::npos) {
    ++narrowedInPass;
    std::string narrowed = WideToMultiByteUntilFailureThroughIconv(shown);
    ASSERT_EQ(room.substr(0, count), narrowed);
    ASSERT_EQ(over.substr(0, count), narrowed);
  }
  std::string alone = text;
  size_t written = 0;
  size_t taken = Utf8ThroughAnsiPage(alone, untilFailure, alone.data(), &written);
  std::string bytes = alone.substr(0, written);
  std::u16string start = Utf8ThroughAnsi(text.substr(0, taken), untilFailure);
  ASSERT_EQ(AnsiToWide(bytes), start);
  ASSERT_EQ(bytes, WideToMultiByteUntilFailureThroughIconv(start));
  ASSERT_EQ(start + Utf8ThroughAnsi(text.substr(taken), untilFailure), steps);
  if (taken == text.size()) ++wholePages;
}

TEST(CodePageFastTest, Utf8ThroughTheDevicePageNarrowsAsTheNarrowingAfterIt) {
  std::mt19937 random(1999);
  const std::string pieces[] = {
      std::string(100, 'x'), "caf\xC3\xA9 ", "\xC5\x9A", "\xE2\x82\xAC",
      "\xE6\x97\xA5",        "\xC3",         "\r\n",     std::string(1, '\0')};
  for (const char* page : {"CP1250", "CP1251", "CP1252", "CP932"}) {
    ScopedEnv codePage("MAILSLICE_CODEPAGE", page);
    int narrowedInPass = 0, wholePages = 0;
    for (int round = 0; round < 200; ++round) {
      std::string text;
      size_t length = random() % 9000;
      while (text.size() < length) {
        text += pieces[random() % 64 == 0 ? random() % std::size(pieces) : random() % 3];
      }
      for (bool untilFailure : {false, true}) {
        SCOPED_TRACE(std::string(page) + " " + std::to_string(round));
        CheckPassesThroughThePage(text, untilFailure, narrowedInPass, wholePages);
        if (HasFatalFailure()) return;
      }
    }
    if (std::string_view(page) != "CP932") {
      EXPECT_GT(narrowedInPass, 50) << page;
      EXPECT_GT(wholePages, 50) << page;
    }
  }
}

// Text dense in letters beyond ASCII, with ASCII runs shorter than a block between them, and
// every kind of character that ends or spoils the pass (a letter the page cannot hold, overlong,
// cut and stray bytes, NUL) at every place, the end of the text included.
TEST(CodePageFastTest, DenseLettersThroughTheDevicePageMatchTheStepsOneByOne) {
  std::mt19937 random(2024);
  const std::string letters[] = {"\xC3\xB1", "\xC3\xBC", "\xC3\x9F", "\xC3\xA9", "\xC5\x82",
                                 "\xD0\xBF", "\xCE\xB1", "\xC2\xA0", "\xC4\x99", "\xC2\x80"};
  const std::string spoilers[] = {
      "\xE2\x82\xAC", "\xE2\x80\xA6", "\xE6\x97\xA5",     "\xC1\xA9",           "\xC3",
      "\xE2\x82",     "\xA9",         "\xF0\x9F\x98\x80", std::string(1, '\0'), "\xED\xA0\x80"};
  auto dense = [&](size_t length, int spoilEvery) {
    std::string text;
    while (text.size() < length) {
      text += std::string(random() % 18, "Mana muss"[random() % 9]);
      text += random() % spoilEvery == 0 ? spoilers[random() % std::size(spoilers)]
                                         : letters[random() % std::size(letters)];
    }
    return text;
  };
  for (const char* page : {"CP1250", "CP1251", "CP1252"}) {
    ScopedEnv codePage("MAILSLICE_CODEPAGE", page);
    int narrowedInPass = 0, wholePages = 0;
    for (int round = 0; round < 40; ++round) {
      // Long texts cross the pieces the pass decodes in; short ones end at every place.
      std::string text = dense(round % 4 == 0 ? 9000 : 60, round % 2 == 0 ? 400 : 6);
      for (size_t cut = round % 4 == 0 ? text.size() : 0; cut <= text.size(); ++cut) {
        for (bool untilFailure : {false, true}) {
          SCOPED_TRACE(std::string(page) + " " + std::to_string(round) + " " + std::to_string(cut));
          CheckPassesThroughThePage(text.substr(0, cut), untilFailure, narrowedInPass, wholePages);
          if (HasFatalFailure()) return;
        }
      }
    }
    EXPECT_GT(narrowedInPass, 100) << page;
    EXPECT_GT(wholePages, 100) << page;
  }
}

}  // namespace
}  // namespace mailslice::platform
