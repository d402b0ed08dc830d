#include "contacts/stores/KRDesktopBooks.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "contacts/stores/KRMacAddressBook.h"
#include "contacts/stores/KRUnavailableBook.h"
#include "tests/desktop/DesktopBooks.h"
#include "tests/desktop/DesktopPeer.h"

namespace {

const KRBookSource* named(const std::vector<KRBookSource>& sources, KRText name) {
  for (const KRBookSource& source : sources) {
    if (source.name == name) return &source;
  }
  return nullptr;
}

TEST(KRDesktopBooksTest, ListsEveryBookThatTheUserHasSwitchedOn) {
  ASSERT_EQ(KRDesktopBooks::support(), KRDesktopBooks::Support::Ready);
  const std::string club = krPeer({"new-book", "The club"});
  const std::string old = krPeer({"new-book", "The old club"});
  krPeer({"disable-book", old});
  KRDesktopBooks books;
  const auto sources = books.sources();
  EXPECT_EQ(named(sources, "The old club"), nullptr);
  const KRBookSource* personal = named(sources, "Personal");
  const KRBookSource* second = named(sources, "The club");
  ASSERT_NE(personal, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(personal->ID, second->ID);
  EXPECT_EQ(second->ID.view(), "desktop:" + club);
  EXPECT_EQ(second->kind, "desktop");
  EXPECT_EQ(second->place, "On This Computer");
  const auto book = second->open();
  ASSERT_TRUE(book.isOk()) << book.error().sentence;
  EXPECT_EQ((*book)->ID(), second->ID);
  EXPECT_EQ((*book)->name(), second->name);
  EXPECT_EQ((*book)->kind(), second->kind);
  EXPECT_EQ((*book)->place(), second->place);
  EXPECT_EQ((*book)->allPersonsCount(), 0U);
  EXPECT_EQ(books.sources().front().ID, sources.front().ID);
}

TEST(KRDesktopBooksTest, StandAmongTheBooksOfTheUser) {
  const auto books = KRMacAddressBook::addressBookArrayWithProgressBlock([](double) {});
  size_t desktop = 0;
  for (const auto& book : books) {
    if (book->kind() == "desktop") ++desktop;
    EXPECT_EQ(dynamic_cast<KRUnavailableBook*>(book.get()), nullptr);
  }
  EXPECT_GE(desktop, 1U);
}

TEST(KRDesktopBooksTest, HasNoBooksWithoutASession) {
  const std::string address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  EXPECT_TRUE(KRDesktopBooks().sources().empty());
  setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
  EXPECT_FALSE(KRDesktopBooks().sources().empty());
}

TEST(KRDesktopBooksTest, SaysWhyABookThatHasGoneCannotBeOpened) {
  const std::string club = krPeer({"new-book", "The short-lived club"});
  KRDesktopBooks books;
  const auto sources = books.sources();
  const KRBookSource* source = named(sources, "The short-lived club");
  ASSERT_NE(source, nullptr);
  krPeer({"remove-book", club});
  const auto opened = source->open();
  ASSERT_FALSE(opened.isOk());
  EXPECT_NE(opened.error().sentence.find("The short-lived club"), std::string::npos) << opened.error().sentence;
}

// The connection to the bus is the process's own, so these have a process each.

/// Starts a further bus with these options and makes it the session's; its process.
pid_t enterFurtherBus(const std::string& options) {
  std::FILE* output = popen(("dbus-daemon --fork --print-address=1 --print-pid=1 " + options).c_str(), "r");
  char line[1024] = {};
  std::string text;
  while (std::fgets(line, sizeof line, output) != nullptr) text += line;
  pclose(output);
  std::istringstream words(text);
  std::string address;
  pid_t process = 0;
  words >> address >> process;
  setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
  return process;
}

[[noreturn]] void end(bool isGood, const std::string& sentence) {
  std::fprintf(stderr, "%s\n", sentence.c_str());
  std::_Exit(isGood ? 0 : 1);
}

[[noreturn]] void loseTheBus() {
  const pid_t bus = enterFurtherBus("--session");
  const auto book = krDesktopBook("Personal");
  if (!book) end(false, book.error().sentence);
  (*book)->addPerson(krPersonOf(krNoted("Ann", "mine")).get());
  kill(bus, SIGKILL);
  const auto saved = (*book)->saveNow();
  if (saved) end(false, "saved without a bus");
  const auto sources = KRDesktopBooks().sources();
  if (sources.size() != 1 || sources.front().open().isOk()) end(false, "books without a bus");
  end((*book)->hasChanges(), "lost: " + saved.error().sentence);
}

[[noreturn]] void findNobodyAtTheAddress() {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  const auto sources = KRDesktopBooks().sources();
  if (sources.size() != 1) end(false, "books");
  const auto opened = sources.front().open();
  if (opened.isOk()) end(false, "opened");
  end(sources.front().kind == "desktop", "nobody: " + opened.error().sentence);
}

[[noreturn]] void findNoService() {
  const KRTestFolder folder;
  folder.put("bus.conf",
             "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
             "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\"><busconfig><type>session</type>"
             "<listen>unix:tmpdir=" +
                 folder.path() +
                 "</listen><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/><allow "
                 "eavesdrop=\"true\"/><allow own=\"*\"/></policy>"
                 "</busconfig>");
  const pid_t bus = enterFurtherBus("--config-file=" + folder.at("bus.conf"));
  const size_t count = KRDesktopBooks().sources().size();
  kill(bus, SIGKILL);
  end(bus != 0 && count == 0, "none: " + std::to_string(count));
}

class KRDesktopBooksBusTest : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(KRDesktopBooksBusTest, OutlivesTheBusAndKeepsTheChanges) {
  EXPECT_EXIT(loseTheBus(), testing::ExitedWithCode(0), "lost: .*Personal");
}

TEST_F(KRDesktopBooksBusTest, ListsOneBookWithTheReasonWhenNobodyAnswersAtTheBusAddress) {
  EXPECT_EXIT(findNobodyAtTheAddress(), testing::ExitedWithCode(0), "nobody: .*message bus");
}

TEST_F(KRDesktopBooksBusTest, HasNoBooksOnADesktopWithoutTheService) {
  EXPECT_EXIT(findNoService(), testing::ExitedWithCode(0), "none: 0");
}

}  // namespace
