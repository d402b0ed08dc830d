#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/KRTestPaths.h"

// The other programs of the session: one that uses the same service through Python, and the service itself.

/// Runs `desktop_peer.py` with these words and answers what it prints; a failure of the test when it fails.
inline std::string krPeer(const std::vector<std::string>& words) {
  std::string command = std::string(KR_SYSTEM_PYTHON) + " -B " + KR_SOURCE_DIR + "/tests/desktop/desktop_peer.py";
  for (const std::string& word : words) command += " '" + word + "'";
  std::FILE* output = popen(command.c_str(), "r");
  std::string text;
  char piece[4096];
  while (const size_t size = std::fread(piece, 1, sizeof piece, output)) text.append(piece, size);
  EXPECT_EQ(pclose(output), 0) << command;
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

/// Every card of the built-in book, as the other program reads it.
inline std::vector<std::string> krPeersCards() {
  return nlohmann::json::parse(krPeer({"dump"})).get<std::vector<std::string>>();
}

/// The processes of this session's address book service.
inline std::vector<pid_t> krServiceProcesses() {
  const std::string address = std::string("DBUS_SESSION_BUS_ADDRESS=") + std::getenv("DBUS_SESSION_BUS_ADDRESS");
  const auto content = [](const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  };
  std::vector<pid_t> found;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
    const std::string name = entry.path().filename().string();
    if (name.find_first_not_of("0123456789") != std::string::npos) continue;
    if (content(entry.path() / "comm").rfind("evolution-addre", 0) != 0) continue;
    if (content(entry.path() / "environ").find(address) == std::string::npos) continue;
    found.push_back(static_cast<pid_t>(std::stoi(name)));
  }
  return found;
}

inline void krSignalService(int signal) {
  const std::vector<pid_t> processes = krServiceProcesses();
  ASSERT_FALSE(processes.empty());
  for (const pid_t process : processes) ASSERT_EQ(kill(process, signal), 0);
}
