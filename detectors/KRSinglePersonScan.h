#pragma once

#include <utility>

#include "contacts/model/IKRPerson.h"
#include "detectors/KRPersonAhead.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueObject.h"
#include "platform/KRProgress.h"

/// A new finding about one person. `describe` is the sentence for the user, `info` the value that it is about, if any.
inline KRRef<KRIssueObject> krFindingAboutPerson(IKRPerson* person, KRString describe, KRValue info = {}) {
  auto object = krMake<KRIssueObject>();
  object->setPersons(KRPersonArray(person));
  object->setDescribe(std::move(describe));
  object->setInfo(std::move(info));
  return object;
}

/// How a detector counts the person that it has just looked at.
enum class KRScanCount : uint8_t {
  /// The progress is 0 after the first person and never reaches 100: what all detectors but one report.
  FromZero = 0,
  /// The progress is 100 after the last person. Kept for the one detector that has always counted so.
  FromOne = 1,
};

/// The loop of the detectors that look at one person at a time: visits the persons in order, adds what
/// `examine(IKRPerson&, KRHold&)` answers (a `KRRef<KRIssueObject>`, nothing for most persons) to a new context and
/// reports the progress after each person, whatever came of it. Answers the context, or nothing when it holds no
/// finding; no list and an empty one have none.
///
/// `property` is the one without which a person has nothing to look at, where there is such a property; `reach` says
/// whether its first value is looked at for most persons. What `examine` reads through the hold is kept until the next
/// person, so persons without findings cost no objects.
/// The number of persons is read again for every progress value.
template <class Examine>
KRRef<KRIssueContext> krScanSinglePersons(const KRRef<KRIssue>& issue, const KRPersonList* persons,
                                          const KRProgress& progress, Examine examine,
                                          std::optional<KROrdinal> property = std::nullopt,
                                          KRScanCount counted = KRScanCount::FromZero,
                                          KRPersonAhead::Reach reach = KRPersonAhead::Reach::Value) {
  if (persons == nullptr || persons->isEmpty()) return {};
  auto context = krMake<KRIssueContext>(issue);
  const KRPersonAhead ahead(*persons, property, reach);
  KRHold hold;
  for (size_t i = 0; i < persons->count(); ++i) {
    ahead.reach(i);
    hold.empty();
    if (KRRef<KRIssueObject> object = examine(*persons->at(i), hold)) context->addIssueObject(object.get());
    progress(krPercent(i + static_cast<size_t>(counted), persons->count()));
  }
  if (context->issueObjects().isEmpty()) return {};
  return context;
}

/// The same for the detectors of values that a person holds more than once: only persons with two or more entries of
/// the property are examined.
template <class Examine>
KRRef<KRIssueContext> krScanRepeated(const KRRef<KRIssue>& issue, const KRPersonList* persons,
                                     const KRProgress& progress, KROrdinal property, Examine examine) {
  return krScanSinglePersons(
      issue, persons, progress,
      [&](IKRPerson& person, KRHold& hold) {
        return person.entryCount(property) > 1 ? examine(person, hold) : KRRef<KRIssueObject>();
      },
      property, KRScanCount::FromZero, KRPersonAhead::Reach::Places);
}
