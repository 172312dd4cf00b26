// The MIME parameters of a text and the walker pair, as an application calls them on the
// message or on one part: boundary, content type, charset and transfer encoding; then count,
// one record more than counted, cut, mark the attachments, read the records' fields, cut and
// save their bodies, and free the records.
#include <mailslice/mailslice.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz_input.h"

namespace {

using mailslice::fuzz::Require;

// Saving goes through files; a few parts show every saver at work without writing a file for
// each of thousands of cut pieces.
constexpr int kPartsToSave = 3;
// Boundaries to cut at when the text declares none: a short one and one that mail programs use.
constexpr const char* kFallbackBoundaries[] = {"b", "=_NextPart_000", "", "--"};

void ReadParameters(const std::string& text) {
  CString boundary;
  int offset = -1;
  if (GetBoundary(text.c_str(), boundary, &offset) == 1) {
    Require(offset >= 0 && static_cast<size_t>(offset) <= std::strlen(text.c_str()),
            "the boundary offset lies in the text");
  }
  GetBoundary(text.c_str(), boundary, nullptr);
  GetContentType(text.c_str(), 0);
  GetContentType(text.c_str(), 1);
  GetCharSet(text.c_str());
  GetTransEncode(text.c_str());
  GetAttachNumber(text.c_str());
}

// The bodies of one part: its first body, the savers on the body behind its header, and a
// free name beside the saved file.
void SavePart(const char* partText) {
  std::free(GetMultiPartFirstBody(partText));
  std::string saved = mailslice::fuzz::Scratch() + "/part";
  CString destination = CString::FromUtf8(saved);
  SaveAttachedEmlFile(partText, u"", destination, u"");
  const char* end = partText + std::strlen(partText);
  const char* body = std::strstr(partText, "\r\n\r\n");
  body = body != nullptr ? body + 4 : partText;
  SaveBase64File(body, end, destination);
  SaveAttachFile(body, end, destination);
  CString freeName = destination;
  IsFile(0, freeName);
  mailslice::fuzz::RemovePath(saved);
}

void WalkParts(const std::string& text, const CString& boundary) {
  int count = -1;
  if (GetMultiPartNoInAttachFile(text.c_str(), boundary, &count) != 0) return;
  Require(count >= 0, "the walker counts");
  auto records = new PartRecord*[count + 1];
  for (int i = 0; i <= count; ++i) records[i] = new PartRecord();
  GetMultiPart(text.c_str(), boundary, records);
  GetMultiPartAttachInfo(records, count);
  for (int i = 0; i < count; ++i) {
    TrimContType(records, i);
    TrimTnsEncode(records, i);
    TrimAttFileName(records, i);
    if (records[i]->partText != nullptr && i < kPartsToSave) SavePart(records[i]->partText);
  }
  Require(GetAttachArrayCount() <= count + 1, "only records are listed");
  OnDeleteMailMessage(records, count + 1);
  delete[] records;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  mailslice::fuzz::FuzzInput input(data, size);
  mailslice::fuzz::ChooseDevice(input);
  uint8_t choice = input.TakeByte();
  std::string text(input.TakeRest());

  ReadParameters(text);
  CString boundary;
  if (GetBoundary(text.c_str(), boundary, nullptr) != 1) {
    boundary = CString(kFallbackBoundaries[choice % 4]);
  }
  WalkParts(text, boundary);
  GetRemainBody(CString::FromUtf8(text));
  return 0;
}
