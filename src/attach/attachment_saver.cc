#include "attach/attachment_saver.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "attach/staged_file.h"
#include "codec/base64_decoder.h"
#include "codec/quoted_printable.h"
#include "mime/header_parameters.h"

namespace mailslice::attach {
namespace {

using platform::ErrorCode;
using platform::kErrorDiskFull;
using platform::kErrorSuccess;

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kEmptyLine = "\r\n\r\n";
// An escape is "=" and two more bytes, and its decoding may look one byte further for CR LF.
constexpr size_t kEscapeReach = 3;

struct FreeDeleter {
  void operator()(char* buffer) const { std::free(buffer); }
};

// Where the quoted-printable chunk that starts at `at` ends. Right behind a CR LF no escape can
// be cut, so the chunk ends behind the last CR LF that fits; a line longer than a whole chunk
// is cut before any "=" close enough to the cut to need the bytes behind it.
size_t QuotedPrintableChunkEnd(std::string_view text, size_t at, size_t chunkBytes) {
  if (text.size() - at <= chunkBytes) return text.size();
  std::string_view window = text.substr(at, chunkBytes);
  size_t lineEnd = window.rfind(kLineEnd);
  if (lineEnd != std::string_view::npos) return at + lineEnd + kLineEnd.size();
  size_t cut = window.size();
  while (cut > 0) {
    size_t from = cut > kEscapeReach ? cut - kEscapeReach : 0;
    size_t equals = window.substr(from, cut - from).find('=');
    if (equals == std::string_view::npos) break;
    cut = from + equals;
  }
  return at + (cut > 0 ? cut : window.size());
}

// What the decoder reads of a chunk: it stops at a NUL, and at an escape cut off by the end of
// the text, whose "=" is in one of the last two places (neither the "=" nor what follows it is
// decoded). Dropping that tail first gives the same bytes and lets the decoder count them.
std::string_view WithoutCutEscape(const std::string& chunk) {
  std::string_view text(chunk.c_str());
  if (text.size() >= 2 && text[text.size() - 2] == '=') return text.substr(0, text.size() - 2);
  if (!text.empty() && text.back() == '=') return text.substr(0, text.size() - 1);
  return text;
}

int SaveQuotedPrintableChunks(StagedFile& staged, std::string_view encoded,
                              const std::string& destination, size_t chunkBytes) {
  std::string chunk;
  for (size_t at = 0; at < encoded.size();) {
    size_t end = QuotedPrintableChunkEnd(encoded, at, chunkBytes);
    chunk.assign(encoded.substr(at, end - at));
    chunk.resize(WithoutCutEscape(chunk).size());
    int length = 0;
    std::unique_ptr<char, FreeDeleter> decoded(
        codec::DecodeQuotedPrintable(chunk.c_str(), &length));
    if (decoded == nullptr) return kSaveImpossible;
    if (ErrorCode error = staged.Write(std::string_view(decoded.get(), length))) return error;
    at = end;
  }
  if (ErrorCode error = staged.CopyTo(destination)) return error;
  return kSaveSucceeded;
}

// A write that fails ends the save: what was written never reaches the destination.
ErrorCode DecodeBase64Blocks(StagedFile& staged, std::string_view encoded) {
  codec::Base64BlockDecoder decoder;
  std::string decoded;
  // The decoder keeps the characters of a group cut by a block's end and completes the group
  // with the next block, so each block starts where the one before ended.
  for (size_t at = 0;; at += kBase64BlockBytes) {
    bool final = encoded.size() - at <= kBase64BlockBytes;
    decoded.clear();
    decoder.Decode(encoded.substr(at, kBase64BlockBytes), final, decoded);
    if (ErrorCode error = staged.Write(decoded)) return error;
    if (final || decoder.finished()) return kErrorSuccess;
  }
}

}  // namespace

int SaveBase64File(std::string_view encoded, const std::string& destination) {
  try {
    StagedFile staged;
    if (!staged.created()) return kSaveImpossible;
    ErrorCode error = DecodeBase64Blocks(staged, encoded);
    if (error == kErrorSuccess) error = staged.CopyTo(destination);
    return error == kErrorDiskFull ? static_cast<int>(kErrorDiskFull) : kSaveSucceeded;
  } catch (const std::bad_alloc&) {
    return kSaveImpossible;
  }
}

int SavePlainFile(std::string_view bytes, const std::string& destination) {
  try {
    StagedFile staged;
    if (!staged.created()) return kSaveImpossible;
    for (size_t at = 0; at < bytes.size(); at += kPlainChunkBytes) {
      if (ErrorCode error = staged.Write(bytes.substr(at, kPlainChunkBytes))) return error;
    }
    if (ErrorCode error = staged.CopyTo(destination)) return error;
    return kSaveSucceeded;
  } catch (const std::bad_alloc&) {
    return kSaveImpossible;
  }
}

int SaveQuotedPrintableFile(std::string_view encoded, const std::string& destination,
                            size_t chunkBytes) {
  if (chunkBytes == 0) chunkBytes = kPlainChunkBytes;
  try {
    StagedFile staged;
    if (!staged.created()) return kSaveImpossible;
    return SaveQuotedPrintableChunks(staged, encoded, destination, chunkBytes);
  } catch (const std::bad_alloc&) {
    return kSaveImpossible;
  }
}

int SaveAttachedEmlFile(const char* partText, const std::string& destination) {
  if (partText == nullptr) return kSaveImpossible;
  std::string_view part(partText);
  // The body follows the header's empty line or, in a part without one, its first line break.
  size_t body = part.find(kEmptyLine);
  if (body != std::string_view::npos) {
    body += kEmptyLine.size();
  } else if ((body = part.find(kLineEnd)) != std::string_view::npos) {
    body += kLineEnd.size();
  } else {
    return kSaveImpossible;
  }
  // Only the exact spelling is decoded; a quoted-printable part is saved as it was sent.
  if (mime::GetTransEncode(partText) == u"base64") {
    return SaveBase64File(part.substr(body), destination);
  }
  return SavePlainFile(part.substr(body), destination);
}

int SaveBodyByEncoding(std::string_view body, const CString& transferEncoding,
                       const std::string& destination) {
  if (transferEncoding.CompareNoCase(u"base64") == 0) return SaveBase64File(body, destination);
  if (transferEncoding.CompareNoCase(u"quoted-printable") == 0) {
    return SaveQuotedPrintableFile(body, destination);
  }
  return SavePlainFile(body, destination);
}

}  // namespace mailslice::attach
