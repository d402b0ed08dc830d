#pragma once

#include <stdexcept>
#include <string>

/// Something that the program was given cannot be used: a file, a name, a setting, or a full disk. Its text is one line
/// for the user; the program says it on standard error and exits with 2. Thrown and caught inside this program only,
/// on its main thread.
class Unusable : public std::runtime_error {
 public:
  explicit Unusable(const std::string& line) : std::runtime_error(line) {}
};

/// What the program tells its caller when it ends.
namespace ExitCode {
inline constexpr int Done = 0;
inline constexpr int Findings = 1;
inline constexpr int Unusable = 2;
inline constexpr int Interrupted = 130;
}  // namespace ExitCode
