#pragma once

#include <chrono>
#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

/// One line at the foot of a terminal that shows how far a piece of work has got. Redrawn at most twenty times a
/// second, so that it costs nothing even when every contact reports.
///
/// Any thread.
class ProgressBar {
 public:
  ProgressBar(int descriptor, bool enabled);

  bool isEnabled() const noexcept { return enabled_; }
  void disable() noexcept { enabled_ = false; }

  /// Shows the work's name and a percentage from 0 to 100.
  void show(std::string_view work, double percent);
  /// Shows the work's name alone, for work whose size is not known.
  void show(std::string_view work);
  /// Takes the line away; further calls of `show` bring it back.
  void clear();

 private:
  void draw(const std::string& text);

  int descriptor_;
  bool enabled_;
  std::mutex lock_;
  std::string work_;
  double drawnPercent_ = -1;
  std::chrono::steady_clock::time_point drawnAt_;
};
