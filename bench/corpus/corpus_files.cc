#include <fstream>
#include <system_error>

#include "corpus/corpus.h"

namespace mailslice::corpus {
namespace {

namespace fs = std::filesystem;

// Written beside its place and renamed into it, so a corpus cut short by an interruption
// never passes for a complete one.
bool WriteFile(const fs::path& path, const std::string& text, std::string* problem) {
  fs::path partial = path;
  partial += ".partial";
  {
    std::ofstream file(partial, std::ios::binary | std::ios::trunc);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file.flush()) {
      *problem = "cannot write " + partial.string();
      return false;
    }
  }
  std::error_code error;
  fs::rename(partial, path, error);
  if (error) *problem = "cannot rename " + partial.string() + ": " + error.message();
  return !error;
}

}  // namespace

bool WriteCorpus(const fs::path& folder, std::string* problem) {
  std::error_code error;
  fs::create_directories(folder / kSmallFolder, error);
  if (error) {
    *problem = "cannot create " + (folder / kSmallFolder).string() + ": " + error.message();
    return false;
  }
  for (int number = 0; number < kSmallMessages; ++number) {
    if (!WriteFile(folder / kSmallFolder / SmallMessageName(number), SmallMessage(number),
                   problem)) {
      return false;
    }
  }
  return WriteFile(folder / kNewsletterFile, NewsletterMessage(), problem) &&
         WriteFile(folder / kQuotedPrintableFile, QuotedPrintableMessage(), problem) &&
         WriteFile(folder / kMixedFile, MixedMessage(), problem) &&
         WriteFile(folder / kVersionFile, std::to_string(kCorpusVersion) + "\n", problem);
}

bool HasCorpus(const fs::path& folder) {
  std::ifstream stamp(folder / kVersionFile);
  int version = 0;
  if (!(stamp >> version) || version != kCorpusVersion) return false;
  std::error_code error;
  for (const char* name : {kMixedFile, kQuotedPrintableFile, kNewsletterFile}) {
    if (!fs::is_regular_file(folder / name, error)) return false;
  }
  for (int number = 0; number < kSmallMessages; ++number) {
    if (!fs::is_regular_file(folder / kSmallFolder / SmallMessageName(number), error)) {
      return false;
    }
  }
  return true;
}

}  // namespace mailslice::corpus
