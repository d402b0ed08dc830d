// The detectors that look at one person at a time, each over a generated book of persons read from cards.
//
// Books are prefixes of one list, so that the largest one is in memory once. What a run costs is looking at the persons
// and making the findings; "findings" tells how many there were.

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/ABPerson.h"
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
      line(card, {"TEL;TYPE=CELL:+1 (555) ", std::to_string(1000000 + below(9000000)), chance(2) ? " ext. 4" : ""});
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

const KRPersonList& bookOf(size_t count) {
  static CardMaker maker;
  static std::vector<KRRef<ABPerson>> persons;
  static std::map<size_t, std::unique_ptr<KRPersonList>> books;
  std::unique_ptr<KRPersonList>& book = books[count];
  if (book == nullptr) {
    while (persons.size() < count) {
      const std::string card = maker.next();
      persons.push_back(ABPerson::initWithVCardRepresentation(KRText(card)));
    }
    book = std::make_unique<KRPersonList>();
    book->reserve(count);
    for (size_t i = 0; i < count; ++i) book->append(persons[i].get());
  }
  return *book;
}

void findIssue(benchmark::State& state, const KRString& issueName) {
  const KRPersonList& persons = bookOf(static_cast<size_t>(state.range(0)));
  const auto issue = krMake<KRIssue>(issueName, ""_kr);
  size_t findings = 0;
  for ([[maybe_unused]] auto _ : state) {
    double last = 0;
    auto context =
        KRIssueFind::issueFindWithIssue(issue.get())->find(&persons, [&](double percent) { last = percent; });
    benchmark::DoNotOptimize(last);
    state.PauseTiming();
    findings = context ? context->issueObjects().count() : 0;
    context = {};
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["findings"] = static_cast<double>(findings);
}

const bool kRegistered = [] {
  for (const KRString& issueName : {KRIssueIncompleteName, KRIssueInvalidCharacters, KRIssueNoteWithSpacingOnly,
                                    KRIssueUnusualTitle, KRIssueUnusualSuffix, KRIssueSpacingInTheFirstName,
                                    KRIssueNicknameWithSpacingOnly, KRIssueBlankName, KRIssueHasCompanyNameNoTitle}) {
    benchmark::RegisterBenchmark((std::string("find/") + std::string(issueName.view())).c_str(), findIssue, issueName)
        ->Arg(10'000)
        ->Arg(100'000)
        ->Arg(1'000'000)
        ->Unit(benchmark::kMillisecond);
  }
  return true;
}();

}  // namespace
