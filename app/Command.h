#pragma once

#include "app/Terminal.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

/// One command of the program: it declares its words when it is made, and runs when they were used.
class Command {
 public:
  Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  virtual ~Command() = default;

  /// Whether the command line asked for this command.
  virtual bool isChosen() const = 0;
  /// Does the work; the exit code. Throws `Unusable` when something given cannot be used.
  virtual int run(Terminal& terminal) = 0;
};
