// Every detector over generated books of persons read from cards, each book at n, 2n and 4n: "ratio" is the time
// against that of the book half as large, to be held against 2. Besides a book as it may be found there are the worst
// ones: all contacts equal, one phone on every contact, ten thousand e-mail addresses in each contact. The search for
// near-misses is measured like a detector.
//
// Every run begins with nothing of the book in the processor's caches, as each look at a large book does: otherwise the
// small book would be measured in the cache and the large one in memory, and the ratio would tell of the processor
// alone. KR_BENCH_WARM=1 leaves the caches as the run before left them.
//
// Books are prefixes of one list, so that the largest one is in memory once; only one kind is kept at a time. What a
// run costs is looking at the persons and making the findings; "findings" tells how many there were.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bench/BenchCaches.h"
#include "contacts/model/ABPerson.h"
#include "detectors/KRNearMissFind.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFind.h"
#include "issues/KRIssueNames.h"

namespace {

constexpr std::string_view kFirst[] = {"Ann",       "Bo",     "Carla",  "David", "Zo\u00EB", "Mary Ann", "\u6D77\u6D0B",
                                       "Jos\u00E9", "Fatima", "Gunnar", "Hana",  "Ivan",     "Jean Luc", "Kim"};
constexpr std::string_view kLast[] = {"Lee",    "Smith", "Garc\u00EDa", "M\u00FCller", "van Dam", "\u738B",
                                      "Okafor", "Novak", "Silva",       "Yamada",      "O'Neill", "Ng"};
constexpr std::string_view kTitles[] = {"Dr.", "Mr.", "Mrs.", "Prof.", "Count", "dr."};
constexpr std::string_view kSuffixes[] = {"Jr.", "Sr.", "PhD", "the Great"};
constexpr std::string_view kCompanies[] = {"Acme Inc.", "Globex", "Initech", "Umbrella Ltd.", "Stark & Sons"};
constexpr std::string_view kJobs[] = {"Clerk", "Engineer", "Head of Sales", "CEO"};
constexpr std::string_view kNotes[] = {"Met in Lyon.", "Prefers mail.", "Likes tea; calls on Mondays.", " "};

/// Makes cards one after the other, the same ones on every run.
class CardMaker {
 public:
  std::string next() {
    ++number_;
    std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
    const bool isCompany = chance(3);
    const std::string_view first = chance(4) ? "" : pick(kFirst);
    const std::string_view last = chance(4) ? "" : pick(kLast);
    line(card, {"N:", last, ";", first, ";;", chance(10) ? pick(kTitles) : "", ";", chance(4) ? pick(kSuffixes) : ""});
    line(card, {"FN:", first, " ", last});
    if (isCompany) line(card, {"X-ABShowAs:COMPANY"});
    if (isCompany || chance(45)) line(card, {"ORG:", pick(kCompanies)});
    if (chance(30)) line(card, {"TITLE:", pick(kJobs)});
    if (chance(8)) line(card, {"NICKNAME:", chance(10) ? "  " : pick(kFirst)});
    for (uint64_t i = below(4); i > 0; --i) {
      line(card, {"TEL;TYPE=CELL:+1 (555) ", phone(i), chance(2) ? " ext. 4" : ""});
    }
    for (uint64_t i = below(3); i > 0; --i) {
      line(card, {"EMAIL;TYPE=HOME:user", std::to_string(number_), chance(1) ? "" : "@", "example.org"});
    }
    if (chance(70)) line(card, {"ADR;TYPE=HOME:;;12 Elm Street;Springfield;IL;62701;United States"});
    if (chance(40)) line(card, {"NOTE:", pick(kNotes)});
    line(card, {"UID:", std::to_string(number_)});
    line(card, {"END:VCARD"});
    return card;
  }

 private:
  uint64_t below(uint64_t count) { return random_() % count; }
  bool chance(uint64_t percent) { return below(100) < percent; }
  /// Shared with the contact before in a few of a hundred, whatever the size of the book; numbers drawn from one stock
  /// would be shared by ever more contacts, and the findings would grow faster than the book.
  std::string phone(uint64_t i) { return std::to_string(10'000'000 + (chance(3) ? number_ - 1 : number_) * 4 + i); }
  template <size_t Count>
  std::string_view pick(const std::string_view (&words)[Count]) {
    return words[below(Count)];
  }
  static void line(std::string& card, std::initializer_list<std::string_view> pieces) {
    for (const std::string_view piece : pieces) card.append(piece);
    card.append("\r\n");
  }

  std::mt19937_64 random_{7};
  uint64_t number_ = 0;
};

enum class Book { Mixed, AllEqual, OnePhone, ManyEmails };

constexpr size_t kEmails = 10'000;

/// The cards of a book, one after the other.
class BookMaker {
 public:
  explicit BookMaker(Book book) : book_(book) {}

  std::string next() {
    const std::string number = std::to_string(++number_);
    const std::string start = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
    const std::string end = "UID:" + number + "\r\nEND:VCARD\r\n";
    switch (book_) {
      case Book::AllEqual:
        return start +
               "N:Lee;Ann;;;\r\nFN:Ann Lee\r\nTEL;TYPE=CELL:+1 555 0100\r\nEMAIL:ann@example.org\r\n"
               "ADR;TYPE=HOME:;;12 Elm Street;Springfield;IL;62701;United States\r\nNOTE:Likes tea.\r\n" +
               end;
      case Book::OnePhone:
        return start + "N:Lee" + number + ";Ann;;;\r\nTEL;TYPE=WORK:+1 555 0100\r\n" + end;
      case Book::ManyEmails: {
        std::string card = start + "N:Lee" + number + ";Ann;;;\r\n";
        for (size_t i = 0; i < kEmails; ++i) card += "EMAIL:" + std::to_string(i) + "@example.org\r\n";
        return card + end;
      }
      case Book::Mixed:
        break;
    }
    return mixed_.next();
  }

 private:
  Book book_;
  CardMaker mixed_;
  uint64_t number_ = 0;
};

/// The first `count` persons of a book.
const KRPersonList& bookOf(Book book, size_t count) {
  struct Made {
    explicit Made(Book book) : kind(book), maker(book) {}
    Book kind;
    BookMaker maker;
    std::vector<KRRef<ABPerson>> persons;
    std::map<size_t, std::unique_ptr<KRPersonList>> lists;
  };
  static std::unique_ptr<Made> made;
  if (made == nullptr || made->kind != book) made = std::make_unique<Made>(book);
  std::unique_ptr<KRPersonList>& list = made->lists[count];
  if (list == nullptr) {
    while (made->persons.size() < count) {
      const std::string card = made->maker.next();
      made->persons.push_back(ABPerson::initWithVCardRepresentation(KRText(card)));
    }
    list = std::make_unique<KRPersonList>();
    list->reserve(count);
    for (size_t i = 0; i < count; ++i) list->append(made->persons[i].get());
  }
  return *list;
}

void emptyCaches() {
  static const bool isLeft = std::getenv("KR_BENCH_WARM") != nullptr;
  if (!isLeft) krBenchEmptyCaches();
}

/// Runs `work(const KRPersonList&)`, which answers what it found and how much that is, and tells the ratio to the run
/// over half as many: of the fastest times so far, so that repetitions take the noise out.
template <class Work>
void measure(benchmark::State& state, Book book, const std::string& name, Work work) {
  static std::map<std::pair<std::string, int64_t>, double> fastest;
  const auto contacts = static_cast<size_t>(state.range(0));
  const KRPersonList& persons = bookOf(book, contacts);
  size_t findings = 0;
  double least = std::numeric_limits<double>::max();
  for ([[maybe_unused]] auto _ : state) {
    state.PauseTiming();
    emptyCaches();
    state.ResumeTiming();
    const std::clock_t start = std::clock();
    auto [found, count] = work(persons);
    least = std::min(least, static_cast<double>(std::clock() - start));
    findings = count;
    state.PauseTiming();
    found = {};
    state.ResumeTiming();
  }
  double& mine = fastest.try_emplace({name, state.range(0)}, least).first->second;
  mine = std::min(mine, least);
  const auto half = fastest.find({name, state.range(0) / 2});
  if (half != fastest.end()) state.counters["ratio"] = mine / half->second;
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["findings"] = static_cast<double>(findings);
}

void findIssue(benchmark::State& state, Book book, const std::string& name, const KRString& issueName) {
  const auto issue = krMake<KRIssue>(issueName, ""_kr);
  measure(state, book, name, [&](const KRPersonList& persons) {
    double last = 0;
    auto context = KRIssueFind::issueFindWithIssue(issue.get())->find(&persons, [&](double each) { last = each; });
    benchmark::DoNotOptimize(last);
    const size_t count = context ? context->issueObjects().count() : 0;
    return std::make_pair(std::move(context), count);
  });
}

void explainIssue(benchmark::State& state, Book book, const std::string& name, const KRString& issueName) {
  measure(state, book, name, [&](const KRPersonList& persons) {
    auto misses = KRNearMissFind::find(issueName, &persons, [](double) {});
    const size_t count = misses.size();
    return std::make_pair(std::move(misses), count);
  });
}

struct Worst {
  const char* name;
  Book book;
  /// The smallest of the three sizes.
  int64_t contacts;
};
constexpr Worst kBooks[] = {{"mixed", Book::Mixed, 250'000},
                            {"allEqual", Book::AllEqual, 250'000},
                            {"onePhone", Book::OnePhone, 250'000},
                            {"manyEmails", Book::ManyEmails, 25}};

/// Of so many runs the fastest counts.
constexpr int64_t kRuns = 5;

const bool kRegistered = [] {
  const auto add = [](const std::string& name, const Worst& each, auto run, const KRString& issueName) {
    auto* registered = benchmark::RegisterBenchmark(name.c_str(), run, each.book, name, issueName);
    registered->Unit(benchmark::kMillisecond)->Iterations(kRuns);
    for (int64_t step = 0; step < 3; ++step) registered->Arg(each.contacts << step);
  };
  for (const Worst& each : kBooks) {
    for (const KRString& issueName :
         {KRIssueDuplicateNames, KRIssueDuplicateInfo, KRIssuePhonesDuplicatedAmongMultipleContacts,
          KRIssueEmailsDuplicatedAmongMultipleContacts, KRIssueDuplicatePhoneNumber, KRIssueDuplicateEmailAddress,
          KRIssueDuplicateAddress, KRIssueIncompleteName, KRIssueInvalidCharacters, KRIssueNoteWithSpacingOnly,
          KRIssueUnusualTitle, KRIssueUnusualSuffix, KRIssueSpacingInTheFirstName, KRIssueNicknameWithSpacingOnly,
          KRIssueBlankName, KRIssueHasCompanyNameNoTitle}) {
      const std::string name = std::string(each.name) + "/" + std::string(issueName.view());
      add("find/" + name, each, findIssue, issueName);
      if (KRNearMissFind::canExplain(issueName)) add("explain/" + name, each, explainIssue, issueName);
    }
  }
  return true;
}();

}  // namespace
