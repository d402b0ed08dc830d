#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/ContactColumns.h"
#include "app/FixSession.h"
#include "app/Terminal.h"

/// What stands on the screen while findings are walked through: one finding with its contacts side by side, the fixes
/// with their numbers, and the keys. Makes lines, and draws nothing itself.
class FixScreen {
 public:
  struct Line {
    std::string text;
    Style style = Style::Plain;
  };

  /// Cells of a line, and lines of the screen. What does not fit is left out where it matters least: values that are
  /// the same in all contacts first.
  FixScreen(std::string book, size_t width, size_t height);

  /// The present finding; `first` is the contact in the first column, and `message` tells of the last step.
  std::vector<Line> finding(const FixSession& session, size_t first, const std::string& message) const;
  /// Behind the last finding.
  std::vector<Line> end(const FixSession& session, const std::string& message) const;

  /// How many contacts stand side by side.
  size_t columns() const noexcept;

 private:
  void addHead(std::vector<Line>& lines, const FixSession& session) const;
  void addText(std::vector<Line>& lines, const std::string& text, Style style, size_t indent = 0) const;
  void addContacts(std::vector<Line>& lines, const KRPersonArray& persons, size_t first, size_t room) const;
  std::vector<Line> foot(const FixSession& session, const std::string& message) const;
  std::string cells(const std::vector<std::string>& texts) const;

  std::string book_;
  size_t width_;
  size_t height_;
};
