// printf-style formatting of CString with a wide format: string and character conversions are
// done here, every numeric conversion is handed to snprintf.
#include <mailslice/cstring.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "platform/code_page.h"
#include "platform/format_integers.h"

namespace {

struct Conversion {
  std::string flags;
  int width = -1;
  int precision = -1;
  std::string length;  // hh, h, l, ll, L, z, j, t or empty
  char type = 0;
};

bool IsFlag(char16_t ch) {
  return ch == u'-' || ch == u'+' || ch == u' ' || ch == u'#' || ch == u'0';
}

bool IsDigit(char16_t ch) { return ch >= u'0' && ch <= u'9'; }

// Reads a number or "*" (taken from `nextInt`) at `at`; -1 when neither is there.
template <typename NextInt>
int ReadCount(const char16_t*& at, NextInt nextInt) {
  if (*at == u'*') {
    ++at;
    return nextInt();
  }
  if (!IsDigit(*at)) return -1;
  int value = 0;
  while (IsDigit(*at)) value = std::min(value * 10 + (*at++ - u'0'), 1 << 20);
  return value;
}

template <typename NextInt>
Conversion ReadConversion(const char16_t*& at, NextInt nextInt) {
  Conversion conversion;
  while (IsFlag(*at)) conversion.flags += static_cast<char>(*at++);
  conversion.width = ReadCount(at, nextInt);
  if (conversion.width < -1) {  // a negative "*" width means left-justified
    conversion.flags += '-';
    conversion.width = -conversion.width;
  }
  if (*at == u'.') {
    ++at;
    conversion.precision = std::max(ReadCount(at, nextInt), 0);
  }
  while (*at == u'h' || *at == u'l' || *at == u'L' || *at == u'z' || *at == u'j' || *at == u't') {
    conversion.length += static_cast<char>(*at++);
  }
  if (*at != u'\0') conversion.type = static_cast<char>(*at++);
  return conversion;
}

void AppendPadded(std::u16string& out, std::u16string_view text, const Conversion& conversion) {
  if (conversion.precision >= 0 && text.size() > static_cast<size_t>(conversion.precision)) {
    text = text.substr(0, static_cast<size_t>(conversion.precision));
  }
  size_t padding = conversion.width > static_cast<int>(text.size())
                       ? static_cast<size_t>(conversion.width) - text.size()
                       : 0;
  bool left = conversion.flags.find('-') != std::string::npos;
  if (!left) out.append(padding, u' ');
  out.append(text);
  if (left) out.append(padding, u' ');
}

std::string NarrowDirective(const Conversion& conversion) {
  std::string directive = "%" + conversion.flags;
  if (conversion.width >= 0) directive += std::to_string(conversion.width);
  if (conversion.precision >= 0) {
    directive += '.';
    directive += std::to_string(conversion.precision);
  }
  return directive + conversion.length + conversion.type;
}

template <typename T>
void AppendNumber(std::u16string& out, const Conversion& conversion, T value) {
  std::string directive = NarrowDirective(conversion);
  int size = std::snprintf(nullptr, 0, directive.c_str(), value);
  if (size <= 0) return;
  std::string text(static_cast<size_t>(size) + 1, '\0');
  std::snprintf(text.data(), text.size(), directive.c_str(), value);
  out.append(text.begin(), text.begin() + size);  // ASCII only
}

// "%d" and "%0<width>d" (the forms message catalogs use for times and dates), written as
// printf writes them: the digits after a minus sign, filled to the width with zeros after
// the sign or with blanks before it.
bool IsPlainDecimal(const Conversion& conversion) {
  return (conversion.type == 'd' || conversion.type == 'i') && conversion.precision < 0 &&
         conversion.flags.find_first_not_of('0') == std::string::npos;
}

void AppendPlainDecimal(std::u16string& out, const Conversion& conversion, int value) {
  constexpr size_t kMostDigits = 10;
  char digits[kMostDigits];
  size_t count = 0;
  unsigned magnitude = value < 0 ? 0u - static_cast<unsigned>(value) : static_cast<unsigned>(value);
  do {
    digits[count++] = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  size_t length = count + (value < 0 ? 1 : 0);
  size_t width = conversion.width > 0 ? static_cast<size_t>(conversion.width) : 0;
  size_t padding = width > length ? width - length : 0;
  bool zeros = !conversion.flags.empty();
  if (!zeros) out.append(padding, u' ');
  if (value < 0) out += u'-';
  if (zeros) out.append(padding, u'0');
  while (count > 0) out += static_cast<char16_t>(digits[--count]);
}

void AppendInteger(std::u16string& out, const Conversion& conversion, va_list& args) {
  bool isSigned = conversion.type == 'd' || conversion.type == 'i';
  const std::string& length = conversion.length;
  if (length == "ll" || length == "j") {
    isSigned ? AppendNumber(out, conversion, va_arg(args, long long))
             : AppendNumber(out, conversion, va_arg(args, unsigned long long));
  } else if (length == "l" || length == "z" || length == "t") {
    isSigned ? AppendNumber(out, conversion, va_arg(args, long))
             : AppendNumber(out, conversion, va_arg(args, unsigned long));
  } else {  // int and shorter types arrive as int
    isSigned ? AppendNumber(out, conversion, va_arg(args, int))
             : AppendNumber(out, conversion, va_arg(args, unsigned int));
  }
}

void AppendConversion(std::u16string& out, const Conversion& conversion, va_list& args) {
  switch (conversion.type) {
    case 's':
      if (conversion.length == "h") {
        const char* text = va_arg(args, const char*);
        AppendPadded(out, mailslice::platform::AnsiToWide(text ? text : "(null)"), conversion);
      } else {
        const char16_t* text = va_arg(args, const char16_t*);
        AppendPadded(out, text ? text : u"(null)", conversion);
      }
      return;
    case 'c': {
      char16_t ch = static_cast<char16_t>(va_arg(args, int));
      AppendPadded(out, std::u16string_view(&ch, 1), conversion);
      return;
    }
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
      AppendInteger(out, conversion, args);
      return;
    case 'f':
    case 'F':
    case 'e':
    case 'E':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
      conversion.length == "L" ? AppendNumber(out, conversion, va_arg(args, long double))
                               : AppendNumber(out, conversion, va_arg(args, double));
      return;
    case 'p':
      AppendNumber(out, conversion, va_arg(args, void*));
      return;
    case 'n':  // writing through an argument is never done
      (void)va_arg(args, void*);
      return;
    default:  // an unknown conversion is copied as it stands
      out += u'%';
      if (conversion.type != 0) out += static_cast<char16_t>(conversion.type);
      return;
  }
}

void AppendFormatted(std::u16string& out, const char16_t* format, va_list& args) {
  if (format == nullptr) return;
  for (const char16_t* at = format; *at != u'\0';) {
    if (*at != u'%') {
      out += *at++;
      continue;
    }
    ++at;
    if (*at == u'%') {
      out += *at++;
      continue;
    }
    AppendConversion(out, ReadConversion(at, [&] { return va_arg(args, int); }), args);
  }
}

}  // namespace

namespace mailslice::platform {

std::u16string FormatIntegers(std::u16string_view format, std::initializer_list<int> values) {
  const int* next = values.begin();
  auto nextInt = [&] { return next == values.end() ? 0 : *next++; };
  std::u16string out;
  out.reserve(format.size());
  // The conversions are read from NUL-terminated text; a catalog's short format is copied to
  // the stack for that.
  constexpr size_t kShortFormat = 64;
  char16_t shortCopy[kShortFormat];
  std::u16string longCopy;
  const char16_t* terminated = shortCopy;
  if (format.size() < kShortFormat) {
    std::copy(format.begin(), format.end(), shortCopy);
    shortCopy[format.size()] = u'\0';
  } else {
    longCopy.assign(format);
    terminated = longCopy.c_str();
  }
  for (const char16_t* at = terminated; *at != u'\0';) {
    if (*at != u'%') {
      const char16_t* text = at;
      while (*at != u'\0' && *at != u'%') ++at;
      out.append(text, at);
      continue;
    }
    const char16_t* start = at++;
    Conversion conversion = ReadConversion(at, nextInt);
    bool integer = conversion.type != 0 &&
                   std::string_view("diuoxX").find(conversion.type) != std::string_view::npos;
    if (integer && conversion.length.empty() && IsPlainDecimal(conversion)) {
      AppendPlainDecimal(out, conversion, nextInt());
    } else if (integer && conversion.length.empty()) {
      AppendNumber(out, conversion, nextInt());
    } else if (conversion.type == '%' && at == start + 2) {
      out += u'%';
    } else {
      out.append(start, at);  // anything but a plain integer conversion is text
    }
  }
  return out;
}

}  // namespace mailslice::platform

void CString::Format(const char16_t* format, ...) {
  std::u16string result;
  va_list args;
  va_start(args, format);
  AppendFormatted(result, format, args);
  va_end(args);
  text_ = std::move(result);
}

void CString::AppendFormat(const char16_t* format, ...) {
  std::u16string added;  // the arguments may point into this string
  va_list args;
  va_start(args, format);
  AppendFormatted(added, format, args);
  va_end(args);
  text_ += added;
}
