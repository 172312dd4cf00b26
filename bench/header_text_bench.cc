// Header text decoding on large and hostile values: a 1 MB plain value, thousands of encoded
// words, 1 MB of word starts, and a Cc list of 100,000 addresses. Each should grow linearly.
#include <benchmark/benchmark.h>

#include <string>

#include "codec/header_text.h"
#include "header/address_subject.h"

namespace {

using mailslice::codec::DecodeHeaderText;
using mailslice::header::CcList;
using mailslice::header::ParsingSubject;

constexpr size_t kMegabyte = 1 << 20;

CString Repeated(const char16_t* piece, size_t size) {
  std::u16string text;
  while (text.size() < size) text += piece;
  return CString(std::move(text));
}

void Throughput(benchmark::State& state, const CString& value) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * value.GetLength());
}

void BM_HeaderTextPlain(benchmark::State& state) {
  CString value = Repeated(u"Meeting notes for the week, ", state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(DecodeHeaderText(value));
  Throughput(state, value);
}

void BM_HeaderTextWords(benchmark::State& state) {
  CString value = Repeated(u"=?utf-8?B?w6l0w6k=?= ", state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(DecodeHeaderText(value));
  Throughput(state, value);
}

void BM_SubjectWords(benchmark::State& state) {
  CString value = Repeated(u"=?utf-8?B?w6l0w6k=?= ", state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(ParsingSubject(value));
  Throughput(state, value);
}

void BM_SubjectWordStarts(benchmark::State& state) {
  CString value = Repeated(u"=?", state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(ParsingSubject(value));
  Throughput(state, value);
}

void BM_CcListCommas(benchmark::State& state) {
  CString value = Repeated(u"someone@example.com, ", state.range(0));
  for (auto _ : state) {
    CStringArray list;
    CcList(value, &list);
    benchmark::DoNotOptimize(list.GetSize());
  }
  Throughput(state, value);
}

BENCHMARK(BM_HeaderTextPlain)->Range(kMegabyte / 16, kMegabyte)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_HeaderTextWords)->Range(kMegabyte / 16, kMegabyte)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SubjectWords)->Range(kMegabyte / 16, kMegabyte)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SubjectWordStarts)->Range(kMegabyte / 16, kMegabyte)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CcListCommas)->Range(kMegabyte / 16, kMegabyte * 2)->Unit(benchmark::kMillisecond);

}  // namespace
