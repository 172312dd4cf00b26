#include "corpus/mail_text.h"

#include <cstdio>

namespace mailslice::corpus {
namespace {

constexpr char kBase64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr size_t kBase64LineBytes = 57;  // 76 characters a line
constexpr size_t kQpLineLimit = 75;      // characters before a soft break's "="
constexpr size_t kEncodedWordLimit = 75;
constexpr size_t kWrapColumn = 72;
constexpr char kHex[] = "0123456789ABCDEF";

constexpr const char* kEnglishWords[] = {
    "the",      "meeting",  "report",   "schedule", "project",  "budget",   "review",   "team",
    "customer", "delivery", "update",   "draft",    "version",  "final",    "please",   "attached",
    "find",     "next",     "week",     "monday",   "friday",   "we",       "will",     "should",
    "could",    "have",     "been",     "with",     "for",      "and",      "about",    "from",
    "into",     "after",    "before",   "quarter",  "numbers",  "figures",  "changes",  "agreed",
    "office",   "travel",   "invoice",  "contract", "proposal", "feedback", "question", "answer",
    "thanks",   "a",        "an",       "of",       "to",       "in",       "on",       "is",
    "are",      "was",      "it",       "this",     "that",     "our",      "your",     "their",
    "new",      "old",      "good",     "late",     "early",    "short",    "long",     "summary",
    "details",  "slides",   "minutes",  "notes",    "server",   "release",  "testing",  "planning",
    "handbook", "training", "workshop", "holiday"};

// Words a French, German, Spanish, Nordic or Polish writer would use: the accents make the
// quoted-printable escapes that real European mail is full of.
constexpr const char* kEuropeanWords[] = {"café",     "déjà",      "réunion",     "présentation",
                                          "été",      "très",      "à",           "où",
                                          "français", "reçu",      "prêt",        "numéro",
                                          "Größe",    "Übersicht", "für",         "schön",
                                          "müssen",   "Grüße",     "Straße",      "Änderung",
                                          "mañana",   "señor",     "información", "reunión",
                                          "año",      "niño",      "São",         "coração",
                                          "Zürich",   "København", "smörgåsbord", "Łódź",
                                          "zażółć",   "gęślą",     "jaźń",        "naïve",
                                          "façade",   "crème",     "brûlée",      "résumé",
                                          "€",        "–",         "«",           "»",
                                          "’",        "…",         "Москва",      "привет",
                                          "Ελλάδα"};

// JIS X 0208 codes (two bytes a character, no escapes) of phrases of Japanese business mail.
constexpr const char* kJapanesePhrases[] = {
    "\x32\x71\x35\x44\x3B\x71\x4E\x41",                  // 会議資料
    "\x42\x47\x24\x41\x39\x67\x24\x6F\x24\x3B",          // 打ち合わせ
    "\x46\x7C\x44\x78",                                  // 日程
    "\x24\x34\x33\x4E\x47\x27",                          // ご確認
    "\x24\x2A\x34\x6A\x24\x24\x24\x37\x24\x5E\x24\x39",  // お願いします
    "\x4D\x68\x3D\x35",                                  // 来週
    "\x37\x6E\x4D\x4B\x46\x7C",                          // 月曜日
    "\x38\x2B\x40\x51\x3D\x71",                          // 見積書
    "\x41\x77\x49\x55",                                  // 送付
    "\x24\x34\x30\x46\x46\x62",                          // ご案内
    "\x4A\x73\x39\x70\x3D\x71",                          // 報告書
    "\x3F\x37\x40\x3D\x49\x4A",                          // 新製品
    "\x48\x2F\x49\x3D\x32\x71",                          // 発表会
    "\x45\x6C\x35\x7E",                                  // 東京
    "\x42\x67\x3A\x65",                                  // 大阪
    "\x4B\x5C\x3C\x52",                                  // 本社
    "\x31\x44\x36\x48\x49\x74",                          // 営業部
    "\x33\x2B\x48\x2F",                                  // 開発
    "\x3F\x4A\x44\x3D",                                  // 進捗
    "\x24\x4B\x24\x44\x24\x24\x24\x46",                  // について
    "\x24\x4E\x37\x6F",                                  // の件
    "\x3A\x47\x3D\x2A\x48\x47",                          // 最終版
    "\x3D\x24\x40\x35",                                  // 修正
    "\x24\x22\x24\x6A\x24\x2C\x24\x48\x24\x26\x24\x34\x24\x36\x24\x24\x24\x5E\x24\x39",  // ありがとうございます
    // よろしくお願いいたします (one phrase: the parentheses keep the two literals one element)
    ("\x24\x68\x24\x6D\x24\x37\x24\x2F\x24\x2A\x34\x6A\x24\x24\x24\x24\x24\x3F\x24\x37"
     "\x24\x5E\x24\x39"),
    "\x24\x2A\x48\x68\x24\x6C\x4D\x4D\x24\x47\x24\x39",  // お疲れ様です
    "\x45\x3A\x49\x55",                                  // 添付
    "\x25\x55\x25\x21\x25\x24\x25\x6B",                  // ファイル
    "\x25\x61\x21\x3C\x25\x6B",                          // メール
    "\x25\x57\x25\x6D\x25\x38\x25\x27\x25\x2F\x25\x48",  // プロジェクト
    "\x25\x39\x25\x31\x25\x38\x25\x65\x21\x3C\x25\x6B",  // スケジュール
    "\x4A\x51\x39\x39",                                  // 変更
    "\x4D\x3D\x44\x6A",                                  // 予定
    "\x32\x71\x3E\x6C",                                  // 会場
    "\x3B\x32\x32\x43\x3C\x54",                          // 参加者
    "\x3B\x71\x4E\x41",                                  // 資料
    "\x3A\x23\x37\x6E",                                  // 今月
    "\x40\x68\x46\x7C",                                  // 先日
    "\x24\x2A\x43\x4E\x24\x69\x24\x3B",                  // お知らせ
    "\x44\x79\x24\x61\x40\x5A\x24\x6A",                  // 締め切り
};
constexpr char kJapaneseFullStop[] = "\x21\x23";  // 。
constexpr char kJapaneseComma[] = "\x21\x22";     // 、

struct Person {
  const char* name;  // UTF-8, or JIS X 0208 for the Japanese ones
  const char* address;
};

constexpr Person kAsciiPeople[] = {
    {"Alice Martin", "alice.martin@example.com"}, {"Bob Fischer", "bob@example.org"},
    {"Carol Nguyen", "carol.nguyen@example.net"}, {"David Okafor", "d.okafor@example.com"},
    {"Emma Walsh", "emma.walsh@example.co.uk"},   {"Frank Miller", "frank@example.org"},
    {"Grace Lee", "grace.lee@example.com"},       {"Henry Adams", "hadams@example.net"}};

constexpr Person kEuropeanPeople[] = {
    {"Renée Dupont", "renee.dupont@example.fr"}, {"Jürgen Weiß", "juergen.weiss@example.de"},
    {"José Álvarez", "jose.alvarez@example.es"}, {"Łukasz Nowak", "lukasz.nowak@example.pl"},
    {"Søren Madsen", "soren.madsen@example.dk"}, {"Françoise Lefèvre", "f.lefevre@example.fr"},
    {"João Gonçalves", "joao@example.com.br"},   {"Åsa Öberg", "asa.oberg@example.se"}};

constexpr Person kJapanesePeople[] = {
    {"\x3B\x33\x45\x44\x21\x21\x42\x40\x4F\x3A", "yamada@example.co.jp"},   // 山田 太郎
    {"\x3A\x34\x46\x23\x21\x21\x32\x56\x3B\x52", "sato.h@example.co.jp"},   // 佐藤 花子
    {"\x4E\x6B\x4C\x5A\x21\x21\x30\x6C\x4F\x3A", "suzuki@example.ne.jp"},   // 鈴木 一郎
    {"\x39\x62\x36\x36\x21\x21\x48\x7E\x3A\x69", "takahashi@example.jp"},   // 高橋 美咲
    {"\x45\x44\x43\x66\x21\x21\x37\x72", "tanaka.ken@example.co.jp"},       // 田中 健
    {"\x30\x4B\x46\x23\x21\x21\x4D\x33\x48\x7E", "ito.yumi@example.ne.jp"}  // 伊藤 由美
};

constexpr const char* kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr const char* kZones[] = {"+0000", "+0100", "+0200", "-0500", "-0800", "+0900", "+0530"};

std::string HexEscape(unsigned char byte) {
  return std::string{'=', kHex[byte >> 4], kHex[byte & 0x0F]};
}

// Days since 1970-01-01 of a date of the proleptic Gregorian calendar (years after 0).
int DaysFromCivil(int year, int month, int day) {
  year -= month <= 2 ? 1 : 0;
  int era = year / 400;
  int yearOfEra = year - era * 400;
  int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

bool IsUtf8Continuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

std::string QEncoded(std::string_view utf8) {
  std::string text;
  for (char byte : utf8) {
    unsigned char code = static_cast<unsigned char>(byte);
    if (byte == ' ') {
      text += '_';
    } else if ((code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
               (code >= 'a' && code <= 'z') || byte == '.' || byte == '-') {
      text += byte;
    } else {
      text += HexEscape(code);
    }
  }
  return text;
}

std::string Utf8Word(std::string_view utf8, bool qEncoding) {
  return qEncoding ? "=?UTF-8?Q?" + QEncoded(utf8) + "?=" : "=?UTF-8?B?" + Base64(utf8) + "?=";
}

std::string Capitalised(std::string word) {
  if (!word.empty() && word[0] >= 'a' && word[0] <= 'z') word[0] = static_cast<char>(word[0] - 32);
  return word;
}

// Breaks a paragraph into lines of at most kWrapColumn bytes at spaces.
std::string Wrapped(const std::string& paragraph) {
  std::string text;
  size_t lineStart = 0;
  while (paragraph.size() - lineStart > kWrapColumn) {
    size_t space = paragraph.rfind(' ', lineStart + kWrapColumn);
    if (space == std::string::npos || space <= lineStart) space = paragraph.find(' ', lineStart);
    if (space == std::string::npos) break;
    text.append(paragraph, lineStart, space - lineStart).append(kCrLf);
    lineStart = space + 1;
  }
  return text.append(paragraph, lineStart).append(kCrLf);
}

}  // namespace

std::string Base64(std::string_view bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t at = 0; at < bytes.size(); at += 3) {
    size_t left = bytes.size() - at;
    uint32_t group = static_cast<unsigned char>(bytes[at]) << 16;
    if (left > 1) group |= static_cast<unsigned char>(bytes[at + 1]) << 8;
    if (left > 2) group |= static_cast<unsigned char>(bytes[at + 2]);
    text += kBase64Alphabet[(group >> 18) & 0x3F];
    text += kBase64Alphabet[(group >> 12) & 0x3F];
    text += left > 1 ? kBase64Alphabet[(group >> 6) & 0x3F] : '=';
    text += left > 2 ? kBase64Alphabet[group & 0x3F] : '=';
  }
  return text;
}

std::string Base64Lines(std::string_view bytes) {
  std::string text;
  text.reserve(Base64LinesSize(bytes.size()));
  for (size_t at = 0; at < bytes.size(); at += kBase64LineBytes) {
    text += Base64(bytes.substr(at, kBase64LineBytes));
    text += kCrLf;
  }
  return text;
}

size_t Base64LinesSize(size_t size) {
  size_t fullLines = size / kBase64LineBytes;
  size_t rest = size % kBase64LineBytes;
  return fullLines * (kBase64LineBytes / 3 * 4 + 2) + (rest > 0 ? (rest + 2) / 3 * 4 + 2 : 0);
}

std::string QuotedPrintable(std::string_view text) {
  std::string encoded;
  encoded.reserve(text.size() + text.size() / 8);
  size_t lineStart = 0;
  while (lineStart < text.size()) {
    size_t lineEnd = text.find(kCrLf, lineStart);
    bool hasLineEnd = lineEnd != std::string_view::npos;
    if (!hasLineEnd) lineEnd = text.size();
    size_t column = 0;
    for (size_t at = lineStart; at < lineEnd; ++at) {
      unsigned char code = static_cast<unsigned char>(text[at]);
      bool blank = code == ' ' || code == '\t';
      bool literal = (code >= 33 && code <= 126 && code != '=') || (blank && at + 1 < lineEnd);
      std::string token = literal ? std::string(1, text[at]) : HexEscape(code);
      if (column + token.size() > kQpLineLimit) {
        encoded += "=\r\n";
        column = 0;
      }
      encoded += token;
      column += token.size();
    }
    if (hasLineEnd) encoded += kCrLf;
    lineStart = hasLineEnd ? lineEnd + 2 : lineEnd;
  }
  return encoded;
}

std::string Utf8Words(std::string_view utf8, bool qEncoding) {
  std::string words;
  size_t start = 0;
  while (start < utf8.size()) {
    // Grow the piece a whole character at a time while its word still fits.
    size_t end = start;
    while (end < utf8.size()) {
      size_t next = end + 1;
      while (next < utf8.size() && IsUtf8Continuation(utf8[next])) ++next;
      if (Utf8Word(utf8.substr(start, next - start), qEncoding).size() > kEncodedWordLimit) break;
      end = next;
    }
    if (end == start) break;  // a character that fits no word: not in this corpus
    if (!words.empty()) words += "\r\n ";
    words += Utf8Word(utf8.substr(start, end - start), qEncoding);
    start = end;
  }
  return words;
}

std::string JisRun(std::string_view jis) { return "\x1B$B" + std::string(jis) + "\x1B(B"; }

std::string Iso2022JpWords(std::string_view jis) {
  constexpr size_t kCharactersAWord = 18;  // 36 bytes + 6 of escapes = 56 Base64 characters
  std::string words;
  for (size_t at = 0; at < jis.size(); at += 2 * kCharactersAWord) {
    if (!words.empty()) words += "\r\n ";
    words += "=?ISO-2022-JP?B?" + Base64(JisRun(jis.substr(at, 2 * kCharactersAWord))) + "?=";
  }
  return words;
}

std::string MailDate(Dice& dice) {
  int year = static_cast<int>(dice.Between(2016, 2024));
  int month = static_cast<int>(dice.Between(1, 12));
  int day = static_cast<int>(dice.Between(1, 28));
  int weekday = (DaysFromCivil(year, month, day) + 4) % 7;  // 1970-01-01 was a Thursday
  unsigned hour = dice.Below(24);
  unsigned minute = dice.Below(60);
  unsigned second = dice.Below(60);
  const char* zone = dice.Pick(kZones);
  char text[64];
  std::snprintf(text, sizeof text, "%s, %d %s %d %02u:%02u:%02u %s", kWeekdays[weekday], day,
                kMonths[month - 1], year, hour, minute, second, zone);
  std::string date = text;
  if (std::string_view(zone) == "+0900" && dice.Percent(50)) date += " (JST)";
  return date;
}

std::string Sentence(Dice& dice, Script script, uint32_t minWords, uint32_t maxWords) {
  uint32_t count = dice.Between(minWords, maxWords);
  std::string sentence;
  if (script == Script::kJapanese) {
    for (uint32_t word = 0; word < count; ++word) {
      if (word > 0 && dice.Percent(20)) sentence += kJapaneseComma;
      sentence += dice.Pick(kJapanesePhrases);
    }
    return sentence + kJapaneseFullStop;
  }
  for (uint32_t word = 0; word < count; ++word) {
    if (word > 0) sentence += dice.Percent(8) ? ", " : " ";
    bool accented = script == Script::kEuropean && dice.Percent(30);
    std::string next = accented ? dice.Pick(kEuropeanWords) : dice.Pick(kEnglishWords);
    if (dice.Percent(3)) next = std::to_string(dice.Below(10000));
    sentence += word == 0 ? Capitalised(next) : next;
  }
  return sentence + (dice.Percent(10) ? "?" : ".");
}

std::string Paragraph(Dice& dice, Script script) {
  uint32_t sentences = dice.Between(2, 7);
  std::string paragraph;
  for (uint32_t number = 0; number < sentences; ++number) {
    if (script == Script::kJapanese) {
      if (number > 0) paragraph += kCrLf;
      paragraph += JisRun(Sentence(dice, script, 2, 6));
    } else {
      if (number > 0) paragraph += ' ';
      paragraph += Sentence(dice, script, 5, 18);
    }
  }
  return paragraph;
}

std::string Prose(Dice& dice, Script script, size_t bytes, bool wrapLines) {
  std::string text;
  while (text.size() < bytes) {
    if (!text.empty()) text += kCrLf;
    std::string paragraph = Paragraph(dice, script);
    text += script == Script::kJapanese || !wrapLines ? paragraph + kCrLf : Wrapped(paragraph);
  }
  return text;
}

std::string JapanesePhrase(Dice& dice) { return dice.Pick(kJapanesePhrases); }

std::string Mailbox(Dice& dice, Script script) {
  switch (script) {
    case Script::kAscii: {
      const Person& person = dice.Pick(kAsciiPeople);
      return std::string(person.name) + " <" + person.address + ">";
    }
    case Script::kEuropean: {
      const Person& person = dice.Pick(kEuropeanPeople);
      return Utf8Words(person.name, dice.Percent(50)) + " <" + person.address + ">";
    }
    case Script::kJapanese: {
      const Person& person = dice.Pick(kJapanesePeople);
      return Iso2022JpWords(person.name) + " <" + person.address + ">";
    }
  }
  return {};
}

}  // namespace mailslice::corpus
