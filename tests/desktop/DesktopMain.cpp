// The main function of the tests that talk to the desktop's real address book service. It starts a message bus of its
// own with dbus-run-session in a home folder of its own, and itself again inside; when that has ended it waits for
// every process that the bus has started before it takes the folder away.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

constexpr const char* kInside = "KR_DESKTOP_TEST_SESSION";

// Where the session's programs keep their things, and nothing of the desktop of the person who runs the tests.
bool enterHome(const std::filesystem::path& home) {
  for (const auto& [name, folder] : {std::pair{"HOME", "."},
                                     {"XDG_CONFIG_HOME", "config"},
                                     {"XDG_DATA_HOME", "data"},
                                     {"XDG_CACHE_HOME", "cache"},
                                     {"XDG_STATE_HOME", "state"},
                                     {"XDG_RUNTIME_DIR", "run"}}) {
    const std::filesystem::path path = (home / folder).lexically_normal();
    std::error_code error;
    std::filesystem::create_directories(path, error);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all, error);
    if (error) return false;
    setenv(name, path.c_str(), 1);
  }
  for (const char* name : {"DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY", "KRCONTACTS_HOME", "LC_ALL",
                           "LC_MESSAGES", "LANGUAGE"})
    unsetenv(name);
  setenv("LANG", "C.UTF-8", 1);
  setenv("GSETTINGS_BACKEND", "memory", 1);
  setenv("GIO_USE_VFS", "local", 1);
  setenv(kInside, home.c_str(), 1);
  return true;
}

std::vector<pid_t> children() {
  std::ifstream list("/proc/self/task/" + std::to_string(getpid()) + "/children");
  std::vector<pid_t> found;
  for (pid_t pid = 0; list >> pid;) found.push_back(pid);
  return found;
}

// Ends what the bus has left behind: orphans of this session come to this process.
void endOrphans() {
  for (std::vector<pid_t> left = children(); !left.empty(); left = children()) {
    for (const pid_t pid : left) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
  }
}

int runInSession(char** argv) {
  std::string folder = (std::filesystem::temp_directory_path() / "kr-desktop-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr || !enterHome(folder)) {
    std::fputs("The tests cannot make a temporary folder.\n", stderr);
    return 2;
  }
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  const pid_t session = fork();
  if (session == 0) {
    std::vector<char*> command;
    std::string words[] = {"dbus-run-session", "--", std::filesystem::read_symlink("/proc/self/exe").string()};
    for (std::string& word : words) command.push_back(word.data());
    for (char** argument = argv + 1; *argument != nullptr; ++argument) command.push_back(*argument);
    command.push_back(nullptr);
    execvp(command[0], command.data());
    std::perror("dbus-run-session");
    _exit(127);
  }
  int status = 0;
  waitpid(session, &status, 0);
  endOrphans();
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

}  // namespace

int main(int argc, char** argv) {
  bool isListing = false;
  for (int i = 1; i < argc; ++i) isListing = isListing || std::string_view(argv[i]) == "--gtest_list_tests";
  if (!isListing && getenv(kInside) == nullptr) return runInSession(argv);
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
