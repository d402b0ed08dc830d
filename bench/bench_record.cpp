// Loading vCards into records, and reading records: how fast, and how much memory a contact takes.
//
// The cards are of the size and make that address books export: about 376 bytes each, half of them in the manner of the
// desktop's own book. "bytes_per_contact" is what the process grew by while the book was loaded, "text_per_contact" the
// size of the cards in the file.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "contacts/vcard/KRVCardBook.h"

namespace {

constexpr std::string_view kFirst[] = {"Ann",    "Bo",   "Carla", "David", "Zoë",      "Jürgen",
                                       "Fatima", "海洋", "Hana",  "Ivan",  "Mary Ann", "Gunnar"};
constexpr std::string_view kLast[] = {"Lee", "Smith", "García", "Müller", "van Dam", "王", "Okafor", "Novak", "Ng"};
constexpr std::string_view kCompanies[] = {"Acme Inc.", "Globex", "Initech", "Umbrella Ltd.", "Stark & Sons"};
constexpr std::string_view kNotes[] = {"Met at the fair in Lyon\\, call back in May.", "Prefers mail to calls.",
                                       "Likes tea\\; calls on Mondays.\\nBirthday gift: a book."};

/// Makes cards one after the other, the same ones on every run.
class CardMaker {
 public:
  void append(std::string& text) {
    ++number_;
    const bool isDesktop = chance(50);
    const std::string_view first = pick(kFirst);
    const std::string_view last = pick(kLast);
    line(text, {"BEGIN:VCARD\r\nVERSION:3.0"});
    if (isDesktop) line(text, {"PRODID:-//Example Corp.//Address Book 2.1//EN"});
    line(text, {"N:", last, ";", first, ";;;"});
    line(text, {"FN:", first, " ", last});
    if (chance(50)) line(text, {"ORG:", pick(kCompanies), ";"});
    if (chance(30)) line(text, {"TITLE:Head of Sales"});
    const std::string number = std::to_string(number_);
    line(text, {isDesktop ? "EMAIL;type=INTERNET;type=HOME;type=pref:" : "EMAIL;TYPE=INTERNET,HOME:", "user", number,
                "@example.org"});
    line(text, {isDesktop ? "TEL;type=CELL;type=VOICE;type=pref:" : "TEL;TYPE=CELL:", "+1 (555) 01", number});
    if (chance(60)) line(text, {isDesktop ? "item1.TEL:+44 20 55" : "TEL;TYPE=WORK,FAX:+44 20 55", number});
    if (isDesktop) line(text, {"item1.X-ABLabel:_$!<Other>!$_"});
    line(text, {"ADR;TYPE=HOME:;;", number, " Elm Street;Springfield;IL;62701;United States"});
    if (chance(30))
      line(text, {isDesktop ? "BDAY:1980-0" : "BDAY:19800", std::to_string(1 + number_ % 9), isDesktop ? "-11" : "11"});
    line(text, {"NOTE:", pick(kNotes)});
    if (chance(60)) line(text, {"REV:2021-03-04T05:06:07Z"});
    line(text, {"END:VCARD"});
  }

 private:
  uint64_t below(uint64_t count) { return random_() % count; }
  bool chance(uint64_t percent) { return below(100) < percent; }
  template <size_t Count>
  std::string_view pick(const std::string_view (&words)[Count]) {
    return words[below(Count)];
  }
  static void line(std::string& text, std::initializer_list<std::string_view> pieces) {
    for (const std::string_view piece : pieces) text.append(piece);
    text.append("\r\n");
  }

  std::mt19937_64 random_{7};
  uint64_t number_ = 100'000;
};

constexpr size_t kFileCount = 10'000;

/// A file of ten thousand contacts; larger books are made of several readings of it.
const std::string& file() {
  static const std::string text = [] {
    std::string made;
    CardMaker maker;
    for (size_t i = 0; i < kFileCount; ++i) maker.append(made);
    return made;
  }();
  return text;
}

size_t residentBytes() {
  size_t pages = 0;
  size_t resident = 0;
  if (FILE* status = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(status, "%zu %zu", &pages, &resident) != 2) resident = 0;
    std::fclose(status);
  }
  return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

KRRef<KRVCardBook> load(size_t count) {
  auto book = krMake<KRVCardBook>("bench"_kr, "Bench"_kr);
  for (size_t done = 0; done < count; done += kFileCount) book->addBytes(file());
  return book;
}

void loadCards(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  static_cast<void>(file());
  size_t grown = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const size_t before = residentBytes();
    state.ResumeTiming();
    KRRef<KRVCardBook> book = load(count);
    state.PauseTiming();
    // Memory that the process kept from an earlier round does not show again.
    grown = std::max(grown, residentBytes() - std::min(before, residentBytes()));
    book = nullptr;
    state.ResumeTiming();
  }
  const size_t bytes = file().size() * (count / kFileCount);
  state.SetBytesProcessed(static_cast<int64_t>(bytes) * static_cast<int64_t>(state.iterations()));
  state.counters["bytes_per_contact"] = static_cast<double>(grown) / static_cast<double>(count);
  state.counters["text_per_contact"] = static_cast<double>(bytes) / static_cast<double>(count);
}
BENCHMARK(loadCards)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

/// One walk over a book as a detector does it, reading names, phones and notes.
void readRecords(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  const KRRef<KRVCardBook> book = load(count);
  size_t seen = 0;
  for (auto _ : state) {
    KRHold hold;
    for (const IKRPerson& person : book->allPersons()) {
      hold.empty();
      seen += person.readName(hold).last.size() + person.readText(KROrdinal::Note, hold).size();
      person.readEntries(KROrdinal::Phone, hold, [&](const KREntryView& entry) {
        seen += entry.text.size();
        return true;
      });
    }
  }
  benchmark::DoNotOptimize(seen);
  state.SetItemsProcessed(static_cast<int64_t>(count) * state.iterations());
}
BENCHMARK(readRecords)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// The identifiers of a book whose cards have none of their own.
void assignIDs(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const KRRef<KRVCardBook> book = load(static_cast<size_t>(state.range(0)));
    state.ResumeTiming();
    book->assignIDs();
  }
  state.SetItemsProcessed(state.range(0) * state.iterations());
}
BENCHMARK(assignIDs)->Arg(100'000)->Unit(benchmark::kMillisecond);

}  // namespace
