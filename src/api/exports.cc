// The exports: each one forwards to one method of one library-wide instance.
#include <mailslice/exports.h>

#include "api/export_guard.h"
#include "api/instances.h"
#include "datetime/date_display.h"

using mailslice::api::Base64Coder;
using mailslice::api::Encoder;
using mailslice::api::Guarded;
using mailslice::api::JapaneseConverter;
using mailslice::api::MainParser;
using mailslice::api::MessageBuffer;

extern "C" {

int MessageFileOpenAndMemoryAlloc(CString path) {
  return Guarded([&] { return MessageBuffer().Load(path); });
}
void MessageMemoryFree() {
  Guarded([] { MessageBuffer().Free(); });
}

CString GetFrom() {
  return Guarded([] { return MessageBuffer().GetFrom(); });
}
CString GetTo() {
  return Guarded([] { return MessageBuffer().GetTo(); });
}
CString GetCc() {
  return Guarded([] { return MessageBuffer().GetCc(); });
}
CString GetBcc() {
  return Guarded([] { return MessageBuffer().GetBcc(); });
}
// The Bcc lookup again, as the mail application has always received it here.
CString GetBody() {
  return Guarded([] { return MessageBuffer().GetBcc(); });
}
CString GetDate() {
  return Guarded([] { return MessageBuffer().GetDate(); });
}
CString GetSubject() {
  return Guarded([] { return MessageBuffer().GetSubject(); });
}
CString GetReplyTo() {
  return Guarded([] { return MessageBuffer().GetReplyTo(); });
}
CString GetDelivered1() {
  return Guarded([] { return MessageBuffer().GetDelivered1(); });
}
CString GetDelivered2() {
  return Guarded([] { return MessageBuffer().GetDelivered2(); });
}
CString GetDelivered3() {
  return Guarded([] { return MessageBuffer().GetDelivered3(); });
}
char* GetMessageText() {
  return Guarded([] { return MessageBuffer().GetMessageText(); });
}

char* OpeningMail(CString path) {
  return Guarded([&] { return MainParser().OpeningMail(path); });
}
int IsReadingMail(CString path) {
  return Guarded([&] { return MainParser().IsReadingMail(path); });
}
int IsInitIndex(CString first, CString second) {
  return Guarded([&] { return MainParser().IsInitIndex(first, second); });
}

void GetParsingDate(CString value, CString* fields) {
  Guarded([&] { MainParser().GetParsingDate(value, fields); });
}
CString GetNewDate(CString* fields) {
  return Guarded([&] { return MainParser().GetNewDate(fields); });
}
CString ConvertToDisplayTime(CString time) {
  return Guarded([&] { return MainParser().ConvertToDisplayTime(time); });
}
CString GetDateMsg(int reserved1, int reserved2, double date) {
  return Guarded([&] { return MainParser().GetDateMsg(reserved1, reserved2, date); });
}
CString GetTimeMsg(int reserved1, int reserved2, double date) {
  return Guarded([&] { return MainParser().GetTimeMsg(reserved1, reserved2, date); });
}
CString Get12hoursMsg(CString time, int marker) {
  return Guarded([&] { return MainParser().Get12hoursMsg(time, marker); });
}
int LoadTimeFormat() {
  return Guarded([] { return MainParser().LoadTimeFormat(); });
}
// The device's zone belongs to no parser.
int GetTimeZoneBias() {
  return Guarded([] { return mailslice::datetime::TimeZoneBias(); });
}
CString GetDayOfWeekString(int weekday) {
  return Guarded([&] { return MainParser().GetDayOfWeekString(weekday); });
}
CString ConvertMonthNumToString(int month) {
  return Guarded([&] { return MainParser().ConvertMonthNumToString(month); });
}

int GetBoundary(const char* text, CString& boundary, int* offset) {
  return Guarded([&] { return MainParser().GetBoundary(text, boundary, offset); });
}
CString GetContentType(const char* text, int wholeText) {
  return Guarded([&] { return MainParser().GetContentType(text, wholeText); });
}
CString GetCharSet(const char* text) {
  return Guarded([&] { return MainParser().GetCharSet(text); });
}
CString GetTransEncode(const char* text) {
  return Guarded([&] { return MainParser().GetTransEncode(text); });
}
CString TrimContType(PartRecord** records, int index) {
  return Guarded([&] { return MainParser().TrimContType(records, index); });
}
CString TrimTnsEncode(PartRecord** records, int index) {
  return Guarded([&] { return MainParser().TrimTnsEncode(records, index); });
}
CString TrimAttFileName(PartRecord** records, int index) {
  return Guarded([&] { return MainParser().TrimAttFileName(records, index); });
}
int GetMultiPart(const char* text, CString boundary, PartRecord** records) {
  return Guarded([&] { return MainParser().GetMultiPart(text, boundary, records); });
}
int GetMultiPartNoInAttachFile(const char* text, CString boundary, int* count) {
  return Guarded([&] { return MainParser().GetMultiPartNoInAttachFile(text, boundary, count); });
}

char* Base64Decode(const char* text, int* length) {
  return Guarded([&] { return MainParser().Base64Decode(text, length); });
}
char* QPdecode(const char* text) {
  return Guarded([&] { return MainParser().QPdecode(text); });
}
char* Encode(const unsigned char* bytes, int length) {
  return Guarded([&] { return Encoder().Encode(bytes, length); });
}
char* EncodeToChar(const unsigned char* bytes, int length) {
  return Guarded([&] { return Encoder().EncodeToChar(bytes, length); });
}
CString EncodeToCString(const unsigned char* bytes, int length, int /*reserved*/) {
  return Guarded([&] { return Encoder().EncodeToCString(bytes, length); });
}
void Base64CoderEncode(const char* text) {
  Guarded([&] { Base64Coder().Encode(text); });
}
void Base64CoderDecode(const char* text) {
  Guarded([&] { Base64Coder().Decode(text); });
}
char* Base64CoderEncodedMessage() {
  return Guarded([] { return Base64Coder().EncodedMessage(); });
}
char* Base64CoderDecodedMessage() {
  return Guarded([] { return reinterpret_cast<char*>(Base64Coder().DecodedMessage()); });
}
int Base64CoderEncodedLength() {
  return Guarded([] { return static_cast<int>(Base64Coder().EncodedMessageSize()); });
}
int Base64CoderDecodedLength() {
  return Guarded([] { return static_cast<int>(Base64Coder().DecodedMessageSize()); });
}
void Base64CoderEncodedFreeMemory() {
  Guarded([] { Base64Coder().FreeEncoded(); });
}
void Base64CoderDecodedFreeMemory() {
  Guarded([] { Base64Coder().FreeDecoded(); });
}
int euc2sjs(char* text) {
  return Guarded([&] { return JapaneseConverter().EucToShiftJis(text); });
}
char* jis2sjs(char* dest, const char* src) {
  return Guarded([&] { return JapaneseConverter().JisToShiftJis(dest, src); });
}
void SJIStoJIS(char* dest, const char* src) {
  Guarded([&] { JapaneseConverter().ShiftJisToJis(dest, src); });
}
void utf72sjs(char* heapText) {
  Guarded([&] { JapaneseConverter().Utf7ToDevice(heapText); });
}
char* utf82sjs(const char* text) {
  return Guarded([&] { return JapaneseConverter().Utf8ToDevice(text); });
}

CString GetReadingBody(const char* text, int* alternative, CString htmlName, int html1, int html2,
                       int html3) {
  return Guarded([&] {
    return MainParser().GetReadingBody(text, alternative, htmlName, html1, html2, html3);
  });
}
CString GetBodyFromNoBoundary(const char* text, CString htmlName, int html1, int html2, int html3) {
  return Guarded(
      [&] { return MainParser().GetBodyFromNoBoundary(text, htmlName, html1, html2, html3); });
}
CString GetBodyFromIsBoundary(const char* text, CString boundary, int* alternative,
                              CString htmlName, int html1, int html2, int html3) {
  return Guarded([&] {
    return MainParser().GetBodyFromIsBoundary(text, boundary, alternative, htmlName, html1, html2,
                                              html3);
  });
}
char* GetSinglePartBody(const char* text) {
  return Guarded([&] { return MainParser().GetSinglePartBody(text); });
}
char* GetMultiPartFirstBody(const char* partText) {
  return Guarded([&] { return MainParser().GetMultiPartFirstBody(partText); });
}
CString GetRemainBody(CString text) {
  return Guarded([&] { return MainParser().GetRemainBody(text); });
}
CString GetFileNameToSaveWithHtml(CString name) {
  return Guarded([&] { return MainParser().GetFileNameToSaveWithHtml(name); });
}

int GetAttachNumber(const char* text) {
  return Guarded([&] { return MainParser().GetAttachNumber(text); });
}
int GetAttachFile(const char* text, CString& names, int* count) {
  return Guarded([&] { return MainParser().GetAttachFile(text, names, count); });
}
int GetMultiPartAttachInfo(PartRecord** records, int count) {
  return Guarded([&] { return MainParser().GetMultiPartAttachInfo(records, count); });
}
int GetAttachArrayCount() {
  return Guarded([] { return MainParser().GetAttachArrayCount(); });
}
CString GetAttachArrayFile(int index) {
  return Guarded([&] { return MainParser().GetAttachArrayFile(index); });
}
void AttachArrayRemoveall() {
  Guarded([] { MainParser().AttachArrayRemoveall(); });
}
void OnDeleteMailMessage(PartRecord** records, int count) {
  Guarded([&] { MainParser().OnDeleteMailMessage(records, count); });
}

int IsFile(int unused, CString& path) {
  return Guarded([&] { return MainParser().IsFile(unused, path); });
}
int SaveAttachedFile(const char* text, CString altName, CString destPath, CString boundary,
                     CString fileName) {
  return Guarded(
      [&] { return MainParser().SaveAttachedFile(text, altName, destPath, boundary, fileName); });
}
int SaveAttachedEmlFile(const char* partText, CString /*unused1*/, CString destPath,
                        CString /*unused2*/) {
  return Guarded([&] { return MainParser().SaveAttachedEmlFile(partText, destPath); });
}
int SaveBase64File(const char* start, const char* end, CString destPath) {
  return Guarded([&] { return MainParser().SaveBase64File(start, end, destPath); });
}
int SaveAttachFile(const char* start, const char* end, CString destPath) {
  return Guarded([&] { return MainParser().SaveAttachFile(start, end, destPath); });
}

CString GetMailFrom(CString value) {
  return Guarded([&] { return MainParser().GetMailFrom(value); });
}
CString GetMailTo(CString value) {
  return Guarded([&] { return MainParser().GetMailTo(value); });
}
CString GetMailFromAddress(CString value) {
  return Guarded([&] { return MainParser().GetMailFromAddress(value); });
}
CString GetParsingSubject(CString value) {
  return Guarded([&] { return MainParser().GetParsingSubject(value); });
}
void GetCCList(CString value, CStringArray* list) {
  Guarded([&] { MainParser().GetCCList(value, list); });
}

}  // extern "C"
