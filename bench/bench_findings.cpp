// What a find leaves behind: making findings, indexing and sorting them, fixing them all, and letting go of the graph.
//
// Every finding is about one person. Each stage is timed by itself, on a result that the stages before it have made;
// "ns" is the time of the stage for one finding, "bytes" what the heap grew by for one.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <time.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "contacts/model/IKRPerson.h"
#include "handles/KRIssueHandle.h"
#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFindResult.h"
#include "issues/KRIssueNames.h"
#include "issues/KRIssueObject.h"
#include "platform/KRTransliteration.h"

namespace {

/// A person that has a name and nothing else.
class NamedPerson : public IKRPerson {
 public:
  using IKRPerson::setValue;

  explicit NamedPerson(std::string_view name) : name_(name) {}
  KRString ID() const override { return name_; }
  KRString addressBookID() const override { return {}; }
  KRString displayName() const override { return name_; }
  KRString nameChineesPinyin() const override { return krMandarinLatinUpper(name_); }
  KRRef<KRStoredValue> valueByPropertyName(const KRString&) const override { return {}; }
  void setValue(KRRef<KRStoredValue>, const KRString&) override {}

 private:
  KRString name_;
};

enum class Script { Latin, Chinese };

std::vector<KRRef<IKRPerson>> persons(size_t count, Script script) {
  constexpr std::string_view kChinese[] = {"王", "李", "张", "刘", "陈", "杨", "小", "明", "海", "洋", "芳", "伟"};
  std::mt19937_64 random(1);
  std::vector<KRRef<IKRPerson>> made;
  made.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    std::string name;
    if (script == Script::Chinese) {
      for (int j = 0; j < 3; ++j) name += kChinese[random() % std::size(kChinese)];
    } else {
      for (int j = 0; j < 14; ++j) name += j == 6 ? ' ' : static_cast<char>('a' + random() % 26);
    }
    made.emplace_back(krMake<NamedPerson>(name));
  }
  return made;
}

size_t heapInUse() {
  const auto heap = mallinfo2();
  return heap.uordblks + heap.hblkhd;
}

/// Seconds that this thread has worked: other programs on the machine do not count.
double secondsWorked() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Times one stage and reports it for one finding.
class Stage {
 public:
  Stage(benchmark::State& state) : state_(state), heap_(heapInUse()), start_(secondsWorked()) {}
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  ~Stage() {
    const double time = secondsWorked() - start_;
    const auto count = static_cast<double>(state_.range(0));
    state_.SetIterationTime(time);
    state_.counters["ns"] = time * 1e9 / count;
    state_.counters["bytes"] = (static_cast<double>(heapInUse()) - static_cast<double>(heap_)) / count;
  }

 private:
  benchmark::State& state_;
  size_t heap_;
  double start_;
};

KRRef<KRIssueContext> makeContext(const std::vector<KRRef<IKRPerson>>& people) {
  static const auto issue = krMake<KRIssue>(KRIssueBlankName, "blank"_kr);
  static const auto ignore = KRIssueHandle::issueHandleWithName(KRHandleNameIgnore);
  auto context = krMake<KRIssueContext>(issue);
  for (const auto& person : people) {
    const auto finding = krMake<KRIssueObject>();
    finding->setPersons(KRPersonArray(person));
    finding->setDescribe("This contact has no name."_kr);
    finding->setHandle(ignore);
    context->addIssueObject(finding.get());
  }
  return context;
}

void findingsMade(benchmark::State& state) {
  const auto people = persons(static_cast<size_t>(state.range(0)), Script::Latin);
  for ([[maybe_unused]] auto _ : state) {
    KRRef<KRIssueContext> context;
    const Stage stage(state);
    context = makeContext(people);
    benchmark::DoNotOptimize(context.get());
  }
}

void findingsIndexed(benchmark::State& state) {
  const auto people = persons(static_cast<size_t>(state.range(0)), Script::Latin);
  for ([[maybe_unused]] auto _ : state) {
    const auto context = makeContext(people);
    const auto result = krMake<KRIssueFindResult>();
    const Stage stage(state);
    for (KRIssueObject& finding : context->objects()) {
      result->addObjectForPerson(&finding, finding.persons().first());
    }
  }
}

void findingsSorted(benchmark::State& state, Script script) {
  const auto people = persons(static_cast<size_t>(state.range(0)), script);
  for ([[maybe_unused]] auto _ : state) {
    const auto context = makeContext(people);
    const Stage stage(state);
    context->sort();
  }
}

void contextAdded(benchmark::State& state) {
  const auto people = persons(static_cast<size_t>(state.range(0)), Script::Latin);
  for ([[maybe_unused]] auto _ : state) {
    const auto context = makeContext(people);
    const auto result = krMake<KRIssueFindResult>();
    const Stage stage(state);
    result->addContext(context.get());
  }
}

void allPersonsAsked(benchmark::State& state) {
  const auto people = persons(static_cast<size_t>(state.range(0)), Script::Latin);
  for ([[maybe_unused]] auto _ : state) {
    const auto context = makeContext(people);
    const Stage stage(state);
    benchmark::DoNotOptimize(context->allPersons());
  }
}

void allFixed(benchmark::State& state) {
  const auto people = persons(static_cast<size_t>(state.range(0)), Script::Latin);
  for ([[maybe_unused]] auto _ : state) {
    const auto context = makeContext(people);
    const auto result = krMake<KRIssueFindResult>();
    result->addContext(context.get());
    const Stage stage(state);
    context->fixAllForProgress([](double percent) { benchmark::DoNotOptimize(percent); });
  }
}

void graphDropped(benchmark::State& state) {
  const auto people = persons(static_cast<size_t>(state.range(0)), Script::Latin);
  for ([[maybe_unused]] auto _ : state) {
    auto result = krMake<KRIssueFindResult>();
    result->addContext(makeContext(people).get());
    const Stage stage(state);
    result = {};
  }
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->UseManualTime()->Unit(benchmark::kMillisecond);
}

BENCHMARK(findingsMade)->Apply(sizes);
BENCHMARK(findingsIndexed)->Apply(sizes);
BENCHMARK_CAPTURE(findingsSorted, latin, Script::Latin)->Apply(sizes);
BENCHMARK_CAPTURE(findingsSorted, chinese, Script::Chinese)->Apply(sizes);
BENCHMARK(contextAdded)->Apply(sizes);
BENCHMARK(allPersonsAsked)->Apply(sizes);
BENCHMARK(allFixed)->Apply(sizes);
BENCHMARK(graphDropped)->Apply(sizes);

}  // namespace
