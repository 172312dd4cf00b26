// reader_flow CORPUS_DIR [--repeat N] [--workload NAME] [--language CODE] [--mailslice-only]
//
// Runs the reader flow (mailslice_reader_flow.h) on each workload of the benchmark corpus
// through mailslice and, when built with GMime 3, the same job through GMime
// (gmime_reader_flow.h), alternating the two; prints the median time of each, their ratio and
// the peak memory of each flow. A CORPUS_DIR without the corpus gets it generated first.
// See bench/README.md.
#include <fcntl.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "corpus/corpus.h"
#include "mailslice_reader_flow.h"
#ifdef MAILSLICE_HAVE_GMIME
#include "gmime_reader_flow.h"
#endif

namespace mailslice::bench {
namespace {

#ifdef MAILSLICE_HAVE_GMIME
constexpr bool kBuiltWithGmime = true;
#else
constexpr bool kBuiltWithGmime = false;
// Stand-ins that keep the flow code free of conditions; never called.
void StartGmime() {}
std::string GmimeVersion() { return {}; }
ReaderFlowTally ReadMessageThroughGmime(const std::string&, const std::string&) { return {}; }
#endif

namespace fs = std::filesystem;

constexpr int kDefaultRepeat = 21;
constexpr int kLargestDeviceType = 8;  // loads messages up to 9,900,000 bytes
constexpr double kBytesInMB = 1e6;

struct Options {
  fs::path corpus;
  int repeat = kDefaultRepeat;
  std::string onlyWorkload;  // empty: all
  std::string language;      // the device's interface language code; empty: the default
  bool withGmime = true;
};

struct Workload {
  std::string key;    // what --workload takes
  std::string label;  // what the table shows
  std::vector<std::string> paths;
  std::vector<CString> widePaths;
  uintmax_t totalBytes = 0;
  uintmax_t largestBytes = 0;
};

// The processor time of a run, split between the process and the kernel working for it.
struct CpuMs {
  double user = 0;
  double system = 0;
};

struct Results {
  double mailsliceMs = 0;
  double gmimeMs = 0;
  CpuMs mailsliceCpu;
  CpuMs gmimeCpu;
  double filesMs = 0;  // the saved files made and removed directly (see FilesOnly)
  std::optional<double> mailslicePeakMB;
  std::optional<double> gmimePeakMB;
  ReaderFlowTally mailsliceWork;
  ReaderFlowTally gmimeWork;
};

// A private folder for the saved attachments, the library's temporary folder and its registry
// store, removed at the end.
class Scratch {
 public:
  Scratch() {
    std::string pattern = (fs::temp_directory_path() / "mailslice-reader-flow-XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) path_ = pattern;
  }
  ~Scratch() {
    std::error_code error;
    if (!path_.empty()) fs::remove_all(path_, error);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

int Usage(const char* program) {
  std::fprintf(stderr,
               "usage: %s CORPUS_DIR [--repeat N] [--workload mixed|qp|newsletter|small] "
               "[--language CODE] [--mailslice-only]\n",
               program);
  return 2;
}

std::optional<Options> ParseOptions(int argc, char** argv) {
  Options options;
  for (int at = 1; at < argc; ++at) {
    std::string argument = argv[at];
    if (argument == "--repeat" && at + 1 < argc) {
      options.repeat = std::atoi(argv[++at]);
      if (options.repeat < 1) return std::nullopt;
    } else if (argument == "--workload" && at + 1 < argc) {
      options.onlyWorkload = argv[++at];
    } else if (argument == "--language" && at + 1 < argc) {
      options.language = argv[++at];
    } else if (argument == "--mailslice-only") {
      options.withGmime = false;
    } else if (argument.starts_with("-") || !options.corpus.empty()) {
      return std::nullopt;
    } else {
      options.corpus = argument;
    }
  }
  if (options.corpus.empty()) return std::nullopt;
  return options;
}

Workload MakeWorkload(std::string key, std::string label, std::vector<fs::path> files) {
  Workload workload{std::move(key), std::move(label), {}, {}, 0, 0};
  for (const fs::path& file : files) {
    std::error_code error;
    uintmax_t size = fs::file_size(file, error);
    if (error) size = 0;
    workload.paths.push_back(file.string());
    workload.widePaths.push_back(CString::FromUtf8(file.string()));
    workload.totalBytes += size;
    workload.largestBytes = std::max(workload.largestBytes, size);
  }
  return workload;
}

std::vector<Workload> Workloads(const Options& options) {
  std::vector<fs::path> small;
  for (int number = 0; number < corpus::kSmallMessages; ++number) {
    small.push_back(options.corpus / corpus::kSmallFolder / corpus::SmallMessageName(number));
  }
  std::vector<Workload> all = {
      MakeWorkload("mixed", corpus::kMixedFile, {options.corpus / corpus::kMixedFile}),
      MakeWorkload("qp", corpus::kQuotedPrintableFile,
                   {options.corpus / corpus::kQuotedPrintableFile}),
      MakeWorkload("newsletter", corpus::kNewsletterFile,
                   {options.corpus / corpus::kNewsletterFile}),
      MakeWorkload("small", "small (" + std::to_string(corpus::kSmallMessages) + " messages)",
                   small)};
  if (options.onlyWorkload.empty()) return all;
  std::erase_if(all,
                [&](const Workload& workload) { return workload.key != options.onlyWorkload; });
  return all;
}

ReaderFlowTally RunMailslice(const Workload& workload, const CString& savedPath) {
  ReaderFlowTally tally;
  for (const CString& path : workload.widePaths)
    tally += ReadMessageThroughMailslice(path, savedPath);
  return tally;
}

ReaderFlowTally RunGmime(const Workload& workload, const std::string& savedPath) {
  ReaderFlowTally tally;
  for (const std::string& path : workload.paths) tally += ReadMessageThroughGmime(path, savedPath);
  return tally;
}

// A field of /proc/self/status in kB ("VmRSS:", "VmHWM:"), or -1.
long StatusKb(const char* field) {
  FILE* status = std::fopen("/proc/self/status", "r");
  if (status == nullptr) return -1;
  char line[256];
  long value = -1;
  size_t length = std::strlen(field);
  while (std::fgets(line, sizeof line, status) != nullptr) {
    if (std::strncmp(line, field, length) == 0) {
      value = std::atol(line + length);
      break;
    }
  }
  std::fclose(status);
  return value;
}

// Writing 5 to clear_refs sets the peak resident size back to the current one.
bool ResetPeakResidentSize() {
  FILE* clearRefs = std::fopen("/proc/self/clear_refs", "w");
  if (clearRefs == nullptr) return false;
  bool written = std::fputs("5", clearRefs) >= 0;
  return std::fclose(clearRefs) == 0 && written;
}

// Runs `flow` once in a child process and returns how far its resident size rose above where
// it stood when the flow began, in MB; none when the system cannot tell.
std::optional<double> PeakGrowthMB(const std::function<void()>& flow) {
  int channel[2];
  if (pipe(channel) != 0) return std::nullopt;
  std::fflush(nullptr);
  pid_t child = fork();
  if (child == 0) {
    close(channel[0]);
    long growth = -1;
    if (ResetPeakResidentSize()) {
      long before = StatusKb("VmRSS:");
      flow();
      long peak = StatusKb("VmHWM:");
      if (before >= 0 && peak >= 0) growth = peak - before;
    }
    ssize_t written = write(channel[1], &growth, sizeof growth);
    _exit(written == sizeof growth ? 0 : 1);
  }
  close(channel[1]);
  long growth = -1;
  bool received = child > 0 && read(channel[0], &growth, sizeof growth) == sizeof growth;
  close(channel[0]);
  if (child > 0) waitpid(child, nullptr, 0);
  if (!received || growth < 0) return std::nullopt;
  return static_cast<double>(growth) * 1024 / kBytesInMB;
}

double CpuMsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

CpuMs CpuNow() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return {CpuMsOf(usage.ru_utime), CpuMsOf(usage.ru_stime)};
}

// The wall time of `flow` in ms; `cpu`, when given, gets its processor time.
template <typename Flow>
double MillisecondsOf(Flow&& flow, CpuMs* cpu = nullptr) {
  CpuMs before = cpu != nullptr ? CpuNow() : CpuMs{};
  auto start = std::chrono::steady_clock::now();
  flow();
  double ms =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  if (cpu != nullptr) {
    CpuMs after = CpuNow();
    *cpu = {after.user - before.user, after.system - before.system};
  }
  return ms;
}

// What any reader pays the kernel to save the workload's attachments, whatever its parser:
// each saved file of the run created, written in one call, measured, closed and removed, as
// the GMime flow does with its files (but for the writing, which it does in pieces).
void FilesOnly(const std::vector<uintmax_t>& sizes, const std::string& path) {
  static std::vector<char> bytes;
  for (uintmax_t size : sizes) {
    if (bytes.size() < size) bytes.resize(size, 'x');
    int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0) continue;
    struct stat status {};
    if (write(file, bytes.data(), size) != static_cast<ssize_t>(size) ||
        fstat(file, &status) != 0) {
      std::fprintf(stderr, "reader_flow: cannot write %s\n", path.c_str());
    }
    close(file);
    unlink(path.c_str());
  }
}

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  size_t middle = values.size() / 2;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// Peaks first, each in a fresh child, before any timed run has grown this process's heap. One
// small message read by each flow beforehand pays the costs paid once per process (iconv
// modules, message catalogs, time zone), so the peaks are those of reading the workload.
void MeasurePeaks(const Options& options, const std::vector<Workload>& workloads,
                  const Scratch& scratch, std::vector<Results>& results) {
  CString mailsliceSaved = CString::FromUtf8((scratch.path() / "mailslice-saved.bin").string());
  std::string gmimeSaved = (scratch.path() / "gmime-saved.bin").string();
  fs::path first = options.corpus / corpus::kSmallFolder / corpus::SmallMessageName(0);
  ReadMessageThroughMailslice(CString::FromUtf8(first.string()), mailsliceSaved);
  if (options.withGmime) ReadMessageThroughGmime(first.string(), gmimeSaved);
  for (size_t index = 0; index < workloads.size(); ++index) {
    const Workload& workload = workloads[index];
    results[index].mailslicePeakMB = PeakGrowthMB([&] { RunMailslice(workload, mailsliceSaved); });
    if (options.withGmime) {
      results[index].gmimePeakMB = PeakGrowthMB([&] { RunGmime(workload, gmimeSaved); });
    }
  }
}

// One warm-up of each (whose tallies show the work done), then the timed runs, alternating.
void MeasureTimes(const Options& options, const Workload& workload, const Scratch& scratch,
                  Results& results) {
  CString mailsliceSaved = CString::FromUtf8((scratch.path() / "mailslice-saved.bin").string());
  std::vector<double> mailsliceMs;
  std::vector<double> gmimeMs;
  std::string gmimeSaved = (scratch.path() / "gmime-saved.bin").string();
  std::string filesSaved = (scratch.path() / "files-only.bin").string();
  std::vector<uintmax_t> savedSizes;
  g_savedSizes = &savedSizes;
  results.mailsliceWork = RunMailslice(workload, mailsliceSaved);
  g_savedSizes = nullptr;
  if (options.withGmime) results.gmimeWork = RunGmime(workload, gmimeSaved);
  std::vector<double> mailsliceUser, mailsliceSystem, gmimeUser, gmimeSystem, filesMs;
  for (int run = 0; run < options.repeat; ++run) {
    CpuMs cpu;
    mailsliceMs.push_back(MillisecondsOf([&] { RunMailslice(workload, mailsliceSaved); }, &cpu));
    mailsliceUser.push_back(cpu.user);
    mailsliceSystem.push_back(cpu.system);
    if (options.withGmime) {
      gmimeMs.push_back(MillisecondsOf([&] { RunGmime(workload, gmimeSaved); }, &cpu));
      gmimeUser.push_back(cpu.user);
      gmimeSystem.push_back(cpu.system);
    }
  }
  // After the flows, so that these files do not add to the kernel's work during their runs.
  for (int run = 0; run < options.repeat; ++run) {
    filesMs.push_back(MillisecondsOf([&] { FilesOnly(savedSizes, filesSaved); }));
  }
  results.mailsliceMs = Median(mailsliceMs);
  results.gmimeMs = Median(gmimeMs);
  results.mailsliceCpu = {Median(mailsliceUser), Median(mailsliceSystem)};
  results.gmimeCpu = {Median(gmimeUser), Median(gmimeSystem)};
  results.filesMs = Median(filesMs);
}

std::string Peak(const std::optional<double>& peakMB, uintmax_t largestBytes) {
  if (!peakMB) return "n/a";
  char text[64];
  std::snprintf(text, sizeof text, "%.1f (%.1fx)", *peakMB,
                *peakMB * kBytesInMB / static_cast<double>(largestBytes));
  return text;
}

void PrintTable(const std::vector<Workload>& workloads, const std::vector<Results>& results,
                bool withGmime) {
  std::printf("\n%-24s %8s %12s %9s %7s %20s %20s\n", "workload", "size MB", "mailslice ms",
              "GMime ms", "ratio", "mailslice peak MB", "GMime peak MB");
  for (size_t index = 0; index < workloads.size(); ++index) {
    const Workload& workload = workloads[index];
    const Results& result = results[index];
    std::string gmimeMs = "n/a";
    std::string ratio = "n/a";
    if (withGmime && result.gmimeMs > 0) {
      char text[32];
      std::snprintf(text, sizeof text, "%.2f", result.gmimeMs);
      gmimeMs = text;
      std::snprintf(text, sizeof text, "%.2f", result.mailsliceMs / result.gmimeMs);
      ratio = text;
    }
    std::printf("%-24s %8.2f %12.2f %9s %7s %20s %20s\n", workload.label.c_str(),
                static_cast<double>(workload.totalBytes) / kBytesInMB, result.mailsliceMs,
                gmimeMs.c_str(), ratio.c_str(),
                Peak(result.mailslicePeakMB, workload.largestBytes).c_str(),
                Peak(result.gmimePeakMB, workload.largestBytes).c_str());
  }
  std::printf(
      "(median of the timed runs; ratio = mailslice / GMime; peak = rise of the resident size "
      "during one run, x the largest message of the workload)\n");
}

void PrintCpuSplit(const std::vector<Workload>& workloads, const std::vector<Results>& results,
                   bool withGmime) {
  std::printf("\nwhere the time goes (median ms of the timed runs):\n");
  std::printf("%-24s %15s %15s %15s %15s %10s\n", "workload", "mailslice user", "mailslice sys",
              "GMime user", "GMime sys", "files");
  for (size_t index = 0; index < workloads.size(); ++index) {
    const Results& result = results[index];
    std::printf("%-24s %15.1f %15.1f", workloads[index].label.c_str(), result.mailsliceCpu.user,
                result.mailsliceCpu.system);
    if (withGmime) {
      std::printf(" %15.1f %15.1f", result.gmimeCpu.user, result.gmimeCpu.system);
    } else {
      std::printf(" %15s %15s", "n/a", "n/a");
    }
    std::printf(" %10.1f\n", result.filesMs);
  }
  std::printf(
      "(user and system processor time of each flow; files = the run's saved files made, "
      "written, closed and removed directly, with no parsing: what saving them costs any "
      "reader)\n");
}

void PrintTally(const char* side, const ReaderFlowTally& tally) {
  std::printf("    %-9s %5d messages %5d attachments saved %13ju bytes saved %10zu body characters",
              side, tally.messages, tally.attachments, tally.savedBytes, tally.bodyCharacters);
  if (tally.failedSaves > 0) std::printf("  (%d saves failed)", tally.failedSaves);
  std::printf("\n");
}

void PrintWork(const std::vector<Workload>& workloads, const std::vector<Results>& results,
               bool withGmime) {
  std::printf("\nwork done by one run of each flow:\n");
  for (size_t index = 0; index < workloads.size(); ++index) {
    std::printf("  %s\n", workloads[index].label.c_str());
    PrintTally("mailslice", results[index].mailsliceWork);
    if (withGmime) PrintTally("GMime", results[index].gmimeWork);
  }
}

bool PrepareCorpus(const fs::path& folder) {
  if (corpus::HasCorpus(folder)) return true;
  std::printf("generating the corpus into %s\n", folder.string().c_str());
  std::string problem;
  if (corpus::WriteCorpus(folder, &problem)) return true;
  std::fprintf(stderr, "reader_flow: %s\n", problem.c_str());
  return false;
}

// The device that loads the largest messages, in the language asked for, and the library's
// temporary folder and registry store kept inside the scratch folder. The temporary folder is
// closed to other users, as the one the library makes by default is.
void SetUpDevice(const Options& options, const Scratch& scratch) {
  if (!options.language.empty()) setenv("MAILSLICE_LANGUAGE", options.language.c_str(), 1);
  fs::create_directories(scratch.path() / "temp");
  fs::permissions(scratch.path() / "temp", fs::perms::owner_all);
  setenv("MAILSLICE_DEVICE_TYPE", std::to_string(kLargestDeviceType).c_str(), 1);
  setenv("MAILSLICE_TEMP", (scratch.path() / "temp").c_str(), 1);
  setenv("MAILSLICE_REGISTRY", (scratch.path() / "registry.reg").c_str(), 1);
}

int Run(Options options) {
  options.withGmime = options.withGmime && kBuiltWithGmime;
  if (!PrepareCorpus(options.corpus)) return 1;
  std::vector<Workload> workloads = Workloads(options);
  if (workloads.empty()) {
    std::fprintf(stderr, "reader_flow: no workload named '%s'\n", options.onlyWorkload.c_str());
    return 2;
  }
  Scratch scratch;
  if (scratch.path().empty()) {
    std::fprintf(stderr, "reader_flow: cannot create a scratch folder\n");
    return 1;
  }
  SetUpDevice(options, scratch);
  if (options.withGmime) {
    StartGmime();
    std::printf("mailslice side by side with GMime %s\n", GmimeVersion().c_str());
  } else {
    std::printf(kBuiltWithGmime ? "GMime left out: mailslice figures only\n"
                                : "built without GMime: mailslice figures only\n");
  }
  std::printf("%d timed runs of each flow per workload, alternating, after one warm-up of each\n",
              options.repeat);
  std::vector<Results> results(workloads.size());
  MeasurePeaks(options, workloads, scratch, results);
  for (size_t index = 0; index < workloads.size(); ++index) {
    std::printf("  %s ...\n", workloads[index].label.c_str());
    std::fflush(stdout);
    MeasureTimes(options, workloads[index], scratch, results[index]);
  }
  PrintTable(workloads, results, options.withGmime);
  PrintCpuSplit(workloads, results, options.withGmime);
  PrintWork(workloads, results, options.withGmime);
  return 0;
}

}  // namespace
}  // namespace mailslice::bench

int main(int argc, char** argv) {
  std::optional<mailslice::bench::Options> options = mailslice::bench::ParseOptions(argc, argv);
  if (!options) return mailslice::bench::Usage(argc > 0 ? argv[0] : "reader_flow");
  return mailslice::bench::Run(*options);
}
