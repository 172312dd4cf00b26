// Whether the AVX2 paths of the codecs are built (x86-64 with GCC or Clang) and whether the
// processor running them has AVX2. Each path is compiled for AVX2 on its own and chosen at run
// time, so the library still runs on processors without it.
#ifndef MAILSLICE_CODEC_AVX2_H
#define MAILSLICE_CODEC_AVX2_H

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define MAILSLICE_AVX2_PATHS 1
#include <immintrin.h>

namespace mailslice::codec {

inline bool HaveAvx2() {
  static const bool have = __builtin_cpu_supports("avx2");
  return have;
}

}  // namespace mailslice::codec
#endif

#endif  // MAILSLICE_CODEC_AVX2_H
