#include "contacts/stores/KRUndo.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "contacts/stores/KRUndoSteps.h"

namespace {

using Steps = std::vector<std::unique_ptr<KRUndoStep>>;

/// The last write first.
KRResult<Steps> stepsOf(const KRUndoRecords::Run& run) {
  Steps steps;
  for (auto part = run.parts.rbegin(); part != run.parts.rend(); ++part) {
    KRResult<std::unique_ptr<KRUndoStep>> step = KRUndoStep::of(run, *part);
    if (!step) return step.error();
    steps.push_back(*std::move(step));
  }
  return steps;
}

KRResult<std::vector<KRUndo::Target>> targetsOf(const Steps& steps) {
  std::vector<KRUndo::Target> targets;
  KRUndoStates states;
  for (const auto& step : steps) {
    KRResult<KRUndo::Target> target = step->check(states);
    if (!target) return target.error();
    targets.push_back(*std::move(target));
  }
  return targets;
}

/// Each place once: a book that was written in several steps is one book.
std::vector<KRUndo::Target> byPlace(const std::vector<KRUndo::Target>& targets) {
  std::vector<KRUndo::Target> merged;
  for (const KRUndo::Target& each : targets) {
    const auto same = std::find_if(merged.begin(), merged.end(), [&](const KRUndo::Target& known) {
      return known.kind == each.kind && known.place == each.place;
    });
    if (same == merged.end()) {
      merged.push_back(each);
    } else {
      same->changes += each.changes;
      same->isPutBack = same->isPutBack || each.isPutBack;
    }
  }
  return merged;
}

}  // namespace

KRResult<std::vector<KRUndo::Target>> KRUndo::check(const KRUndoRecords::Run& run) {
  const KRResult<Steps> steps = stepsOf(run);
  if (!steps) return steps.error();
  KRResult<std::vector<Target>> targets = targetsOf(*steps);
  if (!targets) return targets;
  return byPlace(*targets);
}

KRResult<std::vector<KRUndo::Target>> KRUndo::putBack(const KRUndoRecords::Run& run) {
  const KRResult<Steps> steps = stepsOf(run);
  if (!steps) return steps.error();
  KRResult<std::vector<Target>> targets = targetsOf(*steps);
  if (!targets) return targets;
  for (size_t i = 0; i < targets->size(); ++i) {
    if (!(*targets)[i].isPutBack) continue;
    if (KRResult<void> done = (*steps)[i]->putBack(); !done) return done.error();
  }
  return byPlace(*targets);
}
