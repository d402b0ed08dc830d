#pragma once

#include <cstdio>
#include <string>

#include "tests/support/KRTestFolder.h"
#include "tests/support/KRTestPaths.h"

/// What another program sees in an archive: every value with its class chain, from the root; "refused" when it cannot
/// be read.
inline std::string krSeenByPeer(const std::string& archive) {
  const KRTestFolder folder;
  folder.put("archive", archive);
  FILE* pipe = popen(
      ("python3 '" KR_SOURCE_DIR "/tests/platform/plist_peer.py' archive '" + folder.at("archive") + "'").c_str(), "r");
  std::string text;
  for (int c = getc(pipe); c != EOF; c = getc(pipe)) text += static_cast<char>(c);
  return pclose(pipe) == 0 ? text.substr(0, text.find('\n')) : "refused";
}
