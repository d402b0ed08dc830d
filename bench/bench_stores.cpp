// Saving a book into a database file and reading it again, at several sizes: the time has to grow with the contacts and
// no faster. "bytes_per_contact" is what the process grew by while the book was read, "file_per_contact" the size of
// the file. The file stands in the folder for temporary files, which should be on a disk.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "bench/BenchCards.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "contacts/vcard/KRVCardBook.h"

namespace {

const std::string& libraryPath() {
  static const std::string path = std::filesystem::temp_directory_path() / "kr-bench-library.db";
  return path;
}

void removeLibrary() {
  for (const char* end : {"", "-wal", "-shm"}) std::filesystem::remove(libraryPath() + end);
}

KRRef<KRSQLiteLibrary> library() {
  const std::string& path = libraryPath();
  return *KRSQLiteLibrary::open(KRText(std::string_view(path)), KRSQLiteLibrary::Mode::Create);
}

/// Puts that many contacts into a new book of a new library.
void fill(size_t count) {
  const KRRef<KRStoredBook> book = *library()->addBook("Bench");
  for (size_t done = 0; done < count; done += kBenchFileCount) {
    KRVCardBook loaded("loaded"_kr, "Loaded"_kr);
    loaded.addBytes(krBenchFile());
    for (IKRPerson& person : loaded.allPersons()) book->addCopy(person);
  }
  if (!book->saveNow()) std::abort();
}

void saveToLibrary(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  static_cast<void>(krBenchFile());
  for (auto _ : state) {
    state.PauseTiming();
    removeLibrary();
    state.ResumeTiming();
    fill(count);
  }
  state.SetItemsProcessed(state.range(0) * state.iterations());
  state.counters["file_per_contact"] =
      static_cast<double>(std::filesystem::file_size(libraryPath())) / static_cast<double>(count);
  removeLibrary();
}
BENCHMARK(saveToLibrary)->Arg(100'000)->Arg(200'000)->Arg(400'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void readLibrary(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  removeLibrary();
  fill(count);
  size_t grown = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const size_t before = krResidentBytes();
    state.ResumeTiming();
    const KRRef<KRSQLiteLibrary> opened = library();
    KRRef<KRStoredBook> book = *opened->book(opened->books()->front().ID);
    if (book->allPersons().count() != count) state.SkipWithError("contacts are missing");
    state.PauseTiming();
    grown = std::max(grown, krResidentBytes() - std::min(before, krResidentBytes()));
    book = nullptr;
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.range(0) * state.iterations());
  state.counters["bytes_per_contact"] = static_cast<double>(grown) / static_cast<double>(count);
  removeLibrary();
}
BENCHMARK(readLibrary)->Arg(100'000)->Arg(200'000)->Arg(400'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

/// Opening alone: the look through the file for damage, and the count of the contacts.
void openLibrary(benchmark::State& state) {
  removeLibrary();
  fill(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    const KRRef<KRSQLiteLibrary> opened = library();
    benchmark::DoNotOptimize((*opened->book(opened->books()->front().ID))->allPersonsCount());
  }
  removeLibrary();
}
BENCHMARK(openLibrary)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

/// One contact of many changed and saved.
void changeOneInLibrary(benchmark::State& state) {
  removeLibrary();
  fill(static_cast<size_t>(state.range(0)));
  const KRRef<KRSQLiteLibrary> opened = library();
  const KRRef<KRStoredBook> book = *opened->book(opened->books()->front().ID);
  IKRPerson& person = *book->allPersons().at(book->allPersons().count() / 2);
  const KRProperty* note = KRProperty::propertyWithName(KRProPertyNote);
  int number = 0;
  for (auto _ : state) {
    person.setValue(krSingleValue(KRString(std::to_string(++number)), *note), KRProPertyNote);
    if (!book->saveNow()) state.SkipWithError("not saved");
  }
  removeLibrary();
}
BENCHMARK(changeOneInLibrary)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
