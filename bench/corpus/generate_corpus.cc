// mailslice_corpus OUT_DIR: writes the benchmark corpus (see corpus.h) into OUT_DIR. The bytes
// are the same on every machine; nothing is downloaded.
#include <cstdio>
#include <string>

#include "corpus/corpus.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s OUT_DIR\n", argc > 0 ? argv[0] : "mailslice_corpus");
    return 2;
  }
  std::string problem;
  if (!mailslice::corpus::WriteCorpus(argv[1], &problem)) {
    std::fprintf(stderr, "mailslice_corpus: %s\n", problem.c_str());
    return 1;
  }
  std::printf("corpus written to %s\n", argv[1]);
  return 0;
}
