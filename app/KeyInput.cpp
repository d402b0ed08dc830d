#include "app/KeyInput.h"

#include <poll.h>
#include <termios.h>
#include <unistd.h>
#include <cerrno>
#include <utility>

namespace {

constexpr char kEscape = '\x1b';

/// The terminal in the state for single keys, as long as it stands; nothing for an input that is no terminal.
class SingleKeys {
 public:
  SingleKeys() : isTerminal_(::tcgetattr(STDIN_FILENO, &before_) == 0) {
    if (!isTerminal_) return;
    termios now = before_;
    now.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG);
    now.c_cc[VMIN] = 1;
    now.c_cc[VTIME] = 0;
    ::tcsetattr(STDIN_FILENO, TCSADRAIN, &now);
  }
  ~SingleKeys() {
    if (isTerminal_) ::tcsetattr(STDIN_FILENO, TCSADRAIN, &before_);
  }
  SingleKeys(const SingleKeys&) = delete;
  SingleKeys& operator=(const SingleKeys&) = delete;

 private:
  termios before_{};
  bool isTerminal_;
};

bool hasMore() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return ::poll(&input, 1, 0) > 0;
}

}  // namespace

std::optional<char> KeyInput::next() {
  if (pending_) return std::exchange(pending_, std::nullopt);
  char byte = 0;
  for (;;) {
    const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
    if (count == 1) return byte;
    if (count == 0 || errno != EINTR) return std::nullopt;
  }
}

std::optional<std::string> KeyInput::read(Output& out, const std::string& prompt) {
  const SingleKeys keys;
  out.write(prompt);
  out.flush();
  const std::optional<char> first = next();
  if (!first) return std::nullopt;
  std::string pressed(1, *first);
  // An arrow comes as a whole; the key Escape alone has nothing behind it.
  if (*first != kEscape || !hasMore()) return pressed;
  const std::optional<char> second = next();
  if (second != '[') {
    pending_ = second;
    return pressed;
  }
  pressed += '[';
  for (std::optional<char> each = next(); each; each = next()) {
    pressed += *each;
    if (*each >= '@' && *each <= '~') break;
  }
  return pressed;
}
