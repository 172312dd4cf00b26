// The whole reader flow on messages of 1, 4 and 9.9 MB (the largest a device may load): load
// the file, read and decode the header fields and the date, extract the readable body, list
// the attachments and save every one of them. Two shapes: a few large attachments, and many
// small ones (where saving them one by one must not cut the message again each time). The
// rss_peak_MB counter is the process's high-water mark so far; the sizes run in rising order.
#include <benchmark/benchmark.h>
#include <mailslice/mailslice.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "mailslice_reader_flow.h"

namespace {

constexpr char kBoundary[] = "=_bench_boundary_42";
constexpr int kLargestDeviceType = 8;  // loads up to 9,900,000 bytes
constexpr size_t kLineBytes = 57;      // 76 Base64 characters a line

std::string Base64Lines(size_t bytes, std::mt19937& random) {
  std::string raw(kLineBytes, '\0');
  std::string text;
  for (size_t done = 0; done < bytes; done += kLineBytes) {
    for (char& byte : raw) byte = static_cast<char>(random());
    char* line = EncodeToChar(reinterpret_cast<const unsigned char*>(raw.data()),
                              static_cast<int>(raw.size()));
    text += line;
    std::free(line);
  }
  return text;
}

std::string Attachment(int number, size_t bytes, std::mt19937& random) {
  return std::string("--") + kBoundary + "\r\nContent-Type: application/octet-stream; name=\"file" +
         std::to_string(number) +
         ".bin\"\r\nContent-Transfer-Encoding: base64\r\n"
         "Content-Disposition: attachment; filename=\"file" +
         std::to_string(number) + ".bin\"\r\n\r\n" + Base64Lines(bytes, random);
}

// A message of `size` bytes whose attachments hold about `attachmentBytes` each.
std::string Message(size_t size, size_t attachmentBytes) {
  std::mt19937 random(11);
  std::string message =
      std::string("From: =?utf-8?Q?Jos=C3=A9?= <jose@example.es>\r\nTo: team@example.com\r\n") +
      "Cc: Carol <carol@example.net>, dave@example.net\r\n"
      "Subject: =?utf-8?B?UsOpc3Vtw6kgZHUgcHJvamV0?=\r\n"
      "Date: Mon, 5 Jan 2009 10:20:30 +0900\r\nMIME-Version: 1.0\r\n"
      "Content-Type: multipart/mixed; boundary=\"" +
      kBoundary + "\"\r\n\r\n--" + kBoundary +
      "\r\nContent-Type: text/html; charset=utf-8\r\nContent-Transfer-Encoding: "
      "quoted-printable\r\n\r\n<html><body><p>Bonjour =C3=A0 tous&nbsp;!</p></body></html>\r\n";
  std::string closing = std::string("--") + kBoundary + "--\r\n";
  for (int number = 0; message.size() + closing.size() < size; ++number) {
    message += Attachment(number, attachmentBytes, random);
  }
  message.resize(size - closing.size());  // the last attachment is cut short, as it may be
  return message + "\r\n" + closing.substr(0, closing.size() - 2);
}

class Scratch {
 public:
  Scratch() {
    std::string pattern = (std::filesystem::temp_directory_path() / "mailslice-bench-XXXXXX");
    if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    setenv("MAILSLICE_TEMP", (path_ + "/temp").c_str(), 1);
    setenv("MAILSLICE_REGISTRY", (path_ + "/registry.reg").c_str(), 1);
    setenv("MAILSLICE_DEVICE_TYPE", std::to_string(kLargestDeviceType).c_str(), 1);
  }
  ~Scratch() { std::filesystem::remove_all(path_); }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

void BM_ReaderFlow(benchmark::State& state) {
  Scratch scratch;
  auto size = static_cast<size_t>(state.range(0));
  std::string file = scratch.path() + "/message.eml";
  std::ofstream(file, std::ios::binary) << Message(size, static_cast<size_t>(state.range(1)));
  CString path = CString::FromUtf8(file);
  CString saved = CString::FromUtf8(scratch.path() + "/saved.bin");
  for (auto _ : state) {
    benchmark::DoNotOptimize(mailslice::bench::ReadMessageThroughMailslice(path, saved));
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
  state.counters["attachments"] = GetAttachArrayCount();
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["rss_peak_MB"] = static_cast<double>(usage.ru_maxrss) / 1024;
}

// Sizes in bytes, then the bytes of each attachment: a few large ones, or many of 2 KB.
BENCHMARK(BM_ReaderFlow)
    ->ArgNames({"bytes", "attachment"})
    ->Args({1'000'000, 300'000})
    ->Args({4'000'000, 300'000})
    ->Args({9'900'000, 300'000})
    ->Args({1'000'000, 2'000})
    ->Args({4'000'000, 2'000})
    ->Args({9'900'000, 2'000})
    ->Unit(benchmark::kMillisecond);

}  // namespace
