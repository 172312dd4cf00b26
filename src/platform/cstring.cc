// CString and CStringArray: the wide string class of the library's interface.
#include <mailslice/cstring.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "platform/code_page.h"
#include "platform/letter_case.h"
#include "platform/white_space.h"
#include "platform/wide_search.h"

namespace {

using mailslice::platform::IsTrimmedSpace;
using mailslice::platform::ToLowerLetter;
using mailslice::platform::ToUpperLetter;

std::u16string_view Terminated(const char16_t* text) {
  return text == nullptr ? std::u16string_view() : std::u16string_view(text);
}

int Sign(int value) { return (value > 0) - (value < 0); }

int Position(size_t index) { return index == std::u16string::npos ? -1 : static_cast<int>(index); }

bool IsAscii(const char* text) {
  for (; *text != '\0'; ++text) {
    if (static_cast<unsigned char>(*text) >= 0x80) return false;
  }
  return true;
}

}  // namespace

CString::CString(const char16_t* text) : text_(Terminated(text)) {}

CString::CString(const char16_t* text, int length) {
  if (text != nullptr && length > 0) text_.assign(text, static_cast<size_t>(length));
}

CString::CString(const char* text) {
  if (text != nullptr) text_ = mailslice::platform::AnsiToWide(text);
}

CString::CString(char16_t ch, int repeat) : text_(static_cast<size_t>(std::max(repeat, 0)), ch) {}

CString::CString(std::u16string text) : text_(std::move(text)) {}

CString CString::FromUtf8(std::string_view utf8) {
  return CString(mailslice::platform::MultiByteToWide(mailslice::platform::kUtf8CodePage, utf8));
}

std::string CString::ToUtf8() const {
  return mailslice::platform::WideToMultiByte(mailslice::platform::kUtf8CodePage, text_);
}

char16_t CString::GetAt(int index) const {
  if (index < 0 || index >= GetLength()) return 0;
  return text_[static_cast<size_t>(index)];
}

void CString::SetAt(int index, char16_t ch) {
  if (index >= 0 && index < GetLength()) text_[static_cast<size_t>(index)] = ch;
}

bool CString::operator==(const char16_t* other) const { return text_ == Terminated(other); }

bool CString::operator==(const char* other) const {
  if (other == nullptr) return text_.empty();
  if (IsAscii(other)) return std::equal(text_.begin(), text_.end(), other, other + strlen(other));
  return *this == CString(other);
}

int CString::Compare(const CString& other) const { return Sign(text_.compare(other.text_)); }

int CString::CompareNoCase(const CString& other) const {
  return mailslice::platform::CompareNoCase(text_, other.text_);
}

CString& CString::operator+=(const CString& other) {
  text_ += other.text_;
  return *this;
}

CString& CString::operator+=(const char16_t* other) {
  text_ += Terminated(other);
  return *this;
}

CString& CString::operator+=(char16_t ch) {
  text_ += ch;
  return *this;
}

CString operator+(const CString& left, const CString& right) {
  CString result(left);
  return result += right;
}

CString operator+(const CString& left, const char16_t* right) {
  CString result(left);
  return result += right;
}

CString operator+(const char16_t* left, const CString& right) {
  CString result(left);
  return result += right;
}

CString operator+(const CString& left, char16_t right) {
  CString result(left);
  return result += right;
}

CString& CString::MakeLower() {
  std::transform(text_.begin(), text_.end(), text_.begin(), ToLowerLetter);
  return *this;
}

CString& CString::MakeUpper() {
  std::transform(text_.begin(), text_.end(), text_.begin(), ToUpperLetter);
  return *this;
}

int CString::Find(char16_t ch, int start) const {
  if (start < 0 || start > GetLength()) return -1;
  return Position(mailslice::platform::FindUnit(text_, ch, static_cast<size_t>(start)));
}

int CString::Find(const CString& sub, int start) const {
  if (start < 0 || start > GetLength()) return -1;
  return Position(mailslice::platform::FindUnits(text_, sub.text_, static_cast<size_t>(start)));
}

int CString::ReverseFind(char16_t ch) const { return Position(text_.rfind(ch)); }

int CString::FindOneOf(const CString& set) const {
  return Position(text_.find_first_of(set.text_));
}

CString CString::Left(int count) const {
  return CString(text_.substr(0, static_cast<size_t>(std::clamp(count, 0, GetLength()))));
}

CString CString::Right(int count) const {
  int kept = std::clamp(count, 0, GetLength());
  return CString(text_.substr(static_cast<size_t>(GetLength() - kept)));
}

CString CString::Mid(int first) const { return Mid(first, GetLength()); }

CString CString::Mid(int first, int count) const {
  first = std::clamp(first, 0, GetLength());
  count = std::clamp(count, 0, GetLength() - first);
  return CString(text_.substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CString& CString::Trim() { return TrimRight().TrimLeft(); }

CString& CString::TrimLeft() {
  text_.erase(text_.begin(), std::find_if_not(text_.begin(), text_.end(), IsTrimmedSpace));
  return *this;
}

CString& CString::TrimRight() {
  text_.erase(std::find_if_not(text_.rbegin(), text_.rend(), IsTrimmedSpace).base(), text_.end());
  return *this;
}

CString& CString::Trim(char16_t ch) { return TrimRight(ch).TrimLeft(ch); }

CString& CString::TrimLeft(char16_t ch) {
  text_.erase(0, std::min(text_.find_first_not_of(ch), text_.size()));
  return *this;
}

CString& CString::TrimRight(char16_t ch) {
  size_t last = text_.find_last_not_of(ch);
  text_.erase(last == std::u16string::npos ? 0 : last + 1);
  return *this;
}

int CString::Replace(const CString& oldText, const CString& newText) {
  if (oldText.IsEmpty()) return 0;
  std::u16string result;
  int count = 0;
  size_t from = 0;
  for (size_t at;
       (at = mailslice::platform::FindUnits(text_, oldText.text_, from)) != std::u16string::npos;
       from = at + oldText.text_.size()) {
    result.append(text_, from, at - from).append(newText.text_);
    ++count;
  }
  if (count > 0) text_ = result.append(text_, from);
  return count;
}

int CString::Replace(char16_t oldCh, char16_t newCh) {
  int count = static_cast<int>(std::count(text_.begin(), text_.end(), oldCh));
  std::replace(text_.begin(), text_.end(), oldCh, newCh);
  return count;
}

int CString::Remove(char16_t ch) {
  size_t before = text_.size();
  std::erase(text_, ch);
  return static_cast<int>(before - text_.size());
}

int CString::Delete(int index, int count) {
  if (index >= 0 && index < GetLength() && count > 0) {
    text_.erase(static_cast<size_t>(index), static_cast<size_t>(count));
  }
  return GetLength();
}

int CString::Insert(int index, const CString& text) {
  text_.insert(static_cast<size_t>(std::clamp(index, 0, GetLength())), text.text_);
  return GetLength();
}

CString CStringArray::GetAt(int index) const {
  if (index < 0 || index >= GetSize()) throw std::out_of_range("CStringArray index out of range");
  return items_[static_cast<size_t>(index)];
}

int CStringArray::Add(const CString& item) {
  items_.push_back(item);
  return GetSize() - 1;
}
