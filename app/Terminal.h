#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "app/Output.h"
#include "app/ProgressBar.h"

/// How a piece of text is set off on a terminal that shows colours; nothing elsewhere.
enum class Style { Plain, Strong, Faint, Heading, Good, Warning };

/// Where the program writes: results to standard output, everything else to standard error. Knows whether people look
/// at them, how wide the lines are and whether colours are welcome.
///
/// Main thread, but for the progress bar.
class Terminal {
 public:
  Terminal();

  /// Whether there is somebody to ask: standard input and standard error are terminals.
  static bool canAsk();

  /// Whether screens can be shown and keys be read: standard input and standard output are terminals.
  static bool canShowScreens();

  /// Standard output.
  Output& out() noexcept { return out_; }
  /// The progress bar on standard error; shows nothing when that is not a terminal.
  ProgressBar& progress() noexcept { return progress_; }

  /// Cells of a line: those of the terminal, else `COLUMNS`, else 80; from 40 to 120.
  size_t width() const noexcept { return width_; }

  /// Lines of the terminal, else `LINES`, else 24; from 12 to 200.
  size_t height() const noexcept { return height_; }

  /// Empties the screen and begins at its top; where that cannot be, an empty line sets off what follows.
  void clearScreen();

  /// The text in a style: as it is unless standard output is a terminal, `NO_COLOR` is unset or empty and `TERM` is not
  /// "dumb".
  std::string styled(Style style, std::string_view text) const;

  /// Writes the text and a line end to standard output, wrapped to the width and indented by `indent` cells; lines
  /// after the first by `hanging` cells more.
  void paragraph(std::string_view text, Style style = Style::Plain, size_t indent = 0, size_t hanging = 0);
  void line(std::string_view text = {});

  /// To standard error, after the program's name and escaped: one line, on a terminal broken at words to its width.
  void say(std::string_view line);

 private:
  Output out_;
  ProgressBar progress_;
  size_t width_;
  size_t height_;
  bool hasScreen_;
  bool colours_;
};
