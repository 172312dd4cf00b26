// The words the part readers look for in a part (field names, parameter spellings, attachment
// markers), each counted wherever it stands, and the index that finds every place of all of
// them in one pass over a text.
#ifndef MAILSLICE_MIME_PART_WORDS_H
#define MAILSLICE_MIME_PART_WORDS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace mailslice::mime {

enum class PartWord : uint8_t {
  kMimeVersion,            // "Mime-Version: 1.0"
  kMimeVersionCapitals,    // "MIME-Version: 1.0"
  kContentType,            // "Content-Type:"
  kContentTypeLower,       // "Content-type:"
  kTransferEncoding,       // "Content-Transfer-Encoding:"
  kTransferEncodingLower,  // "Content-transfer-encoding:"
  kDisposition,            // "Content-Disposition:"
  kDispositionLower,       // "Content-disposition:"
  kDescription,            // "Content-description:"
  kCharset,                // "charset="
  kBoundary,               // "boundary="
  kBoundaryCapitals,       // "BOUNDARY="
  kBoundarySpaced,         // "boundary ="
  kBoundaryCapital,        // "Boundary="
  kAttachment,             // "attachment"
  kAttachSemicolon,        // "attach;"
  kFileName,               // "filename="
  kFileNameCapital,        // "Filename="
  kFileNameFirstEncoded,   // "filename*0*="
  kFileNameFirst,          // "filename*0="
  kFileNameSecond,         // "filename*1="
  kFileNameEncoded,        // "filename*="
  kName,                   // "name="
};
inline constexpr size_t kPartWordCount = static_cast<size_t>(PartWord::kName) + 1;

std::string_view SpellingOf(PartWord word);

// Every place of every part word in a text, overlapping places included.
class PartWordIndex {
 public:
  // The text is at most kLongestText bytes. Throws std::bad_alloc when memory runs out.
  explicit PartWordIndex(std::string_view text);
  static constexpr size_t kLongestText = UINT32_MAX;

  // The places of `word`, as offsets from the text's start, ascending.
  std::span<const uint32_t> Places(PartWord word) const {
    auto index = static_cast<size_t>(word);
    return std::span<const uint32_t>(places_).subspan(starts_[index],
                                                      starts_[index + 1] - starts_[index]);
  }

 private:
  std::vector<uint32_t> places_;                       // by word, then by place
  std::array<uint32_t, kPartWordCount + 1> starts_{};  // where each word's places start
};

// The places of one part word in a stretch of text [begin, end), as a search of the stretch
// from each place on finds them: those an index of the text found, else searched for.
class WordPlaces {
 public:
  WordPlaces(const char* begin, const char* end, PartWord word)
      : begin_(begin), end_(end), word_(SpellingOf(word)) {}
  // The places `index` found in the text at `base`, which holds [begin, end).
  WordPlaces(const char* begin, const char* end, PartWord word, const char* base,
             const PartWordIndex& index)
      : begin_(begin),
        end_(end),
        word_(SpellingOf(word)),
        base_(base),
        places_(index.Places(word)) {}

  // The first place at or after `from` (within the stretch) where the whole word stands inside
  // the stretch; null when there is none.
  const char* Next(const char* from) const;
  const char* First() const { return Next(begin_); }
  // The number of places.
  size_t Count() const;
  // The same word in the stretch cut short at `end` (within the stretch).
  WordPlaces Before(const char* end) const {
    WordPlaces cut = *this;
    cut.end_ = end;
    return cut;
  }

 private:
  const char* begin_;
  const char* end_;
  std::string_view word_;
  const char* base_ = nullptr;  // the indexed text, or null when the stretch is searched
  std::span<const uint32_t> places_;
};

}  // namespace mailslice::mime

#endif  // MAILSLICE_MIME_PART_WORDS_H
