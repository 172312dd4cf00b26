#include "attach/attachment_saver.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "attach/staged_file.h"
#include "codec/base64_decoder.h"
#include "codec/quoted_printable.h"
#include "mime/header_parameters.h"
#include "platform/letter_case.h"

namespace mailslice::attach {
namespace {

using platform::ErrorCode;
using platform::kErrorDiskFull;
using platform::kErrorSuccess;

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kEmptyLine = "\r\n\r\n";
// An escape is "=" and two more bytes.
constexpr size_t kEscapeLength = 3;

struct FreeDeleter {
  void operator()(char* buffer) const { std::free(buffer); }
};

bool IsUpperHexDigit(char ch) { return (ch >= '0' && ch <= '9') || (ch >= 'A' && ch <= 'F'); }

// Where the decoder's step at the escape `at` ends: behind a soft line break ("=" CR LF, or
// "=" and one byte then CR LF) or a valid escape, else right behind the "=", which alone is
// dropped.
size_t EscapeEnd(std::string_view text, size_t at) {
  bool softBreak = (text[at + 1] == '\r' && text[at + 2] == '\n') ||
                   (text[at + 2] == '\r' && at + 3 < text.size() && text[at + 3] == '\n');
  bool valid = IsUpperHexDigit(text[at + 1]) && IsUpperHexDigit(text[at + 2]);
  return softBreak || valid ? at + kEscapeLength : at + 1;
}

// How much of `window` can be decoded on its own with the same result as within the whole
// text: up to the last place where the decoder's steps meet and no escape has looked beyond.
// An escape looks at the two bytes behind its "=", and at a third when the second is CR.
size_t SafeChunkLength(std::string_view window) {
  size_t safe = 0;
  size_t looked = 0;  // one past the last byte an escape has looked at
  for (size_t at = 0; at < window.size();) {
    size_t equals = window.find('=', at);
    if (equals == std::string_view::npos) return window.size();
    if (equals >= looked) safe = equals;
    if (window.size() - equals < kEscapeLength) break;
    size_t reach = equals + kEscapeLength + (window[equals + 2] == '\r' ? 1 : 0);
    if (reach > window.size()) break;
    looked = reach;
    at = EscapeEnd(window, equals);
    if (at >= looked) safe = at;
  }
  return safe;
}

// Where the quoted-printable chunk that starts at `at` ends. A window in which no place is
// safe (a run of stray "=" longer than a chunk) is taken whole.
size_t QuotedPrintableChunkEnd(std::string_view text, size_t at, size_t chunkBytes) {
  if (text.size() - at <= chunkBytes) return text.size();
  size_t length = SafeChunkLength(text.substr(at, chunkBytes));
  return at + (length > 0 ? length : chunkBytes);
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

int SaveQuotedPrintableChunks(StagedFile& staged, std::string_view encoded, size_t chunkBytes) {
  std::string chunk;
  for (size_t at = 0; at < encoded.size();) {
    size_t end = QuotedPrintableChunkEnd(encoded, at, chunkBytes);
    chunk.assign(encoded.substr(at, end - at));
    chunk.resize(WithoutCutEscape(chunk).size());
    int length = 0;
    std::unique_ptr<char, FreeDeleter> decoded(
        codec::DecodeQuotedPrintable(chunk.c_str(), &length));
    if (decoded == nullptr) return kSaveImpossible;
    if (ErrorCode error = staged.Write(std::string_view(decoded.get(), length))) {
      return static_cast<int>(error);
    }
    at = end;
  }
  if (ErrorCode error = staged.CopyToDestination()) return static_cast<int>(error);
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

// Runs `save` on a fresh temporary file: kSaveImpossible when there is none, or when memory
// runs out on the way.
template <typename Save>
int SaveStaged(const std::string& destination, size_t encodedBytes, Save save) {
  try {
    // Decoding never makes the data longer.
    StagedFile staged(destination, encodedBytes);
    if (!staged.created()) return kSaveImpossible;
    return save(staged);
  } catch (const std::bad_alloc&) {
    return kSaveImpossible;
  }
}

}  // namespace

int SaveBase64File(std::string_view encoded, const std::string& destination) {
  return SaveStaged(destination, encoded.size(), [&](StagedFile& staged) {
    ErrorCode error = DecodeBase64Blocks(staged, encoded);
    if (error == kErrorSuccess) error = staged.CopyToDestination();
    return error == kErrorDiskFull ? static_cast<int>(kErrorDiskFull) : kSaveSucceeded;
  });
}

int SavePlainFile(std::string_view bytes, const std::string& destination) {
  return SaveStaged(destination, bytes.size(), [&](StagedFile& staged) -> int {
    for (size_t at = 0; at < bytes.size(); at += kPlainChunkBytes) {
      ErrorCode error = staged.Write(bytes.substr(at, kPlainChunkBytes));
      if (error != kErrorSuccess) return static_cast<int>(error);
    }
    if (ErrorCode error = staged.CopyToDestination()) return static_cast<int>(error);
    return kSaveSucceeded;
  });
}

int SaveQuotedPrintableFile(std::string_view encoded, const std::string& destination,
                            size_t chunkBytes) {
  if (chunkBytes == 0) chunkBytes = kPlainChunkBytes;
  return SaveStaged(destination, encoded.size(), [&](StagedFile& staged) {
    return SaveQuotedPrintableChunks(staged, encoded, chunkBytes);
  });
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
  if (platform::EqualsNoCase(transferEncoding.Str(), u"base64"))
    return SaveBase64File(body, destination);
  if (platform::EqualsNoCase(transferEncoding.Str(), u"quoted-printable")) {
    return SaveQuotedPrintableFile(body, destination);
  }
  return SavePlainFile(body, destination);
}

}  // namespace mailslice::attach
