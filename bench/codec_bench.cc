// Throughput of the codecs on 10 MB inputs shaped like real mail, with memcpy of a buffer of
// the same size as the yardstick.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>

#include "codec/base64_coder.h"
#include "codec/base64_decoder.h"
#include "codec/base64_encoder.h"
#include "codec/japanese_converter.h"
#include "codec/quoted_printable.h"

namespace {

using namespace mailslice::codec;

constexpr size_t kInputBytes = 10 << 20;
constexpr size_t kAttachmentBlock = 131072;

std::string RandomBytes(size_t size) {
  std::mt19937 random(42);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

// An attachment as mail carries it: 76-column lines ending in CR LF.
const std::string& Base64Body() {
  static const std::string body = [] {
    std::string bytes = RandomBytes(kInputBytes / 4 * 3 * 76 / 78);
    char* text = EncodeToChar(reinterpret_cast<const unsigned char*>(bytes.data()),
                              static_cast<int>(bytes.size()));
    std::string result(text);
    std::free(text);
    return result;
  }();
  return body;
}

// European text: mostly plain, accented letters as escapes, soft breaks at 76 columns.
const std::string& QuotedPrintableBody() {
  static const std::string body = [] {
    std::mt19937 random(7);
    const char* pieces[] = {"the ",   "message ", "caf=C3=A9 ", "r=C3=A9sum=C3=A9 ",
                            "mail, ", "=3D ",     "and ",       "Gr=C3=BC=C3=9Fe "};
    std::string text;
    size_t column = 0;
    while (text.size() < kInputBytes) {
      std::string piece = pieces[random() % std::size(pieces)];
      if (column + piece.size() > 75) {
        text += random() % 4 == 0 ? "\r\n" : "=\r\n";
        column = 0;
      }
      text += piece;
      column += piece.size();
    }
    return text;
  }();
  return body;
}

// Japanese mail text in Shift_JIS: kanji and kana with some ASCII, in lines.
const std::string& ShiftJisText() {
  static const std::string text = [] {
    std::mt19937 random(3);
    std::string result;
    while (result.size() < kInputBytes) {
      for (int k = 0; k < 30; ++k) {
        if (random() % 5 == 0) {
          result += "mail ";
        } else {
          result += static_cast<char>(0x88 + random() % 0x18);
          result += static_cast<char>(0x40 + random() % 0x3F);
        }
      }
      result += "\r\n";
    }
    return result;
  }();
  return text;
}

const std::string& JisText() {
  static const std::string text = [] {
    std::string out(ShiftJisText().size() * 2, '\0');
    JapaneseConverter().ShiftJisToJis(out.data(), ShiftJisText().c_str());
    return std::string(out.c_str());
  }();
  return text;
}

void Throughput(benchmark::State& state, size_t bytes) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

void BM_Memcpy(benchmark::State& state) {
  const std::string& source = Base64Body();
  std::string dest(source.size(), '\0');
  for (auto _ : state) {
    std::memcpy(dest.data(), source.data(), source.size());
    benchmark::DoNotOptimize(dest.data());
    benchmark::ClobberMemory();
  }
  Throughput(state, source.size());
}

void BM_Base64Decode(benchmark::State& state) {
  const std::string& body = Base64Body();
  for (auto _ : state) {
    int length = static_cast<int>(body.size());
    char* decoded = DecodeBase64(body.c_str(), &length);
    benchmark::DoNotOptimize(decoded);
    std::free(decoded);
  }
  Throughput(state, body.size());
}

void BM_Base64BlockDecoder(benchmark::State& state) {
  const std::string& body = Base64Body();
  std::string out;
  for (auto _ : state) {
    Base64BlockDecoder decoder;
    for (size_t at = 0; at < body.size(); at += kAttachmentBlock) {
      out.clear();
      decoder.Decode(std::string_view(body).substr(at, kAttachmentBlock), false, out);
    }
    decoder.Decode({}, true, out);
    benchmark::DoNotOptimize(out.data());
  }
  Throughput(state, body.size());
}

void BM_QPdecode(benchmark::State& state) {
  const std::string& body = QuotedPrintableBody();
  for (auto _ : state) {
    int length = 0;
    char* decoded = DecodeQuotedPrintable(body.c_str(), &length);
    benchmark::DoNotOptimize(decoded);
    std::free(decoded);
  }
  Throughput(state, body.size());
}

void BM_EncodeToChar(benchmark::State& state) {
  const std::string bytes = RandomBytes(kInputBytes);
  for (auto _ : state) {
    char* text = EncodeToChar(reinterpret_cast<const unsigned char*>(bytes.data()),
                              static_cast<int>(bytes.size()));
    benchmark::DoNotOptimize(text);
    std::free(text);
  }
  Throughput(state, bytes.size());
}

void BM_CoderEncode(benchmark::State& state) {
  const std::string bytes = RandomBytes(kInputBytes);
  Base64Coder coder;
  for (auto _ : state) {
    coder.Encode(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    benchmark::DoNotOptimize(coder.EncodedMessage());
  }
  Throughput(state, bytes.size());
}

void BM_CoderDecode(benchmark::State& state) {
  const std::string& body = Base64Body();
  Base64Coder coder;
  for (auto _ : state) {
    coder.Decode(body.data(), body.size());
    benchmark::DoNotOptimize(coder.DecodedMessage());
  }
  Throughput(state, body.size());
}

void BM_SJIStoJIS(benchmark::State& state) {
  const std::string& text = ShiftJisText();
  std::string out(text.size() * 2, '\0');
  for (auto _ : state) {
    JapaneseConverter().ShiftJisToJis(out.data(), text.c_str());
    benchmark::DoNotOptimize(out.data());
  }
  Throughput(state, text.size());
}

void BM_jis2sjs(benchmark::State& state) {
  const std::string& text = JisText();
  std::string out(text.size() * 2 + 1, '\0');
  for (auto _ : state) {
    JapaneseConverter().JisToShiftJis(out.data(), text.c_str());
    benchmark::DoNotOptimize(out.data());
  }
  Throughput(state, text.size());
}

BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64Decode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Base64BlockDecoder)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_QPdecode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_EncodeToChar)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CoderEncode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CoderDecode)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SJIStoJIS)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_jis2sjs)->Unit(benchmark::kMillisecond);

}  // namespace
