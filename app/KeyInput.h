#pragma once

#include <optional>
#include <string>

#include "app/Output.h"

/// Single keys from standard input, without a line end. While it waits, a terminal neither shows what is typed nor
/// turns Ctrl-C into a signal; in between it is as it was, so that other programs can use it.
class KeyInput {
 public:
  /// What one press of a key sends: a byte, the sequence of an arrow key; nothing at the end of the input. The prompt
  /// is written once the terminal waits for keys, so that who answers it at once, with Ctrl-C too, is understood.
  std::optional<std::string> read(Output& out, const std::string& prompt);

 private:
  std::optional<char> next();

  /// A byte that was read but belongs to the next key.
  std::optional<char> pending_;
};
