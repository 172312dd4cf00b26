// The HTML conversion on its own: an HTML body, as the decoding pipeline hands it over in
// wide text, reduced to the reader's plain text.
#include <mailslice/mailslice.h>

#include <string>

#include "fuzz_input.h"
#include "html/html_to_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  mailslice::fuzz::FuzzInput input(data, size);
  mailslice::fuzz::ChooseDevice(input);
  uint8_t choice = input.TakeByte();
  std::string_view bytes = input.TakeRest();
  // Either the bytes as UTF-8 (the usual charsets), or pairs of bytes as UTF-16 code units,
  // which reaches every code unit, lone surrogates included.
  CString html;
  if (choice & 1) {
    std::u16string units(bytes.size() / 2, u'\0');
    for (size_t i = 0; i < units.size(); ++i) {
      units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                       static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    }
    html = CString(std::move(units));
  } else {
    html = CString::FromUtf8(bytes);
  }
  mailslice::html::ConvertHtmlToText(html);
  return 0;
}
