// The 2,000 small messages: everyday mail of 2 to 20 KB. Four in ten are ASCII, a third are
// European UTF-8 (quoted-printable, 8bit or Base64 bodies, encoded-word names and subjects),
// a quarter are Japanese ISO-2022-JP; they come as plain text, multipart/alternative, and
// multipart/mixed with one to three small attachments.
#include <algorithm>
#include <cstdio>

#include "corpus/corpus.h"
#include "corpus/message_parts.h"

namespace mailslice::corpus {
namespace {

constexpr uint32_t kSmallSeed = 20'000;
// The message sizes aimed at; the parts land within about a tenth of the aim, so every
// message stays between 2 and 20 KB.
constexpr uint32_t kSmallestAim = 2'400;
constexpr uint32_t kLargestAim = 17'000;
constexpr size_t kLeastText = 300;

Script ScriptOfSender(Dice& dice) {
  uint32_t roll = dice.Below(100);
  return roll < 40 ? Script::kAscii : roll < 75 ? Script::kEuropean : Script::kJapanese;
}

std::string Alternative(Dice& dice, Script script, size_t budget) {
  std::string boundary = Boundary(dice);
  return Multipart(
      "alternative", boundary,
      {PlainTextPart(dice, script, budget * 2 / 5), HtmlPart(dice, script, budget * 3 / 5)}, false);
}

// Text and one to three attachments, which take up to about half of the room.
std::string WithAttachments(Dice& dice, Script script, size_t room, bool alternative) {
  uint32_t count = dice.Between(1, 3);
  size_t largest = std::max<size_t>(200, room / 2 / count * 57 / 78);
  std::vector<std::string> attachments;
  size_t used = 0;
  for (uint32_t ordinal = 1; ordinal <= count; ++ordinal) {
    attachments.push_back(AttachmentPart(dice, script, static_cast<int>(ordinal),
                                         dice.Between(200, static_cast<uint32_t>(largest))));
    used += attachments.back().size();
  }
  size_t textBudget = std::max(kLeastText, room > used ? room - used : 0);
  std::vector<std::string> parts = {alternative ? Alternative(dice, script, textBudget)
                                                : PlainTextPart(dice, script, textBudget)};
  parts.insert(parts.end(), attachments.begin(), attachments.end());
  return Multipart("mixed", Boundary(dice), parts, true);
}

}  // namespace

std::string SmallMessage(int number) {
  Dice dice(kSmallSeed + static_cast<uint32_t>(number));
  size_t aim = dice.Between(kSmallestAim, kLargestAim);
  Script script = ScriptOfSender(dice);
  std::string message = MessageHeaders(dice, script, Subject(dice, script));
  size_t room = std::max(kLeastText, aim > message.size() ? aim - message.size() : 0);
  uint32_t shape = dice.Below(100);
  if (shape < 30) return message + PlainTextPart(dice, script, room);
  if (shape < 55) return message + Alternative(dice, script, room);
  return message + WithAttachments(dice, script, room, shape >= 80);
}

std::string SmallMessageName(int number) {
  char name[16];
  std::snprintf(name, sizeof name, "%04d.eml", number);
  return name;
}

}  // namespace mailslice::corpus
