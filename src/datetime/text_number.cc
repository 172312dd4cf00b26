#include "datetime/text_number.h"

#include <climits>

namespace mailslice::datetime {
namespace {

bool IsLeadingSpace(char16_t ch) { return ch == u' ' || (ch >= u'\t' && ch <= u'\r'); }

}  // namespace

int LeadingInteger(std::u16string_view text) {
  size_t at = 0;
  while (at < text.size() && IsLeadingSpace(text[at])) ++at;
  bool negative = false;
  if (at < text.size() && (text[at] == u'+' || text[at] == u'-')) negative = text[at++] == u'-';
  long long value = 0;
  for (; at < text.size() && text[at] >= u'0' && text[at] <= u'9'; ++at) {
    value = value * 10 + (text[at] - u'0');
    if (value > INT_MAX) value = static_cast<long long>(INT_MAX) + 1;  // held, never overflows
  }
  if (negative) value = -value;
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

}  // namespace mailslice::datetime
