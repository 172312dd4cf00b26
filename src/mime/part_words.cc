#include "mime/part_words.h"

#include <algorithm>
#include <array>
#include <span>

#include "codec/stem_filter.h"
#include "codec/substring_search.h"

namespace mailslice::mime {
namespace {

constexpr std::string_view kSpellings[kPartWordCount] = {
    "Mime-Version: 1.0",
    "MIME-Version: 1.0",
    "Content-Type:",
    "Content-type:",
    "Content-Transfer-Encoding:",
    "Content-transfer-encoding:",
    "Content-Disposition:",
    "Content-disposition:",
    "Content-description:",
    "charset=",
    "boundary=",
    "BOUNDARY=",
    "boundary =",
    "Boundary=",
    "attachment",
    "attach;",
    "filename=",
    "Filename=",
    "filename*0*=",
    "filename*0=",
    "filename*1=",
    "filename*=",
    "name=",
};

// The words share a few stems. The scan looks first for a stem's second and third bytes, so
// those are a pair that ordinary text and Base64 seldom hold ("tt" rather than "ta", "e=" rather
// than "am"), and a pass over a long body stops at few places.
constexpr std::string_view kVersionStem = "-Version: 1.0";
constexpr std::string_view kContentStem = "nt-";
constexpr std::string_view kBoundaryStem = "ary";
constexpr std::string_view kCapitalsStem = "ARY=";
constexpr std::string_view kCharsetStem = "et=";
constexpr std::string_view kAttachStem = "atta";
constexpr std::string_view kNameStem = "me=";
constexpr std::string_view kEncodedNameStem = "me*";

// A word found through the stem it holds, as the bytes in front of the stem and behind it.
struct Member {
  PartWord word;
  std::string_view before;
  std::string_view after;
};

constexpr Member MemberOf(PartWord word, std::string_view stem) {
  std::string_view spelling = kSpellings[static_cast<size_t>(word)];
  size_t at = spelling.find(stem);
  return {word, spelling.substr(0, at), spelling.substr(at + stem.size())};
}

constexpr Member kVersionMembers[] = {MemberOf(PartWord::kMimeVersion, kVersionStem),
                                      MemberOf(PartWord::kMimeVersionCapitals, kVersionStem)};
constexpr Member kContentMembers[] = {MemberOf(PartWord::kContentType, kContentStem),
                                      MemberOf(PartWord::kContentTypeLower, kContentStem),
                                      MemberOf(PartWord::kTransferEncoding, kContentStem),
                                      MemberOf(PartWord::kTransferEncodingLower, kContentStem),
                                      MemberOf(PartWord::kDisposition, kContentStem),
                                      MemberOf(PartWord::kDispositionLower, kContentStem),
                                      MemberOf(PartWord::kDescription, kContentStem)};
constexpr Member kBoundaryMembers[] = {MemberOf(PartWord::kBoundary, kBoundaryStem),
                                       MemberOf(PartWord::kBoundarySpaced, kBoundaryStem),
                                       MemberOf(PartWord::kBoundaryCapital, kBoundaryStem)};
constexpr Member kCapitalsMembers[] = {MemberOf(PartWord::kBoundaryCapitals, kCapitalsStem)};
constexpr Member kCharsetMembers[] = {MemberOf(PartWord::kCharset, kCharsetStem)};
constexpr Member kAttachMembers[] = {MemberOf(PartWord::kAttachment, kAttachStem),
                                     MemberOf(PartWord::kAttachSemicolon, kAttachStem)};
constexpr Member kNameMembers[] = {MemberOf(PartWord::kFileName, kNameStem),
                                   MemberOf(PartWord::kFileNameCapital, kNameStem),
                                   MemberOf(PartWord::kName, kNameStem)};
constexpr Member kEncodedNameMembers[] = {
    MemberOf(PartWord::kFileNameFirstEncoded, kEncodedNameStem),
    MemberOf(PartWord::kFileNameFirst, kEncodedNameStem),
    MemberOf(PartWord::kFileNameSecond, kEncodedNameStem),
    MemberOf(PartWord::kFileNameEncoded, kEncodedNameStem)};

struct Family {
  std::string_view stem;
  std::span<const Member> members;
};
// In the order of the filter's stems.
constexpr Family kFamilies[] = {
    {kVersionStem, kVersionMembers},   {kContentStem, kContentMembers},
    {kBoundaryStem, kBoundaryMembers}, {kCapitalsStem, kCapitalsMembers},
    {kCharsetStem, kCharsetMembers},   {kAttachStem, kAttachMembers},
    {kNameStem, kNameMembers},         {kEncodedNameStem, kEncodedNameMembers}};

const codec::StemFilter& Filter() {
  static const codec::StemFilter filter{kVersionStem,  kContentStem,    kBoundaryStem,
                                        kCapitalsStem, kCharsetStem,    kAttachStem,
                                        kNameStem,     kEncodedNameStem};
  return filter;
}

// For each family and each byte, the members whose first byte behind the stem it is (one bit
// each, in the order of the family's members); a member that ends with the stem takes any.
// Index 256 stands for the end of the text.
constexpr size_t kEndOfText = 256;
using FollowerTable = std::array<std::array<uint8_t, kEndOfText + 1>, std::size(kFamilies)>;
constexpr FollowerTable MakeFollowerTable() {
  FollowerTable table{};
  for (size_t family = 0; family < std::size(kFamilies); ++family) {
    for (size_t member = 0; member < kFamilies[family].members.size(); ++member) {
      std::string_view after = kFamilies[family].members[member].after;
      for (size_t byte = 0; byte <= kEndOfText; ++byte) {
        bool follows =
            after.empty() || (byte < kEndOfText && static_cast<unsigned char>(after[0]) == byte);
        if (follows) table[family][byte] |= static_cast<uint8_t>(1u << member);
      }
    }
  }
  return table;
}
constexpr FollowerTable kFollowers = MakeFollowerTable();

// Whether `bytes` stand at `at`, which has room for them.
bool SameBytes(const char* at, std::string_view bytes) {
  for (size_t k = 0; k < bytes.size(); ++k) {
    if (at[k] != bytes[k]) return false;
  }
  return true;
}

}  // namespace

std::string_view SpellingOf(PartWord word) { return kSpellings[static_cast<size_t>(word)]; }

PartWordIndex::PartWordIndex(std::string_view text) {
  // The places in the order found (word in the high half), then sorted by word: a word's
  // places are found in order, and the sort keeps that order.
  thread_local std::vector<uint64_t> found;
  found.clear();
  Filter().ForEach(text, [&](size_t stem, size_t stemPlace) {
    const Family& family = kFamilies[stem];
    // What follows the stem tells most members apart at its first byte.
    size_t stemEnd = stemPlace + family.stem.size();
    size_t next = stemEnd < text.size() ? static_cast<unsigned char>(text[stemEnd]) : kEndOfText;
    for (unsigned members = kFollowers[stem][next]; members != 0; members &= members - 1) {
      const Member& member = family.members[static_cast<size_t>(__builtin_ctz(members))];
      if (member.after.size() > text.size() - stemEnd || member.before.size() > stemPlace ||
          !SameBytes(text.data() + stemEnd, member.after) ||
          !SameBytes(text.data() + stemPlace - member.before.size(), member.before)) {
        continue;
      }
      found.push_back(static_cast<uint64_t>(member.word) << 32 |
                      (stemPlace - member.before.size()));
    }
  });
  for (uint64_t entry : found) ++starts_[(entry >> 32) + 1];
  for (size_t word = 0; word < kPartWordCount; ++word) starts_[word + 1] += starts_[word];
  places_.resize(found.size());
  std::array<uint32_t, kPartWordCount> next;
  std::copy_n(starts_.begin(), kPartWordCount, next.begin());
  for (uint64_t entry : found) places_[next[entry >> 32]++] = static_cast<uint32_t>(entry);
  // A text full of words would leave a large buffer behind for good.
  constexpr size_t kKeptRoom = 1 << 12;
  if (found.capacity() > kKeptRoom) std::vector<uint64_t>().swap(found);
}

const char* WordPlaces::Next(const char* from) const {
  if (base_ == nullptr) {
    std::string_view stretch(begin_, static_cast<size_t>(end_ - begin_));
    size_t at = codec::FindSubstring(stretch, word_, static_cast<size_t>(from - begin_));
    return at == std::string_view::npos ? nullptr : begin_ + at;
  }
  auto place = std::lower_bound(places_.begin(), places_.end(), static_cast<size_t>(from - base_));
  if (place == places_.end()) return nullptr;
  const char* at = base_ + *place;
  // Places further on end further on too.
  return at <= end_ && static_cast<size_t>(end_ - at) >= word_.size() ? at : nullptr;
}

size_t WordPlaces::Count() const {
  size_t count = 0;
  for (const char* at = First(); at != nullptr; at = Next(at + 1)) ++count;
  return count;
}

}  // namespace mailslice::mime
