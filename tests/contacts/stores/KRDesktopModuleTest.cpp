#include "contacts/stores/KRDesktopModule.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "contacts/stores/KRDesktopBooks.h"
#include "tests/support/KRTestFolder.h"

namespace {

TEST(KRDesktopModuleTest, FindsThePlugInWhereItWasBuilt) {
  EXPECT_EQ(KRDesktopModule::path().isNothing(), !KRDesktopModule::isBuilt());
  EXPECT_EQ(KRDesktopBooks::support() == KRDesktopBooks::Support::Ready, KRDesktopModule::isBuilt());
}

TEST(KRDesktopModuleTest, HasNoBooksWithoutASession) {
  // Tests run without one.
  EXPECT_FALSE(KRDesktopModule::hasSessionBus());
  EXPECT_TRUE(KRDesktopBooks().sources().empty());
}

TEST(KRDesktopModuleTest, FindsTheBusOfASession) {
  const KRTestFolder folder;
  setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
  EXPECT_FALSE(KRDesktopModule::hasSessionBus());
  folder.put("bus", "no socket");
  EXPECT_FALSE(KRDesktopModule::hasSessionBus());
  unlink(folder.at("bus").c_str());
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, folder.at("bus").c_str(), sizeof address.sun_path - 1);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_TRUE(KRDesktopModule::hasSessionBus());
  close(socket);
  setenv("XDG_RUNTIME_DIR", "relative", 1);
  EXPECT_FALSE(KRDesktopModule::hasSessionBus());
  unsetenv("XDG_RUNTIME_DIR");
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  EXPECT_TRUE(KRDesktopModule::hasSessionBus());
  setenv("DBUS_SESSION_BUS_ADDRESS", "", 1);
  EXPECT_FALSE(KRDesktopModule::hasSessionBus());
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
}

}  // namespace
