#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

/// Something that the program was given cannot be used: a file, a name, a setting, or a full disk. Its text is one line
/// for the user; the program says it on standard error and exits with 2. Thrown and caught inside this program only,
/// on its main thread.
class Unusable : public std::runtime_error {
 public:
  explicit Unusable(const std::string& line) : std::runtime_error(withoutZeros(line)) {}

 private:
  /// A zero would end the text that `what` gives.
  static std::string withoutZeros(std::string line) {
    for (size_t at = 0; (at = line.find('\0', at)) != std::string::npos;) line.replace(at, 1, "\\x00");
    return line;
  }
};

/// What the program tells its caller when it ends.
namespace ExitCode {
inline constexpr int Done = 0;
inline constexpr int Findings = 1;
inline constexpr int Unusable = 2;
inline constexpr int Interrupted = 130;
}  // namespace ExitCode
