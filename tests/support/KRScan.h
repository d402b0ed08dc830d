#pragma once

#include <utility>
#include <vector>

#include "issues/KRIssue.h"
#include "issues/KRIssueContext.h"
#include "issues/KRIssueFind.h"
#include "issues/KRIssueObject.h"
#include "tests/support/KRPersonSketch.h"

inline KRRef<KRIssue> krIssueNamed(const KRString& name) {
  return krMake<KRIssue>(name, "what this test is about"_kr);
}

/// One run of a detector over a list of persons.
class KRScan {
 public:
  /// A run of the `Detector` with an issue of its own over persons of one kind.
  template <class Detector, class Person>
  static KRScan of(const std::vector<KRPersonSketch>& sketches) {
    const auto detector = krMake<Detector>();
    detector->setIssue(krIssueNamed("an issue of this test"_kr));
    KRScan scan;
    for (const KRPersonSketch& sketch : sketches) scan.persons_.push_back(krPerson<Person>(sketch));
    scan.run(*detector);
    return scan;
  }

  const KRRef<KRIssueContext>& context() const { return context_; }
  const std::vector<double>& progress() const { return progress_; }
  const KRRef<IKRPerson>& person(size_t index) const { return persons_[index]; }

  std::vector<KRRef<KRIssueObject>> findings() const {
    return context_ ? context_->issueObjects().copy() : std::vector<KRRef<KRIssueObject>>();
  }

  /// The only finding; nothing when there is none or more than one.
  KRRef<KRIssueObject> only() const {
    const auto all = findings();
    return all.size() == 1 ? all.front() : KRRef<KRIssueObject>();
  }

  /// The places of the persons found, one for each finding; the number of persons for a finding about none of them or
  /// about several.
  std::vector<size_t> found() const {
    std::vector<size_t> places;
    for (const auto& finding : findings()) {
      const KRPersonArray persons = finding->persons();
      size_t place = 0;
      while (place < persons_.size() && (persons.count() != 1 || persons_[place].get() != persons.first())) ++place;
      places.push_back(place);
    }
    return places;
  }

 private:
  void run(KRIssueFind& detector) {
    KRPersonList list;
    for (const auto& person : persons_) list.append(person);
    context_ = detector.find(&list, [this](double percent) { progress_.push_back(percent); });
  }

  std::vector<KRRef<IKRPerson>> persons_;
  KRRef<KRIssueContext> context_;
  std::vector<double> progress_;
};
