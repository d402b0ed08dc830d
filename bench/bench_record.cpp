// Loading vCards into records, and reading records: how fast, and how much memory a contact takes.
//
// The cards are of the size and make that address books export: about 376 bytes each, half of them in the manner of the
// desktop's own book. "bytes_per_contact" is what the process grew by while the book was loaded, "text_per_contact" the
// size of the cards in the file.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "bench/BenchCards.h"
#include "contacts/vcard/KRVCardBook.h"

namespace {

KRRef<KRVCardBook> load(size_t count) {
  auto book = krMake<KRVCardBook>("bench"_kr, "Bench"_kr);
  for (size_t done = 0; done < count; done += kBenchFileCount) book->addBytes(krBenchFile());
  return book;
}

void loadCards(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  static_cast<void>(krBenchFile());
  size_t grown = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const size_t before = krResidentBytes();
    state.ResumeTiming();
    KRRef<KRVCardBook> book = load(count);
    state.PauseTiming();
    // Memory that the process kept from an earlier round does not show again.
    grown = std::max(grown, krResidentBytes() - std::min(before, krResidentBytes()));
    book = nullptr;
    state.ResumeTiming();
  }
  const size_t bytes = krBenchFile().size() * (count / kBenchFileCount);
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
