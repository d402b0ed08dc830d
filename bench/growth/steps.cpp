// One step over a book of some size, as one JSON object on standard output; bench/growth/run compares the sizes.
//
//     kr_growth load|find|sort|ignore|delete|merge|trash-save|trash-load|library-save|library-load FILE.vcf
//
// "seconds" is the processor time of the step alone, so that waiting for a disk and for other programs does not count;
// "count" says how many contacts or findings it went through. A step ends where its own work ends: fixes without the
// save, saves and loads without what made or uses what they keep. The folder of the environment's XDG_DATA_HOME is used
// up; `trash-load` and `library-load` read there what `trash-save` and `library-save` have left.

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "bench/BenchCaches.h"
#include "bench/BenchFind.h"
#include "bench/BenchSteps.h"
#include "contacts/KRTrashAddressBook.h"
#include "contacts/model/KRAddressBook.h"
#include "contacts/model/KRSaveScope.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "issues/KRIssueFind.h"
#include "issues/KRIssueManager.h"
#include "issues/KRIssueNames.h"
#include "platform/KRPreferencesOverlay.h"
#include "tests/support/KRProcessorTime.h"

namespace {

struct Measured {
  double seconds = 0;
  size_t count = 0;
};

/// The allocator puts off joining the small blocks that were let go until somebody wants a large one.
void joinFreeBlocks() {
  constexpr size_t kLarge = size_t{64} << 10U;
  void* volatile block = std::malloc(kLarge);
  std::free(block);
}

/// Times what `work` does, with what it leaves the allocator to do; it answers how many it went through.
template <class Work>
Measured timed(Work work) {
  joinFreeBlocks();
  krBenchEmptyCaches();
  const double start = krProcessorSeconds();
  const size_t count = work();
  joinFreeBlocks();
  return {krProcessorSeconds() - start, count};
}

Measured load(const std::string& path) {
  return timed([&] { return krBenchOpen(path)->allPersonsCount(); });
}

Measured find(const std::string& path) {
  const auto book = krBenchOpen(path);
  KRRef<KRIssueFindResult> result;
  return timed([&] {
    result = krBenchFind(book);
    return book->allPersonsCount();
  });
}

/// What the detectors found, in their order, each list sorted once.
Measured sort(const std::string& path) {
  const auto book = krBenchOpen(path);
  std::vector<KRRef<KRIssueContext>> contexts;
  for (const KRRef<KRIssue>& issue : KRIssueManager::shareIssueManager().useIssues().copy()) {
    const auto detector = KRIssueFind::issueFindWithIssue(issue.get());
    if (auto context = detector->find(&book->allPersons(), [](double) {})) contexts.push_back(std::move(context));
  }
  return timed([&] {
    size_t count = 0;
    for (const auto& context : contexts) {
      context->sort();
      count += context->objects().count();
    }
    return count;
  });
}

Measured fix(const std::string& path, const KRString& issueName, const KRString& handleName) {
  const auto book = krBenchOpen(path);
  const auto result = krBenchFind(book);
  KRSaveScope scope;
  return timed([&] { return krBenchFixAll(*result, issueName, handleName); });
}

Measured ignoreAll(const std::string& path) {
  return fix(path, KRString(), KRHandleNameIgnore);
}
Measured deleteDuplicates(const std::string& path) {
  return fix(path, KRIssueDuplicateInfo, KRHandleNameDeleteDuplicatePerson);
}

/// Merging needs a book that makes contacts: all that was loaded, in one of memory.
Measured mergeSameNames(const std::string& path) {
  const auto loaded = krBenchOpen(path);
  const auto book = krMake<KRAddressBook>("merged"_kr, "Merged"_kr);
  for (IKRPerson& person : loaded->allPersons()) book->addPerson(&person);
  const auto result = krBenchFind(book);
  KRSaveScope scope;
  return timed([&] { return krBenchFixAll(*result, KRIssueDuplicateNames, KRHandleNameMergeContact); });
}

Measured saveTrash(const std::string& path) {
  const auto trash = krMake<KRTrashAddressBook>();
  {
    const auto book = krBenchOpen(path);
    for (IKRPerson& person : book->allPersons()) trash->addPerson(&person);
  }
  return timed([&] {
    if (const auto saved = trash->saveNow(); !saved) krBenchFail(saved.error().sentence);
    return trash->allPersonsCount();
  });
}

Measured loadTrash(const std::string&) {
  KRRef<KRTrashAddressBook> trash;
  return timed([&] {
    trash = krMake<KRTrashAddressBook>();
    return trash->allPersonsCount();
  });
}

KRRef<KRSQLiteLibrary> library(KRSQLiteLibrary::Mode mode) {
  const std::string path = std::string(std::getenv("XDG_DATA_HOME")) + "/library.db";
  auto opened = KRSQLiteLibrary::open(KRText(std::string_view(path)), mode);
  if (!opened) krBenchFail(opened.error().sentence);
  return opened.value();
}

Measured saveLibrary(const std::string& path) {
  const auto loaded = krBenchOpen(path);
  const auto made = library(KRSQLiteLibrary::Mode::Create);
  const KRRef<KRStoredBook> book = *made->addBook("Book");
  for (IKRPerson& person : loaded->allPersons()) book->addCopy(person);
  return timed([&] {
    if (const auto saved = book->saveNow(); !saved) krBenchFail(saved.error().sentence);
    return book->allPersonsCount();
  });
}

Measured loadLibrary(const std::string&) {
  return timed([] {
    const auto opened = library(KRSQLiteLibrary::Mode::Existing);
    return (*opened->book(opened->books()->front().ID))->allPersons().count();
  });
}

struct Step {
  std::string_view name;
  std::function<Measured(const std::string&)> measure;
};
const Step kSteps[] = {
    {"load", load},
    {"find", find},
    {"sort", sort},
    {"ignore", ignoreAll},
    {"delete", deleteDuplicates},
    {"merge", mergeSameNames},
    {"trash-save", saveTrash},
    {"trash-load", loadTrash},
    {"library-save", saveLibrary},
    {"library-load", loadLibrary},
};

}  // namespace

int main(int count, char** words) {
  if (count != 3) krBenchFail("usage: kr_growth STEP FILE.vcf");
  if (std::getenv("XDG_DATA_HOME") == nullptr) krBenchFail("XDG_DATA_HOME must name a folder that may be filled");
  KRPreferences::setStandard(krMake<KRPreferencesOverlay>(KRRef<KRPreferences>()));
  const auto* step =
      std::find_if(std::begin(kSteps), std::end(kSteps), [&](const Step& each) { return each.name == words[1]; });
  if (step == std::end(kSteps)) krBenchFail("no such step: " + std::string(words[1]));
  const Measured measured = step->measure(words[2]);
  std::cout << nlohmann::ordered_json{{"seconds", measured.seconds}, {"count", measured.count}}.dump() << std::endl;
  // Letting go of millions of contacts is not what is measured.
  std::_Exit(0);
}
