// CString: the wide (UTF-16) string with value semantics that every text argument and result
// of libmailslice uses, and CStringArray, an ordered growable array of them.
#ifndef MAILSLICE_CSTRING_H
#define MAILSLICE_CSTRING_H

#include <mailslice/visibility.h>

#include <string>
#include <string_view>
#include <vector>

class MAILSLICE_API CString {
 public:
  CString() = default;
  CString(const char16_t* text);              // NOLINT: u"..." literals convert implicitly
  CString(const char16_t* text, int length);  // exactly `length` code units
  // 8-bit text, widened through the device ANSI code page.
  CString(const char* text);  // NOLINT: 8-bit literals convert implicitly
  CString(char16_t ch, int repeat);
  explicit CString(std::u16string text);

  static CString FromUtf8(std::string_view utf8);
  // UTF-8 form; an unpaired surrogate becomes U+FFFD.
  std::string ToUtf8() const;

  int GetLength() const { return static_cast<int>(text_.size()); }
  bool IsEmpty() const { return text_.empty(); }
  void Empty() { text_.clear(); }
  const char16_t* GetString() const { return text_.c_str(); }
  const std::u16string& Str() const { return text_; }
  // An index outside the string gives 0.
  char16_t GetAt(int index) const;
  char16_t operator[](int index) const { return GetAt(index); }
  void SetAt(int index, char16_t ch);

  bool operator==(const CString& other) const { return text_ == other.text_; }
  bool operator==(const char16_t* other) const;
  bool operator==(const char* other) const;  // the 8-bit text widened as by CString(const char*)
  bool operator!=(const CString& other) const { return !(*this == other); }
  bool operator!=(const char16_t* other) const { return !(*this == other); }
  bool operator!=(const char* other) const { return !(*this == other); }
  bool operator<(const CString& other) const { return text_ < other.text_; }
  // Negative, zero or positive as in wcscmp.
  int Compare(const CString& other) const;
  // As Compare, with ASCII and Latin-1 letters folded to lower case on both sides.
  int CompareNoCase(const CString& other) const;

  CString& operator+=(const CString& other);
  CString& operator+=(const char16_t* other);
  CString& operator+=(char16_t ch);
  friend MAILSLICE_API CString operator+(const CString& left, const CString& right);
  friend MAILSLICE_API CString operator+(const CString& left, const char16_t* right);
  friend MAILSLICE_API CString operator+(const char16_t* left, const CString& right);
  friend MAILSLICE_API CString operator+(const CString& left, char16_t right);

  // Case mapping of ASCII and Latin-1 letters; other characters are left alone.
  CString& MakeLower();
  CString& MakeUpper();

  // Index of the first match at or after `start`, or -1.
  int Find(char16_t ch, int start = 0) const;
  int Find(const CString& sub, int start = 0) const;
  int ReverseFind(char16_t ch) const;
  int FindOneOf(const CString& set) const;

  // Extraction; out-of-range counts and positions are clamped to the string.
  CString Left(int count) const;
  CString Right(int count) const;
  CString Mid(int first) const;
  CString Mid(int first, int count) const;

  // Trimming removes space, tab, CR, LF, vertical tab and form feed.
  CString& Trim();
  CString& TrimLeft();
  CString& TrimRight();
  CString& Trim(char16_t ch);
  CString& TrimLeft(char16_t ch);
  CString& TrimRight(char16_t ch);

  // Editing; each returns the number of replacements, removals or the new length.
  int Replace(const CString& oldText, const CString& newText);
  int Replace(char16_t oldCh, char16_t newCh);
  int Remove(char16_t ch);
  int Delete(int index, int count = 1);
  int Insert(int index, const CString& text);

  // printf-style formatting: %s and %ls take a const char16_t*, %hs a const char*, %c a
  // char16_t (passed as int); every other conversion behaves as in snprintf.
  void Format(const char16_t* format, ...);
  void AppendFormat(const char16_t* format, ...);

 private:
  std::u16string text_;
};

class MAILSLICE_API CStringArray {
 public:
  int GetSize() const { return static_cast<int>(items_.size()); }
  int GetCount() const { return GetSize(); }
  bool IsEmpty() const { return items_.empty(); }
  // Throws std::out_of_range for an index outside 0 .. GetSize() - 1.
  CString GetAt(int index) const;
  int Add(const CString& item);  // returns the index of the new item
  void RemoveAll() { items_.clear(); }

 private:
  std::vector<CString> items_;
};

#endif  // MAILSLICE_CSTRING_H
