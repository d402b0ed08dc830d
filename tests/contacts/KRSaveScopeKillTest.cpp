// A commit that is killed before any one of its system calls loses no contact: what was to move from a book to the
// trash is in one of them at least, both open, and a file that had to be set aside is still there.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "contacts/model/KRSaveScope.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "tests/contacts/KRTrashSetting.h"

namespace {

using Work = std::function<void()>;

/// Runs what `prepare` returns in a process of its own and kills that before its system call number `number`, counted
/// from 0. False when it ended before.
bool killAt(size_t number, const std::function<Work()>& prepare) {
  const pid_t child = fork();
  if (child == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    const Work work = prepare();
    raise(SIGSTOP);
    work();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFSTOPPED(status) || WSTOPSIG(status) != SIGSTOP) {
    ADD_FAILURE() << "the child could not be prepared or traced";
    return false;
  }
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  // Every call stops the child twice, before and after.
  for (size_t stop = 0; stop <= 2 * number; ++stop) {
    ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
    waitpid(child, &status, 0);
    if (WIFEXITED(status) || WIFSIGNALED(status)) {
      EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
      return false;
    }
  }
  kill(child, SIGKILL);
  waitpid(child, &status, 0);
  return true;
}

using KRSaveScopeKill = KRTrashSetting;

TEST_F(KRSaveScopeKill, NoContactIsMissingFromBothTheBookAndTheTrash) {
  size_t number = 0;
  size_t before = 0;
  size_t between = 0;
  size_t after = 0;
  bool wasKilled = true;
  while (wasKilled) {
    std::filesystem::remove_all(folder_.at("data"));
    const KRTestFolder place;
    const std::string path = place.at("library.sqlite");
    const auto openLibrary = [&](KRSQLiteLibrary::Mode mode) {
      return KRSQLiteLibrary::open(KRText(std::string_view(path)), mode).value();
    };
    wasKilled = killAt(number++, [&]() -> Work {
      const auto library = openLibrary(KRSQLiteLibrary::Mode::Create);
      const auto book = library->addBook("Home"_kr).value();
      book->addPerson(record("UID:ann\r\nN:Lee;Ann;;;\r\n").get());
      book->addPerson(record("UID:ben\r\nN:Lee;Ben;;;\r\n").get());
      if (!book->saveNow()) _exit(1);
      const auto kept = trash();
      kept->save();
      return [library, book, kept] {
        KRSaveScope scope;
        IKRPerson* ann = book->personsForIDs({"ann"_kr}).at(0).get();
        kept->addPerson(ann);
        book->removePersons(KRPersonArray(ann));
        book->save();
        kept->save();
        if (!scope.commit()) _exit(2);
      };
    });
    const auto library = openLibrary(KRSQLiteLibrary::Mode::Existing);
    const auto book = library->book(library->books().value().at(0).ID).value();
    ASSERT_TRUE(book->load());
    const auto kept = trash();
    ASSERT_TRUE(kept->load());
    const size_t inBook = book->personsForIDs({"ann"_kr}).size();
    const size_t inTrash = kept->personsForIDs({"ann"_kr}).size();
    ASSERT_EQ(book->allPersonsCount(), inBook + 1);
    ASSERT_EQ(kept->allPersonsCount(), inTrash);
    ASSERT_GE(inBook + inTrash, 1U) << "killed before system call " << number - 1;
    ++(inTrash == 0 ? before : inBook == 1 ? between : after);
  }
  // Each of the three was seen; how many calls lie between them depends on how the program was built.
  EXPECT_GE(before, 1U);
  EXPECT_GE(between, 1U);
  EXPECT_GE(after, 1U);
}

TEST_F(KRSaveScopeKill, ADamagedTrashIsNeverGone) {
  bool wasKilled = true;
  size_t runs = 0;
  for (; wasKilled; ++runs) {
    std::filesystem::remove_all(folder_.at("data"));
    putTrash("damaged bytes");
    wasKilled = killAt(runs, [&]() -> Work {
      const auto kept = trash();
      kept->addPerson(record("UID:ann\r\nN:Lee;Ann;;;\r\n").get());
      return [kept] {
        if (!kept->saveNow()) _exit(2);
      };
    });
    bool isThere = content() == "damaged bytes";
    for (const std::string& name : others()) isThere = isThere || KRTestFolder::contentOf(name) == "damaged bytes";
    ASSERT_TRUE(isThere) << "killed before system call " << runs;
  }
  EXPECT_GT(runs, 5U);
  EXPECT_EQ(trash()->allPersonsCount(), 1U);
}

}  // namespace
