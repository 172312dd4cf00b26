// Runs a fuzz target once on each file named on the command line, without libFuzzer, and
// prints how long each took: for replaying a finding in a debugger or timing large inputs.
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    if (!file) {
      std::fprintf(stderr, "cannot read %s\n", argv[i]);
      return 1;
    }
    std::string input((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    auto start = std::chrono::steady_clock::now();
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(input.data()), input.size());
    std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::printf("%8.3f s  %9zu bytes  %s\n", took.count(), input.size(), argv[i]);
  }
  return 0;
}
