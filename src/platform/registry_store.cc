#include "platform/registry_store.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <vector>

#include "platform/device_settings.h"
#include "platform/file_system.h"
#include "platform/kept_file.h"

namespace mailslice::platform::registry {
namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kDwordPrefix = "=dword:";

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  if (a == b) return true;  // as written, the usual case
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; };
    return lower(x) == lower(y);
  });
}

struct Section {
  std::string keyPath;
  std::vector<std::string> lines;  // value lines, kept as written
};

// The name of a value line ("Name"=...), or nothing for a line that is not one.
std::optional<std::string_view> ValueName(std::string_view line) {
  if (line.size() < 3 || line.front() != '"') return std::nullopt;
  size_t close = line.find('"', 1);
  if (close == std::string_view::npos || close + 1 >= line.size() || line[close + 1] != '=') {
    return std::nullopt;
  }
  return line.substr(1, close - 1);
}

Section& FindOrAddSection(std::vector<Section>& sections, std::string_view keyPath) {
  for (Section& section : sections) {
    if (EqualsIgnoringCase(section.keyPath, keyPath)) return section;
  }
  sections.push_back({std::string(keyPath), {}});
  return sections.back();
}

std::vector<Section> ParseSections(std::string_view content) {
  std::vector<Section> sections;
  Section* current = nullptr;
  while (!content.empty()) {
    size_t end = content.find('\n');
    std::string_view line = content.substr(0, end);
    content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
      current = &FindOrAddSection(sections, line.substr(1, line.size() - 2));
    } else if (current != nullptr && !line.empty()) {
      current->lines.emplace_back(line);
    }
  }
  return sections;
}

// The sections of the content read last: the store is read for every time shown and hardly
// ever changes, so the same content is not parsed again.
class ParsedContent {
 public:
  const std::vector<Section>& Of(const std::string& content) {
    if (!parsed_ || content != content_) {
      parsed_ = false;
      sections_ = ParseSections(content);
      content_ = content;
      parsed_ = true;
    }
    return sections_;
  }

 private:
  bool parsed_ = false;
  std::string content_;
  std::vector<Section> sections_;
};

class Store {
 public:
  // Reads the store; a missing file is an empty store, an unreadable one a failure.
  bool Load() {
    auto location = RegistryPath();
    if (!location) return false;
    path_ = std::move(*location);
    // The store is read on every call (the clock setting is asked for each time shown) and
    // hardly ever changes: the last read is kept while the file stays as it was.
    thread_local KeptFile kept;
    const std::string* content = kept.Read(path_);
    // Only a store that cannot be read is asked whether it is there at all.
    if (!content) return !Files().Exists(path_);
    thread_local ParsedContent parsed;
    sections_ = &parsed.Of(*content);
    return true;
  }

  const Section* Find(std::string_view keyPath) const {
    for (const Section& section : *sections_) {
      if (EqualsIgnoringCase(section.keyPath, keyPath)) return &section;
    }
    return nullptr;
  }

  // A store about to change works on its own copy of the sections read.
  Section& FindOrAdd(std::string_view keyPath) {
    if (sections_ != &owned_) {
      owned_ = *sections_;
      sections_ = &owned_;
    }
    return FindOrAddSection(owned_, keyPath);
  }

  // Writes a new file beside the store and moves it into place.
  bool Save() {
    if (Files().MakeFolders(FolderOf(path_), false) != kErrorSuccess) return false;
    std::string temporary = path_ + ".new-" + std::to_string(getpid());
    Files().Remove(temporary);
    ErrorCode error = kErrorSuccess;
    auto file = Files().CreateNew(temporary, &error);
    if (!file) return false;
    std::string content = Serialise();
    error = file->Write(content.data(), content.size());
    if (ErrorCode closed = file->Close(); error == kErrorSuccess) error = closed;
    if (error == kErrorSuccess) error = Files().Rename(temporary, path_);
    if (error != kErrorSuccess) Files().Remove(temporary);
    return error == kErrorSuccess;
  }

 private:
  std::string Serialise() const {
    std::string content(kHeader);
    content += "\n";
    for (const Section& section : *sections_) {
      content += "\n[" + section.keyPath + "]\n";
      for (const std::string& line : section.lines) content += line + "\n";
    }
    return content;
  }

  std::string path_;
  std::vector<Section> owned_;
  const std::vector<Section>* sections_ = &owned_;
};

std::string DwordLine(const std::string& valueName, uint32_t value) {
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(value));
  return "\"" + valueName + "\"" + std::string(kDwordPrefix) + digits;
}

// The DWORD value `valueName` among the lines of a key.
std::optional<uint32_t> DwordIn(const Section& section, const std::string& valueName) {
  for (const std::string& line : section.lines) {
    auto name = ValueName(line);
    if (!name || !EqualsIgnoringCase(*name, valueName)) continue;
    std::string_view data = std::string_view(line).substr(name->size() + 2);
    if (data.substr(0, kDwordPrefix.size()) != kDwordPrefix) return std::nullopt;
    data.remove_prefix(kDwordPrefix.size());
    uint32_t value = 0;
    auto [end, error] = std::from_chars(data.data(), data.data() + data.size(), value, 16);
    if (error != std::errc() || end != data.data() + data.size()) return std::nullopt;
    return value;
  }
  return std::nullopt;
}

}  // namespace

bool CreateOrOpenKey(const std::string& keyPath) {
  Store store;
  if (!store.Load()) return false;
  if (store.Find(keyPath) != nullptr) return true;
  store.FindOrAdd(keyPath);
  return store.Save();
}

std::optional<uint32_t> QueryDword(const std::string& keyPath, const std::string& valueName) {
  Store store;
  if (!store.Load()) return std::nullopt;
  const Section* section = store.Find(keyPath);
  if (section == nullptr) return std::nullopt;
  return DwordIn(*section, valueName);
}

KeyQuery CreateOrOpenKeyAndQueryDword(const std::string& keyPath, const std::string& valueName) {
  Store store;
  if (!store.Load()) return {};
  if (const Section* section = store.Find(keyPath)) return {true, DwordIn(*section, valueName)};
  // A key made just now holds no value.
  store.FindOrAdd(keyPath);
  return {store.Save(), std::nullopt};
}

bool SetDword(const std::string& keyPath, const std::string& valueName, uint32_t value) {
  Store store;
  if (!store.Load()) return false;
  Section& section = store.FindOrAdd(keyPath);
  std::erase_if(section.lines, [&](const std::string& line) {
    auto name = ValueName(line);
    return name && EqualsIgnoringCase(*name, valueName);
  });
  section.lines.push_back(DwordLine(valueName, value));
  return store.Save();
}

}  // namespace mailslice::platform::registry
