#include "progress_bar.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace mailslice::tools {
namespace {

constexpr size_t kBarWidth = 40;
constexpr auto kRedrawInterval = std::chrono::milliseconds(100);
// Carriage return and "erase to the end of the line".
constexpr char kClearLine[] = "\r\033[K";

}  // namespace

ProgressBar::ProgressBar(size_t total)
    : total_(total), shown_(total >= kLongScanMessages && isatty(STDERR_FILENO) == 1) {}

ProgressBar::~ProgressBar() { Clear(); }

void ProgressBar::Advance() {
  ++done_;
  if (!shown_) return;
  auto now = std::chrono::steady_clock::now();
  if (drawn_ && now - lastDraw_ < kRedrawInterval && done_ < total_) return;
  lastDraw_ = now;
  Draw();
}

void ProgressBar::Draw() {
  size_t filled = total_ == 0 ? kBarWidth : done_ * kBarWidth / total_;
  std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
  std::fprintf(stderr, "%s[%s] %zu/%zu messages", kClearLine, bar.c_str(), done_, total_);
  std::fflush(stderr);
  drawn_ = true;
}

void ProgressBar::Clear() {
  if (!drawn_) return;
  std::fputs(kClearLine, stderr);
  std::fflush(stderr);
  drawn_ = false;
}

}  // namespace mailslice::tools
