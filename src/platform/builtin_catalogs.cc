// The catalogs the library carries for a device without message files: "Email" (the words of
// the mail reader) and "Resource" (the control library's own strings), in English, Japanese
// (language code 81) and Korean (82).
#include "platform/message_catalog.h"

namespace mailslice::platform {
namespace {

constexpr int kJapaneseLanguage = 81;
constexpr int kKoreanLanguage = 82;

// Message numbers: 133 an empty sender or recipient, 1153 the line above an embedded message,
// 154..162 and 116..118 the months January to December, 131, 120, 122, 124, 126, 128, 130 the
// weekdays Sunday to Saturday, 1192 and 1193 the morning and afternoon markers, 1024 the
// hour:minute:second format.
constexpr BuiltinMessage kEnglishEmail[] = {
    {133, u"(unknown)"}, {1153, u"----- Forwarded Message -----"},
    {154, u"Jan"},       {155, u"Feb"},
    {156, u"Mar"},       {157, u"Apr"},
    {158, u"May"},       {159, u"Jun"},
    {160, u"Jul"},       {161, u"Aug"},
    {162, u"Sep"},       {116, u"Oct"},
    {117, u"Nov"},       {118, u"Dec"},
    {131, u"Sun"},       {120, u"Mon"},
    {122, u"Tue"},       {124, u"Wed"},
    {126, u"Thu"},       {128, u"Fri"},
    {130, u"Sat"},       {1192, u"AM"},
    {1193, u"PM"},       {1024, u"%02d:%02d:%02d"},
};

constexpr BuiltinMessage kJapaneseEmail[] = {
    {133, u"(不明)"}, {1153, u"----- 転送メッセージ -----"},
    {154, u"1月"},    {155, u"2月"},
    {156, u"3月"},    {157, u"4月"},
    {158, u"5月"},    {159, u"6月"},
    {160, u"7月"},    {161, u"8月"},
    {162, u"9月"},    {116, u"10月"},
    {117, u"11月"},   {118, u"12月"},
    {131, u"日"},     {120, u"月"},
    {122, u"火"},     {124, u"水"},
    {126, u"木"},     {128, u"金"},
    {130, u"土"},     {1192, u"午前"},
    {1193, u"午後"},  {1024, u"%02d:%02d:%02d"},
};

constexpr BuiltinMessage kKoreanEmail[] = {
    {133, u"(알 수 없음)"}, {1153, u"----- 전달된 메시지 -----"},
    {154, u"1월"},          {155, u"2월"},
    {156, u"3월"},          {157, u"4월"},
    {158, u"5월"},          {159, u"6월"},
    {160, u"7월"},          {161, u"8월"},
    {162, u"9월"},          {116, u"10월"},
    {117, u"11월"},         {118, u"12월"},
    {131, u"일"},           {120, u"월"},
    {122, u"화"},           {124, u"수"},
    {126, u"목"},           {128, u"금"},
    {130, u"토"},           {1192, u"오전"},
    {1193, u"오후"},        {1024, u"%02d:%02d:%02d"},
};

// Resource 1: the name of the interface language.
// Resource 2: the pattern of a date shown to the user: %W the weekday word, %M the month word,
// %m the month number, %D the day, %Y the year (the words are those of the "Email" catalog).
constexpr BuiltinMessage kEnglishResource[] = {{1, u"English"}, {2, u"%W, %M %D, %Y"}};
constexpr BuiltinMessage kJapaneseResource[] = {{1, u"日本語"}, {2, u"%Y年%M%D日(%W)"}};
constexpr BuiltinMessage kKoreanResource[] = {{1, u"한국어"}, {2, u"%Y년 %M %D일 (%W)"}};

}  // namespace

std::span<const BuiltinMessage> BuiltinCatalog(std::u16string_view name, int language) {
  if (name == u"Email") {
    if (language == kJapaneseLanguage) return kJapaneseEmail;
    if (language == kKoreanLanguage) return kKoreanEmail;
    if (language == kEnglishLanguage) return kEnglishEmail;
  } else if (name == u"Resource") {
    if (language == kJapaneseLanguage) return kJapaneseResource;
    if (language == kKoreanLanguage) return kKoreanResource;
    if (language == kEnglishLanguage) return kEnglishResource;
  }
  return {};
}

}  // namespace mailslice::platform
