// The Base64 coder object: encodes and decodes without line breaks and keeps both results in
// buffers it owns until they are freed or overwritten. The library keeps one for the
// Base64Coder exports.
#ifndef MAILSLICE_CODEC_BASE64_CODER_H
#define MAILSLICE_CODEC_BASE64_CODER_H

#include <cstddef>
#include <cstdint>
#include <memory>

namespace mailslice::codec {

// Four data bytes (three bytes to encode, or four 6-bit values to decode) and a count.
struct Base64Group {
  unsigned char data[4] = {0, 0, 0, 0};
  unsigned char count = 0;
};

// The operations are virtual, in the order in which callers on the handheld find them in the
// object's table; the class is final, so its own calls to them are direct.
class Base64Coder final {
 public:
  Base64Coder() = default;
  Base64Coder(const Base64Coder&) = delete;
  Base64Coder& operator=(const Base64Coder&) = delete;
  virtual ~Base64Coder();

  // Encoding also leaves its input in the decoded buffer, and decoding leaves its input, white
  // space removed, in the encoded buffer.
  virtual void Encode(const char* text);
  virtual void Encode(const unsigned char* bytes, size_t size);
  virtual void Decode(const char* text);
  virtual void Decode(const char* characters, size_t size);
  virtual unsigned char* DecodedMessage() const { return decoded_.data.get(); }
  virtual char* EncodedMessage() const { return reinterpret_cast<char*>(encoded_.data.get()); }
  virtual size_t DecodedMessageSize() const { return decodedSize_; }
  virtual size_t EncodedMessageSize() const { return encodedSize_; }

  // Frees a buffer; its message is null and its size 0 until the next Encode or Decode.
  void FreeEncoded();
  void FreeDecoded();

 protected:
  virtual void AllocEncoded(size_t size);
  virtual void AllocDecoded(size_t size);
  virtual void SetEncodedInput(const char* characters, size_t size);
  virtual void SetDecodedInput(const unsigned char* bytes, size_t size);
  virtual void EncodeGroup(const Base64Group& group, char* out) const;
  virtual int DecodeGroup(const Base64Group& group, unsigned char* out) const;
  virtual void SplitBytes(const unsigned char* three, unsigned char* four) const;
  virtual void JoinValues(const unsigned char* four, unsigned char* three) const;
  virtual bool IsWhitespace(unsigned char byte) const;

 private:
  struct Buffer {
    std::unique_ptr<unsigned char[]> data;
    size_t capacity = 0;
  };
  static void MakeRoom(Buffer& buffer, size_t size);

  Buffer decoded_;
  Buffer encoded_;
  size_t decodedSize_ = 0;
  size_t encodedSize_ = 0;
};

}  // namespace mailslice::codec

#endif  // MAILSLICE_CODEC_BASE64_CODER_H
