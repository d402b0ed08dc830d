// References, lists, texts and graph nodes: what one of each costs.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "platform/KRArray.h"
#include "platform/KRGraphNode.h"
#include "platform/KRList.h"
#include "platform/KRString.h"
#include "platform/KRValue.h"

namespace {

/// What a finding is made of, without its meaning.
class Leaf : public KRGraphNode {
 public:
  ~Leaf() override { up.set(*this, nullptr); }

  KREdge<class Hub> up;
  KRValue info;
  KRString describe;
};

class Hub : public KRGraphNode {
 public:
  KRList<Leaf> leaves{*this};
};

void graphOfFindings(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    auto hub = krMake<Hub>();
    for (size_t i = 0; i < count; ++i) {
      const auto leaf = krMake<Leaf>();
      leaf->up.set(*leaf, hub.get());
      hub->leaves.append(leaf);
    }
    benchmark::DoNotOptimize(hub.get());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["bytes/node"] = sizeof(Leaf);
}
BENCHMARK(graphOfFindings)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void listTakenFromTheFront(benchmark::State& state) {
  std::vector<KRRef<KRValueList>> items(static_cast<size_t>(state.range(0)));
  for (auto& item : items) item = krMake<KRValueList>();
  for ([[maybe_unused]] auto _ : state) {
    KRList<KRValueList> list;
    for (const auto& item : items) list.append(item);
    while (!list.isEmpty()) list.removeAt(0);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(listTakenFromTheFront)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void referenceCopied(benchmark::State& state) {
  const auto object = krMake<KRValueList>();
  for ([[maybe_unused]] auto _ : state) {
    KRRef<KRValueList> copy = object;
    benchmark::DoNotOptimize(copy);
  }
}
BENCHMARK(referenceCopied);

void textHashed(benchmark::State& state) {
  const KRString text(std::string(static_cast<size_t>(state.range(0)), 'a'));
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(text.hash());
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(textHashed)->Arg(8)->Arg(24)->Arg(400);

void textMadeWellFormed(benchmark::State& state) {
  const std::string bytes(1 << 20U, 'a');
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(krIsWellFormed(bytes));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
}
BENCHMARK(textMadeWellFormed);

}  // namespace
