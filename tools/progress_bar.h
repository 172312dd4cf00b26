// The progress of a long scan, drawn on standard error when that is a terminal.
#ifndef MAILSLICE_TOOLS_PROGRESS_BAR_H
#define MAILSLICE_TOOLS_PROGRESS_BAR_H

#include <chrono>
#include <cstddef>

namespace mailslice::tools {

// A scan of this many messages or more is long enough to show its progress.
inline constexpr size_t kLongScanMessages = 100;

class ProgressBar {
 public:
  // Shows the bar only when standard error is a terminal and the scan is long: a bar in a
  // log file or a pipe would be noise.
  explicit ProgressBar(size_t total);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Counts one message done; redraws a few times a second at most.
  void Advance();
  // Takes the bar off the terminal, so that what follows starts on a clean line.
  void Clear();

 private:
  void Draw();

  size_t total_;
  size_t done_ = 0;
  bool shown_ = false;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point lastDraw_;
};

}  // namespace mailslice::tools

#endif  // MAILSLICE_TOOLS_PROGRESS_BAR_H
