#include "app/KeyInput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <string>
#include <thread>

namespace {

/// Standard input and an output on a terminal of their own, which this program looks at from the other side. In a root
/// that has no terminals to lend they are pipes: keys come as the same bytes.
class KeyTerminal {
 public:
  KeyTerminal() {
    side_ = openTerminal();
    if (side_ < 0) openPipes();
    before_ = dup(STDIN_FILENO);
    dup2(side_, STDIN_FILENO);
  }
  ~KeyTerminal() {
    dup2(before_, STDIN_FILENO);
    close(before_);
    close(side_);
    hangUp();
    if (isPiped_) {
      close(output_);
      close(sees_);
    }
  }
  KeyTerminal(const KeyTerminal&) = delete;
  KeyTerminal& operator=(const KeyTerminal&) = delete;

  int output() const { return output_; }

  /// What the user presses.
  void press(const std::string& bytes) const {
    ASSERT_EQ(write(presses_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  /// Waits until that text was shown.
  void await(const std::string& text) const {
    std::string seen;
    char piece[256];
    while (seen.find(text) == std::string::npos) {
      const ssize_t count = read(sees_, piece, sizeof piece);
      ASSERT_GT(count, 0) << seen;
      seen.append(piece, static_cast<size_t>(count));
    }
  }
  /// Whether single keys are read, without being shown or making signals; of pipes always.
  bool isForKeys() const {
    termios now{};
    if (tcgetattr(presses_, &now) != 0) return true;
    return (now.c_lflag & static_cast<tcflag_t>(ICANON | ECHO | ISIG)) == 0;
  }
  bool isAsBefore() const {
    termios now{};
    if (tcgetattr(presses_, &now) != 0) return true;
    return (now.c_lflag & static_cast<tcflag_t>(ICANON | ECHO | ISIG)) == static_cast<tcflag_t>(ICANON | ECHO | ISIG);
  }
  /// The user goes away.
  void hangUp() {
    if (presses_ >= 0) close(presses_);
    presses_ = -1;
  }

 private:
  int openTerminal() {
    const int user = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (user < 0) return -1;
    const char* name = grantpt(user) == 0 && unlockpt(user) == 0 ? ptsname(user) : nullptr;
    const int side = name == nullptr ? -1 : open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (side < 0) {
      close(user);
      return -1;
    }
    presses_ = sees_ = user;
    output_ = side;
    return side;
  }
  void openPipes() {
    int keys[2] = {-1, -1};
    int shown[2] = {-1, -1};
    ASSERT_EQ(pipe(keys), 0);
    ASSERT_EQ(pipe(shown), 0);
    isPiped_ = true;
    side_ = keys[0];
    presses_ = keys[1];
    sees_ = shown[0];
    output_ = shown[1];
  }

  int side_ = -1;
  int presses_ = -1;
  int sees_ = -1;
  int output_ = -1;
  int before_ = -1;
  bool isPiped_ = false;
};

class KeyInputTest : public testing::Test {
 protected:
  std::optional<std::string> read() { return keys_.read(out_, "> "); }

  KeyTerminal terminal_;
  Output out_{terminal_.output()};
  KeyInput keys_;
};

TEST_F(KeyInputTest, CtrlCRightBehindThePromptIsAKey) {
  bool wasForKeys = false;
  std::thread user([&] {
    terminal_.await("> ");
    wasForKeys = terminal_.isForKeys();
    // The line behind it ends the wait if the first is no key.
    terminal_.press("\x03");
    terminal_.press("x\n");
  });
  const auto pressed = read();
  user.join();
  EXPECT_TRUE(wasForKeys);
  EXPECT_EQ(pressed, "\x03");
  EXPECT_TRUE(terminal_.isAsBefore());
}

TEST_F(KeyInputTest, EachPressIsAKeyOfItsOwn) {
  terminal_.press("1qé");
  EXPECT_EQ(read(), "1");
  EXPECT_EQ(read(), "q");
  EXPECT_EQ(read(), "\xC3");
  EXPECT_EQ(read(), "\xA9");
}

TEST_F(KeyInputTest, AnArrowComesWhole) {
  terminal_.press("\x1b[A\x1b[5~s");
  EXPECT_EQ(read(), "\x1b[A");
  EXPECT_EQ(read(), "\x1b[5~");
  EXPECT_EQ(read(), "s");
}

TEST_F(KeyInputTest, EscapeAloneIsAKey) {
  std::thread user([&] {
    terminal_.await("> ");
    terminal_.press("\x1b");
  });
  const auto pressed = read();
  user.join();
  EXPECT_EQ(pressed, "\x1b");
}

TEST_F(KeyInputTest, EscapeSwallowsNoKeyBehindIt) {
  terminal_.press("\x1bq");
  EXPECT_EQ(read(), "\x1b");
  EXPECT_EQ(read(), "q");
}

TEST_F(KeyInputTest, TheEndOfTheInputIsNoKey) {
  terminal_.hangUp();
  EXPECT_EQ(read(), std::nullopt);
  EXPECT_EQ(read(), std::nullopt);
}

}  // namespace
