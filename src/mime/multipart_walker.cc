#include "mime/multipart_walker.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

#include "mime/content_type_reader.h"
#include "mime/forward_finder.h"
#include "mime/header_parameters.h"
#include "mime/text_memo.h"
#include "platform/code_page.h"

namespace mailslice::mime {
namespace {

constexpr size_t kUsualPieceCount = 8;
constexpr size_t kUsualDelimiterCount = 2;

bool IsNestedMultipart(const CString& contentType) {
  return contentType == u"multipart/mixed" || contentType == u"multipart/alternative";
}

std::string Delimiter(const CString& boundary) {
  // Each walk of the loaded message builds its delimiter again: the wide form is made in room
  // the thread keeps.
  thread_local std::u16string wide;
  wide.assign(u"--").append(boundary.Str());
  return platform::WideToAnsi(wide);
}

class Walk {
 public:
  Walk(const char* text, std::string delimiter)
      : text_(text, TextMemo::Length(text)),
        outer_(text_, std::move(delimiter)),
        closing_(text_, outer_.needle() + "--"),
        contentTypes_(text_) {}

  int Run(platform::FunctionRef<bool(const Piece&)> take) {
    // Cutting starts one character behind the header's end, so a delimiter right at the start
    // of a text without header is passed over.
    const char* position = outer_.Next(text_.data() + GetHeaderLength(text_.data()) + 1);
    if (position == nullptr) return kWalkNotMultipart;
    FindNestedBoundary(position);
    while (true) {
      if (inner_ && IsNestedMultipart(contentTypes_.At(position))) {
        position = CutNestedPieces(position, take);
        if (position == nullptr) return kWalkNotMultipart;
        continue;
      }
      const char* next = outer_.Next(position + 1);
      if (next == nullptr) break;
      if (embeddedStart_ != nullptr && embeddedEnd_ != nullptr && next > embeddedStart_) {
        // A forwarded message that reuses our boundary: its parts are one piece with it. When
        // its end lies behind us already, the delimiter found stands: a walk never goes back.
        next = outer_.Next(std::max(embeddedEnd_, position) + 1);
        embeddedStart_ = embeddedEnd_ = nullptr;
        if (next == nullptr) break;
      }
      if (!take(Piece{position, next, &outer_.needle()})) return kWalkNotMultipart;
      position = next;
    }
    return kWalkDone;
  }

 private:
  // A second boundary behind the first delimiter names the delimiter of a nested multipart,
  // or, when it equals ours, an embedded message to be stepped over.
  void FindNestedBoundary(const char* position) {
    CString nested;
    int offset = -1;
    if (GetBoundary(position, nested, &offset) == 0) return;
    if (offset >= 0) embeddedStart_ = position + offset;
    inner_.emplace(text_, Delimiter(nested));
    if (inner_->needle() == outer_.needle()) {
      embeddedEnd_ = closing_.Next(position);
      if (embeddedEnd_ == nullptr) embeddedStart_ = nullptr;
    }
  }

  // Cuts a nested multipart at its own delimiter; returns the last piece start, from which the
  // walk goes on (null when `take` stopped it).
  const char* CutNestedPieces(const char* position,
                              platform::FunctionRef<bool(const Piece&)> take) {
    const char* pieceStart = position + 1;
    for (const char* at = inner_->Next(pieceStart + 1); at != nullptr;
         at = inner_->Next(pieceStart + 1)) {
      if (!take(Piece{pieceStart, at, &inner_->needle()})) return nullptr;
      pieceStart = at;
    }
    return pieceStart;
  }

  std::string_view text_;  // measured once: every search below knows where the text ends
  ForwardFinder outer_;
  ForwardFinder closing_;
  std::optional<ForwardFinder> inner_;
  ContentTypeReader contentTypes_;
  const char* embeddedStart_ = nullptr;
  const char* embeddedEnd_ = nullptr;
};

char* CopyOf(const char* begin, const char* end) {
  size_t length = static_cast<size_t>(end - begin);
  auto* copy = static_cast<char*>(std::malloc(length + 1));
  if (copy == nullptr) return nullptr;
  std::memcpy(copy, begin, length);
  copy[length] = '\0';
  return copy;
}

bool Store(PartRecord* record, const char* begin, const char* end, const std::string& delimiter) {
  if (record == nullptr) return false;
  char* copy = CopyOf(begin, end);
  if (copy == nullptr) return false;
  std::free(record->partText);
  record->partText = copy;
  record->delimiter = CString(platform::AnsiToWide(delimiter));
  return true;
}

int Replay(const TextMemo::KeptWalk& kept, platform::FunctionRef<bool(const Piece&)> take) {
  for (const auto& cut : kept.cuts) {
    if (!take(Piece{kept.base + cut.begin, kept.base + cut.end, &kept.delimiters[cut.delimiter]})) {
      return kWalkNotMultipart;
    }
  }
  return kept.result;
}

// Runs the walk, recording its pieces; the record is complete only when nothing stopped it.
int Recorded(Walk& walk, TextMemo::KeptWalk& kept, platform::FunctionRef<bool(const Piece&)> take) {
  struct Recording {
    explicit Recording(TextMemo::KeptWalk& kept) : kept(kept) {
      kept.recording = true;
      kept.cuts.clear();
      kept.delimiters.clear();
      // A message has a handful of parts, cut at one or two delimiters: room made once.
      kept.cuts.reserve(kUsualPieceCount);
      kept.delimiters.reserve(kUsualDelimiterCount);
    }
    ~Recording() { kept.recording = false; }
    TextMemo::KeptWalk& kept;
  } recording(kept);
  bool stopped = false;
  int result = walk.Run([&](const Piece& piece) {
    auto known = std::find(kept.delimiters.begin(), kept.delimiters.end(), *piece.delimiter);
    size_t delimiter = static_cast<size_t>(known - kept.delimiters.begin());
    if (known == kept.delimiters.end()) kept.delimiters.push_back(*piece.delimiter);
    kept.cuts.push_back({static_cast<size_t>(piece.begin - kept.base),
                         static_cast<size_t>(piece.end - kept.base), delimiter});
    stopped = !take(piece);
    return !stopped;
  });
  kept.complete = !stopped;
  kept.result = result;
  return result;
}

}  // namespace

int GetHeaderLength(const char* text) {
  if (text == nullptr) return 0;
  const char* emptyLine = std::strstr(text, "\r\n\r\n");
  if (emptyLine == nullptr) emptyLine = std::strstr(text, "\n\n");
  return emptyLine == nullptr ? 0 : static_cast<int>(emptyLine - text);
}

int WalkMultipart(const char* text, const CString& boundary,
                  platform::FunctionRef<bool(const Piece&)> take) {
  if (text == nullptr) return kWalkNotMultipart;
  try {
    // The loaded message is walked for its body, its attachment list and its saves, each time
    // to the same pieces: the first complete walk is kept and the others replay it.
    std::string delimiter = Delimiter(boundary);
    TextMemo::KeptWalk* kept = TextMemo::KeptWalkOf(text, delimiter);
    if (kept != nullptr && kept->complete) return Replay(*kept, take);
    Walk walk(text, std::move(delimiter));
    if (kept == nullptr || kept->recording) return walk.Run(take);
    return Recorded(walk, *kept, take);
  } catch (const std::bad_alloc&) {
    return kWalkNoDelimiterBuffers;
  }
}

int GetMultiPartNoInAttachFile(const char* text, const CString& boundary, int* count) {
  int pieces = 0;
  int result = WalkMultipart(text, boundary, [&](const Piece&) {
    ++pieces;
    return true;
  });
  if (count != nullptr) *count = pieces;
  return result == kWalkNoDelimiterBuffers ? result : kWalkDone;
}

int GetMultiPart(const char* text, const CString& boundary, PartRecord** records) {
  if (records == nullptr) return kWalkNotMultipart;
  int index = 0;
  int result = WalkMultipart(text, boundary, [&](const Piece& piece) {
    return Store(records[index++], piece.begin, piece.end, *piece.delimiter);
  });
  if (result == kWalkNotMultipart && index == 0 && text != nullptr) {
    Store(records[0], text, text + std::strlen(text), std::string());
  }
  return result;
}

}  // namespace mailslice::mime
