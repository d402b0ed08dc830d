// Keyed archives and the property lists that they are written in, at growing sizes: time for each object must not grow.
#include <benchmark/benchmark.h>

#include <span>
#include <string>

#include "platform/KRKeyedArchiver.h"
#include "platform/KRKeyedUnarchiver.h"

namespace {

/// What most archived objects are: a few texts and a number.
class Record : public KRObject {
 public:
  explicit Record(KRString name) : name_(std::move(name)) {}
  KRText archiveClassName() const override { return "Record"; }
  void encodeWithCoder(KRKeyedArchiver& coder) const override {
    coder.encode(name_, "name");
    coder.encode("home"_kr, "label");
    coder.encodeInteger(3, "type");
  }
  static KRRef<KRObject> decode(KRKeyedUnarchiver& coder) {
    benchmark::DoNotOptimize(coder.decode("label"));
    benchmark::DoNotOptimize(coder.decodeInteger("type"));
    return krMake<Record>(coder.decode("name").text());
  }

 private:
  KRString name_;
};

constexpr KRArchiveClass kClasses[] = {{"Record", Record::decode}};

KRRef<KRValueList> records(int64_t count) {
  const auto list = krMake<KRValueList>();
  for (int64_t i = 0; i < count; ++i) list->values().push_back(krMake<Record>(KRString("name " + std::to_string(i))));
  return list;
}

void archiveWrite(benchmark::State& state) {
  const auto list = records(state.range(0));
  size_t size = 0;
  for (auto _ : state) size = KRKeyedArchiver::archivedData(list).size();
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["bytes/object"] = static_cast<double>(size) / static_cast<double>(state.range(0));
}
BENCHMARK(archiveWrite)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

void archiveRead(benchmark::State& state) {
  const std::string archive = KRKeyedArchiver::archivedData(records(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(KRKeyedUnarchiver::unarchive(archive, kClasses));
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(archive.size()));
}
BENCHMARK(archiveRead)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

void plistRead(benchmark::State& state) {
  const std::string archive = KRKeyedArchiver::archivedData(records(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(KRBinaryPlist::read(archive));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(archive.size()));
}
BENCHMARK(plistRead)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMillisecond);

}  // namespace
