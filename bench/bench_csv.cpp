// Delimited files, from the file to the persons delivered: the contract's loader and the dialect of RFC 4180.
//
// The file is of the size and make that short address books have: nine columns, about 100 bytes a contact. One thread
// reads, as a run does; the listener drops each person. With KR_BENCH_CSV in the environment that file is read instead,
// so that a peer can read the same.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "import/KRCSVFile.h"
#include "import/KRCSVReading.h"
#include "import/KRPersonCSVLoad.h"

namespace {

constexpr size_t kCount = 100'000;

std::string madeFile() {
  constexpr std::string_view kFirst[] = {"Ann", "Bo", "Carla", "Zoë", "Jürgen", "海洋", "Mary Ann"};
  constexpr std::string_view kLast[] = {"Lee", "Smith", "García", "Müller", "van Dam", "王", "Okafor"};
  std::mt19937 random(7);
  const auto pick = [&](const auto& words) { return words[random() % std::size(words)]; };
  std::string text = "First Name,Middle Name,Last Name,Company,Job Title,Phone,Mobile,Email,Note\n";
  for (size_t i = 0; i < kCount; ++i) {
    const std::string number = std::to_string(100'000 + i);
    text.append(pick(kFirst)).append(",,").append(pick(kLast)).append(",");
    text.append(random() % 2 == 0 ? "Acme Inc.,Head of Sales," : ",,");
    text.append("+1 (555) 01").append(number).append(",");
    text.append(random() % 2 == 0 ? "" : "0171 55" + number).append(",user").append(number).append("@example.org,");
    text.append(random() % 3 == 0 ? "Met at the fair in Lyon; call back in May" : "").append("\n");
  }
  return text;
}

const KRString& path() {
  static const KRString only = [] {
    if (const char* given = std::getenv("KR_BENCH_CSV")) return KRString(given);
    const std::filesystem::path made = std::filesystem::temp_directory_path() / "kr-bench.csv";
    std::ofstream(made, std::ios::binary) << madeFile();
    return KRString(made.string());
  }();
  return only;
}

class Counter : public KRPersonLoadDelegate {
 public:
  void KRPersonLoadDelegate_progress(double, const KRRef<IKRPerson>& person, KRPersonLoad&) override {
    benchmark::DoNotOptimize(person.get());
    ++count;
  }
  size_t count = 0;
};

void load(benchmark::State& state, const KRCSVDialect& dialect) {
  size_t count = 0;
  for (auto _ : state) {
    const auto counter = std::make_shared<Counter>();
    const auto loader = KRPersonCSVLoad::initWithFile(path());
    loader->setDialect(dialect);
    loader->setDelegate(counter);
    // On this thread. The contract's run does not look at the state; the other one would end at once.
    if (dialect.kind == KRCSVDialect::Kind::Strict) {
      loader->loadThreed();
    } else {
      KRCSVReading::open(path(), dialect)
          ->persons(
              [&](const KRRef<KRTempPerson>& person, size_t row) {
                loader->sendProgress(static_cast<double>(row), person);
                return true;
              },
              {});
    }
    count += counter->count;
  }
  state.SetItemsProcessed(static_cast<int64_t>(count));
  state.SetBytesProcessed(static_cast<int64_t>(std::filesystem::file_size(path().view())) *
                          static_cast<int64_t>(state.iterations()));
}

void readTable(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(KRCSVFile::initWithFile(path())->rowCount());
}

void countRows(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(KRCSVReading::open(path(), KRCSVDialect::rfc4180())->personCount());
}

BENCHMARK_CAPTURE(load, csv / strict, KRCSVDialect::strict())->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(load, csv / rfc4180, KRCSVDialect::rfc4180())->Unit(benchmark::kMillisecond);
BENCHMARK(readTable)->Name("csv/table")->Unit(benchmark::kMillisecond);
BENCHMARK(countRows)->Name("csv/rows")->Unit(benchmark::kMillisecond);

}  // namespace
