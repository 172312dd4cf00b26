// The whole reader flow on one message, as a mail application runs it: load the file, show
// its header fields and date, the readable body and the attachment list, save every listed
// attachment, then check the file's read state.
#include <mailslice/mailslice.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "datetime/date_display.h"
#include "fuzz_input.h"

namespace {

using mailslice::fuzz::Require;

// The header exports that take no argument (GetBody reads the Bcc field, as it always has).
constexpr CString (*kFieldReaders[])() = {GetFrom,       GetTo,         GetCc,        GetBcc,
                                          GetBody,       GetDate,       GetSubject,   GetReplyTo,
                                          GetDelivered1, GetDelivered2, GetDelivered3};

void ShowHeaders() {
  for (auto read : kFieldReaders) read();
  CString from = GetFrom();
  GetMailFrom(from);
  GetMailFromAddress(from);
  GetMailTo(GetTo());
  GetParsingSubject(GetSubject());
  CStringArray copies;
  GetCCList(GetCc(), &copies);
}

void ShowDate() {
  CString fields[8];
  GetParsingDate(GetDate(), fields);
  CString universalTime = GetNewDate(fields);
  ConvertToDisplayTime(universalTime);
  if (auto local = mailslice::datetime::LocalDateOf(universalTime)) {
    GetDateMsg(0, 0, *local);
    GetTimeMsg(0, 0, *local);
  }
}

void ShowBody(const char* text, bool saveHtml) {
  int alternative = 0;
  GetReadingBody(text, &alternative, u"body", saveHtml, 0, 0);
  GetFileNameToSaveWithHtml(u"body");
  CString boundary;
  if (GetBoundary(text, boundary, nullptr) == 1) {
    alternative = 0;
    GetBodyFromIsBoundary(text, boundary, &alternative, u"", 0, 0, 0);
  } else {
    GetBodyFromNoBoundary(text, u"", 0, 0, 0);
  }
  std::free(GetSinglePartBody(text));
}

// Saves every listed attachment under its listed name, as the application does when the
// user picks it, and removes the copy again.
void SaveAttachments(const char* text) {
  GetAttachNumber(text);
  CString names;
  int count = 0;
  GetAttachFile(text, names, &count);
  CString boundary;
  GetBoundary(text, boundary, nullptr);
  int listed = GetAttachArrayCount();
  std::string saved = mailslice::fuzz::Scratch() + "/saved";
  for (int index = 0; index < listed; ++index) {
    CString name = GetAttachArrayFile(index);
    SaveAttachedFile(text, name, CString::FromUtf8(saved), boundary, name);
    mailslice::fuzz::RemovePath(saved);
  }
  Require(GetAttachArrayFile(listed).IsEmpty(), "an index out of range gives an empty string");
  AttachArrayRemoveall();
}

std::vector<CString> ListedNames(const char* text) {
  CString names;
  int count = 0;
  GetAttachFile(text, names, &count);
  std::vector<CString> listed;
  for (int index = 0; index < GetAttachArrayCount(); ++index) {
    listed.push_back(GetAttachArrayFile(index));
  }
  return listed;
}

// The loaded message is read in place, any other text through copies: the two must agree.
void CompareWithCopy(const char* text) {
  std::string copy(text);
  int inPlaceFlag = 0, copiedFlag = 0;
  CString inPlace = GetReadingBody(text, &inPlaceFlag, u"", 0, 0, 0);
  CString copied = GetReadingBody(copy.c_str(), &copiedFlag, u"", 0, 0, 0);
  Require(inPlace == copied && inPlaceFlag == copiedFlag, "the body read in place is the copy's");
  Require(ListedNames(text) == ListedNames(copy.c_str()), "the list in place is the copy's");
}

void CheckReadState(const CString& path) {
  char* whole = OpeningMail(path);
  Require(whole != nullptr, "OpeningMail reads an existing file");
  std::free(whole);
  IsReadingMail(path);
  IsInitIndex(path, path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  mailslice::fuzz::FuzzInput input(data, size);
  mailslice::fuzz::ChooseDevice(input);
  bool saveHtml = input.TakeByte() & 1;
  std::string_view message = input.TakeRest();

  std::string file = mailslice::fuzz::Scratch() + "/message.eml";
  mailslice::fuzz::WriteFile(file, message);
  CString path = CString::FromUtf8(file);
  if (MessageFileOpenAndMemoryAlloc(path) == 1) {
    const char* text = GetMessageText();
    // The reader only ever reads the message: every export leaves the buffer as loaded.
    std::string loaded(text, message.size());
    Require(std::memcmp(text, message.data(), message.size()) == 0, "the file is loaded as is");
    ShowHeaders();
    ShowDate();
    ShowBody(text, saveHtml);
    CompareWithCopy(text);
    SaveAttachments(text);
    Require(GetMessageText() == text && loaded.compare(0, loaded.size(), text, loaded.size()) == 0,
            "the message buffer is never written or moved");
    MessageMemoryFree();
  }
  CheckReadState(path);
  mailslice::fuzz::RemovePath(file);
  return 0;
}
