// Fixing whole books: all findings of a find, and the deletion and merging of groups of contacts in one save scope,
// whose commit is part of the time. Each is measured at n, 2n and 4n; "ns" is the time for one finding.
//
// In every book all contacts share one phone number: a finding that names them all, and that loses each contact that a
// fix deletes.

#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <time.h>

#include <filesystem>
#include <string>

#include "bench/BenchFind.h"
#include "contacts/KRTrashAddressBook.h"
#include "contacts/model/KRAddressBook.h"
#include "contacts/model/KRSaveScope.h"
#include "contacts/vcard/KRVCardReader.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueNames.h"
#include "issues/KRIssueObject.h"
#include "platform/KRPreferencesOverlay.h"

namespace {

/// Seconds that this thread has worked: other programs on the machine do not count.
double secondsWorked() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// A folder that is the user's while the fixes run, so that nobody's own trash and preferences are touched.
class OwnHome {
 public:
  OwnHome() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kr-bench-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) abort();
    folder_ = pattern;
    setenv("XDG_DATA_HOME", folder_.c_str(), 1);
    KRPreferences::setStandard(krMake<KRPreferencesOverlay>(KRRef<KRPreferences>()));
  }
  ~OwnHome() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  OwnHome(const OwnHome&) = delete;
  OwnHome& operator=(const OwnHome&) = delete;

 private:
  std::filesystem::path folder_;
};

/// Contacts with a first name with a space in it, an unusual prefix and a note of blanks; `alike` of them in a row are
/// equal in all.
KRRef<KRAddressBook> makeBook(size_t count, size_t alike) {
  auto book = krMake<KRAddressBook>("bench"_kr, "Bench"_kr);
  std::string cards;
  for (size_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i / alike);
    cards += "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lee" + number + ";Mary Ann;;Count;\r\nFN:Mary Ann Lee" + number +
             "\r\nTEL;TYPE=work:+43 1 5550000\r\nEMAIL:mary" + number + "@example.org\r\nNOTE:  \r\nX-OWN:" + number +
             "\r\nEND:VCARD\r\n";
  }
  KRVCardReader::read(cards, *book);
  return book;
}

/// Fixes all findings of the context by a handle of that name; how many there were.
size_t fixAll(KRIssueContext& context, const KRString& handleName) {
  const size_t count = context.objects().count();
  const auto handle = KRIssueHandle::issueHandleWithName(handleName);
  for (KRIssueObject& finding : context.objects()) finding.setHandle(handle);
  context.fixAllForProgress([](double percent) { benchmark::DoNotOptimize(percent); });
  return count;
}

/// What fixes the findings of an issue.
struct Choice {
  KRString issue;
  KRString handle;
};
constexpr Choice kChanges[] = {
    {KRIssueSpacingInTheFirstName, KRHandleNameRemoveSpace},
    {KRIssueUnusualTitle, KRHandleNameDeleteProperty},
    {KRIssueNoteWithSpacingOnly, KRHandleNameDeleteProperty},
};
constexpr Choice kDeletions[] = {{KRIssueDuplicateInfo, KRHandleNameDeleteDuplicatePerson}};
constexpr Choice kMerges[] = {{KRIssueDuplicateNames, KRHandleNameMergeContact}};

/// Times the fixing of the chosen findings of a book of `count` groups of `alike` contacts each.
template <size_t kCount>
void fixes(benchmark::State& state, const Choice (&choices)[kCount], size_t alike) {
  const OwnHome home;
  const auto count = static_cast<size_t>(state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    const auto book = makeBook(count * alike, alike);
    const auto result = krBenchFind(book);
    size_t fixed = 0;
    const double start = secondsWorked();
    KRSaveScope scope;
    for (const Choice& choice : choices) {
      for (const KRRef<KRIssueContext>& context : result->contexts().copy()) {
        if (context->issue()->name() == choice.issue) fixed += fixAll(*context, choice.handle);
      }
    }
    KRTrashAddressBook::ShareTrashAddressBook()->save();
    book->save();
    if (!scope.commit()) state.SkipWithError("the commit failed");
    const double time = secondsWorked() - start;
    state.SetIterationTime(time);
    state.counters["findings"] = static_cast<double>(fixed);
    state.counters["ns"] = time * 1e9 / static_cast<double>(fixed);
    state.counters["trash"] = static_cast<double>(KRTrashAddressBook::ShareTrashAddressBook()->allPersonsCount());
    KRTrashAddressBook::ShareTrashAddressBook()->clear();
  }
}

void changes(benchmark::State& state) {
  fixes(state, kChanges, 1);
}
void deletions(benchmark::State& state) {
  fixes(state, kDeletions, 2);
}
void merges(benchmark::State& state) {
  fixes(state, kMerges, 2);
}

BENCHMARK(changes)->Name("fix/changes")->Arg(250'000)->Arg(500'000)->Arg(1'000'000)->UseManualTime()->Iterations(1);
BENCHMARK(deletions)->Name("fix/deletions")->Arg(25'000)->Arg(50'000)->Arg(100'000)->UseManualTime()->Iterations(1);
BENCHMARK(merges)->Name("fix/merges")->Arg(25'000)->Arg(50'000)->Arg(100'000)->UseManualTime()->Iterations(1);

}  // namespace
