#include "app/ProgressBar.h"

#include <algorithm>
#include <cstdio>

#include "app/DisplayText.h"
#include "app/Interrupt.h"
#include "app/Output.h"

namespace {

constexpr size_t kBarCells = 36;
constexpr std::chrono::milliseconds kPause(50);
constexpr double kSmallestStep = 0.1;

std::string repeated(std::string_view piece, size_t count) {
  std::string result;
  for (size_t i = 0; i < count; ++i) result += piece;
  return result;
}

}  // namespace

ProgressBar::ProgressBar(int descriptor, bool enabled) : descriptor_(descriptor), enabled_(enabled) {}

void ProgressBar::show(std::string_view work, double percent) {
  if (!enabled_) return;
  const std::lock_guard guard(lock_);
  const bool isNewWork = work_ != work;
  if (!isNewWork && percent - drawnPercent_ < kSmallestStep) return;
  const auto now = std::chrono::steady_clock::now();
  if (!isNewWork && now - drawnAt_ < kPause) return;
  work_ = work;
  drawnPercent_ = percent;
  drawnAt_ = now;
  const double part = std::clamp(percent / 100, 0.0, 1.0);
  const auto filled = static_cast<size_t>(part * static_cast<double>(kBarCells));
  char figure[32];
  std::snprintf(figure, sizeof figure, " %5.1f %%", percent);
  draw(fittedText(shownText(work), 30) + " " + repeated("━", filled) + repeated("╌", kBarCells - filled) + figure);
}

void ProgressBar::show(std::string_view work) {
  if (!enabled_) return;
  const std::lock_guard guard(lock_);
  work_ = work;
  drawnPercent_ = -1;
  draw(fittedText(shownText(work), 70) + " …");
}

void ProgressBar::clear() {
  const std::lock_guard guard(lock_);
  if (!Interrupt::barIsDrawn) return;
  writeAll(descriptor_, "\r\x1b[K");
  Interrupt::barIsDrawn = false;
  drawnPercent_ = -1;
  work_.clear();
}

void ProgressBar::draw(const std::string& text) {
  Interrupt::barIsDrawn = true;
  writeAll(descriptor_, "\r" + text + "\x1b[K");
}
