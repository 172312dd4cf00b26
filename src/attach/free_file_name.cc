#include "attach/free_file_name.h"

#include <limits>

#include "platform/file_system.h"

namespace mailslice::attach {
namespace {

struct PathParts {
  CString folder;  // with its closing separator
  CString base;
  CString extension;
  bool hasExtension = false;
};

PathParts Split(const CString& path) {
  const std::u16string& text = path.Str();
  size_t separator = text.find_last_of(u"/\\");
  size_t nameStart = separator == std::u16string::npos ? 0 : separator + 1;
  PathParts parts;
  parts.folder = path.Left(static_cast<int>(nameStart));
  size_t dot = text.rfind(u'.');
  if (dot == std::u16string::npos || dot <= nameStart) {
    parts.base = path.Mid(static_cast<int>(nameStart));
    return parts;
  }
  parts.base = path.Mid(static_cast<int>(nameStart), static_cast<int>(dot - nameStart));
  parts.extension = path.Mid(static_cast<int>(dot + 1));
  parts.hasExtension = true;
  return parts;
}

CString Numbered(const PathParts& parts, int number) {
  CString candidate;
  if (parts.hasExtension) {
    candidate.Format(u"%s%s(%d).%s", parts.folder.GetString(), parts.base.GetString(), number,
                     parts.extension.GetString());
  } else {
    candidate.Format(u"%s%s(%d)", parts.folder.GetString(), parts.base.GetString(), number);
  }
  return candidate;
}

bool Taken(const CString& path) { return platform::Files().Exists(path.ToUtf8()); }

}  // namespace

CString FreeFileName(const CString& path) {
  if (!Taken(path)) return path;
  PathParts parts = Split(path);
  // The numbering starts at 0: the first alternative of "a.txt" is "a(0).txt".
  for (int number = 0; number < std::numeric_limits<int>::max(); ++number) {
    CString candidate = Numbered(parts, number);
    if (!Taken(candidate)) return candidate;
  }
  return path;
}

}  // namespace mailslice::attach
