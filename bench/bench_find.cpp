// The main job, over whole files: opening a vCard file as a book, and the find over it.
//
// The books are files NAME/contacts.vcf in the folder that the environment variable KR_BENCH_BOOKS names; bench/run
// makes them with bench/gen_contacts.py. Without the variable there is nothing to measure here.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/BenchFind.h"
#include "contacts/vcard/KRVCardBook.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueManager.h"
#include "platform/KRPreferencesOverlay.h"

namespace {

/// Bytes that the process has from the allocator and not given back.
size_t allocatedBytes() {
  const struct mallinfo2 state = mallinfo2();
  return state.uordblks + state.hblkhd;
}

KRRef<KRVCardBook> open(const std::string& path, benchmark::State& state) {
  auto book = KRVCardBook::open(std::string_view(path));
  if (book) return book.value();
  state.SkipWithError(book.error().sentence.c_str());
  return {};
}

void openFile(benchmark::State& state, const std::string& path) {
  double perContact = 0;
  size_t contacts = 0;
  for ([[maybe_unused]] auto _ : state) {
    const size_t before = allocatedBytes();
    const auto book = open(path, state);
    if (!book) return;
    contacts = book->allPersonsCount();
    perContact = static_cast<double>(allocatedBytes() - before) / static_cast<double>(contacts);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(std::filesystem::file_size(path)));
  state.counters["contacts"] = static_cast<double>(contacts);
  state.counters["bytes/contact"] = perContact;
}

void wholeFind(benchmark::State& state, const std::string& path) {
  const size_t before = allocatedBytes();
  const auto book = open(path, state);
  if (!book) return;
  const auto contacts = static_cast<double>(book->allPersonsCount());
  size_t findings = 0;
  double perContact = 0;
  for ([[maybe_unused]] auto _ : state) {
    const auto result = krBenchFind(book);
    perContact = static_cast<double>(allocatedBytes() - before) / contacts;
    findings = 0;
    for (const KRIssueContext& context : result->contexts()) findings += context.objects().count();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(contacts));
  state.counters["findings"] = static_cast<double>(findings);
  state.counters["bytes/contact"] = perContact;
}

/// One pair of measurements a book, the smallest first.
const bool registered = [] {
  const char* folder = std::getenv("KR_BENCH_BOOKS");
  if (folder == nullptr) return false;
  // The user's choice of issues does not count here, and nothing that is chosen here is kept.
  KRPreferences::setStandard(krMake<KRPreferencesOverlay>(KRRef<KRPreferences>()));
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (const auto file = entry.path() / "contacts.vcf"; std::filesystem::exists(file)) files.push_back(file.string());
  }
  std::sort(files.begin(), files.end(),
            [](const auto& a, const auto& b) { return std::filesystem::file_size(a) < std::filesystem::file_size(b); });
  for (const std::string& file : files) {
    const std::string name = std::filesystem::path(file).parent_path().filename().string();
    benchmark::RegisterBenchmark(("open/" + name).c_str(), openFile, file)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("wholeFind/" + name).c_str(), wholeFind, file)->Unit(benchmark::kMillisecond);
  }
  return true;
}();

}  // namespace
