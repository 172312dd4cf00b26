// The decoders and converters on their own: Base64 (whole and in blocks), quoted-printable,
// the outgoing encoders, the Base64 coder and the five Japanese converters, each given the
// buffers its contract asks the caller for.
#include <mailslice/mailslice.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "codec/base64_decoder.h"
#include "fuzz_input.h"

namespace {

using mailslice::fuzz::Require;

// A malloc'd copy of `text`, for the converters that write or free their argument.
char* HeapCopy(const std::string& text) {
  char* copy = static_cast<char*>(std::malloc(text.size() + 1));
  std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

// Base64Decode reads *length characters (a count past the NUL ends there) and stores the number
// of bytes decoded.
void DecodeTransferEncodings(const std::string& text, int count) {
  int length = count;
  char* decoded = Base64Decode(text.c_str(), &length);
  Require(decoded != nullptr && (length >= 0 || count < -1) && length <= std::max(count, 0),
          "Base64 decodes no more bytes than it reads characters");
  std::free(decoded);
  std::free(Base64Decode(text.c_str(), nullptr));
  std::free(QPdecode(text.c_str()));
}

// Decoding in blocks of a size the input chooses gives the bytes of the whole decoding.
void DecodeInBlocks(const std::string& text, size_t blockSize) {
  mailslice::codec::Base64BlockDecoder decoder;
  std::string blocks;
  std::string_view rest(text.c_str());  // the whole decoder stops at a NUL too
  while (rest.size() > blockSize) {
    decoder.Decode(rest.substr(0, blockSize), false, blocks);
    rest.remove_prefix(blockSize);
  }
  decoder.Decode(rest, true, blocks);
  decoder.Decode("QUJD", true, blocks);  // ignored: the final block is behind
  int length = static_cast<int>(text.size());
  std::unique_ptr<char, decltype(&std::free)> whole(Base64Decode(text.c_str(), &length),
                                                    &std::free);
  Require(blocks == std::string_view(whole.get(), length),
          "blocks decode to the bytes of the whole text");
}

void EncodeForSending(const std::string& bytes) {
  auto data = reinterpret_cast<const unsigned char*>(bytes.data());
  int size = static_cast<int>(bytes.size());
  char* encoded = Encode(data, size);
  char* asChar = EncodeToChar(data, size);
  Require(encoded != nullptr && asChar != nullptr && std::strcmp(encoded, asChar) == 0,
          "Encode and EncodeToChar give the same text");
  Require(EncodeToCString(data, size, 0) == CString(asChar), "EncodeToCString widens it");
  std::free(encoded);
  std::free(asChar);
}

// The coder keeps its blocks until they are freed; what it encodes decodes back.
void RunCoder(const std::string& text, uint8_t choice) {
  Base64CoderEncode(text.c_str());
  std::string encoded(Base64CoderEncodedMessage(), Base64CoderEncodedLength());
  Base64CoderDecode(encoded.c_str());
  std::string decoded(Base64CoderDecodedMessage(), Base64CoderDecodedLength());
  size_t original = std::strlen(text.c_str());
  Require(decoded.compare(0, original, text.c_str()) == 0, "the coder's encoding decodes back");
  Base64CoderDecode(text.c_str());
  std::string noise(Base64CoderDecodedMessage(), Base64CoderDecodedLength());
  if (choice & 1) Base64CoderEncodedFreeMemory();
  if (choice & 2) Base64CoderDecodedFreeMemory();
  Base64CoderEncode(nullptr);
  Base64CoderDecode(nullptr);
}

void ConvertJapanese(const std::string& text) {
  size_t length = std::strlen(text.c_str());
  char* inPlace = HeapCopy(text);
  euc2sjs(inPlace);
  std::free(inPlace);

  // Shift_JIS never needs more than two bytes for one ISO-2022-JP byte.
  std::unique_ptr<char[]> shiftJis(new char[2 * length + 1]());
  Require(jis2sjs(shiftJis.get(), text.c_str()) == shiftJis.get(), "jis2sjs returns dest");

  // At most four bytes for each character and the escapes around the run.
  std::unique_ptr<char[]> jis(new char[4 * length + 8]());
  SJIStoJIS(jis.get(), text.c_str());

  utf72sjs(HeapCopy(text));
  std::free(utf82sjs(text.c_str()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  mailslice::fuzz::FuzzInput input(data, size);
  mailslice::fuzz::ChooseDevice(input);
  uint8_t choice = input.TakeByte();
  uint8_t blockChoice = input.TakeByte();
  std::string text(input.TakeRest());

  // The whole text, a part of it, or a count the caller got wrong.
  int counts[] = {static_cast<int>(text.size()), static_cast<int>(text.size() / 2), -1,
                  static_cast<int>(text.size()) + 8, -2};
  DecodeTransferEncodings(text, counts[choice % 5]);
  DecodeInBlocks(text, 1 + blockChoice);
  EncodeForSending(text);
  RunCoder(text, choice >> 6);
  ConvertJapanese(text);
  return 0;
}
