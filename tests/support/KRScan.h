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
    return of<Person>(sketches, [&](const KRPersonList& persons, const KRProgress& progress) {
      return detector->find(&persons, progress);
    });
  }

  /// A run of `find(const KRPersonList&, const KRProgress&)`, such as another strategy of a detector.
  template <class Person, class Find>
  static KRScan of(const std::vector<KRPersonSketch>& sketches, Find find) {
    std::vector<KRRef<IKRPerson>> persons;
    for (const KRPersonSketch& sketch : sketches) persons.push_back(krPerson<Person>(sketch));
    return KRScan(std::move(persons), find);
  }

  /// A run over persons made already.
  template <class Find>
  KRScan(std::vector<KRRef<IKRPerson>> persons, Find find) : persons_(std::move(persons)) {
    KRPersonList list;
    for (const auto& person : persons_) list.append(person);
    const KRProgress progress([this](double percent) { progress_.push_back(percent); });
    context_ = find(static_cast<const KRPersonList&>(list), progress);
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

  /// The places of all persons of each finding, both in their order. A person that the run has twice has its first
  /// place.
  std::vector<std::vector<size_t>> groups() const {
    std::vector<std::vector<size_t>> groups;
    for (const auto& finding : findings()) {
      groups.emplace_back();
      const KRPersonArray persons = finding->persons();
      for (const IKRPerson* person : persons) {
        size_t place = 0;
        while (place < persons_.size() && persons_[place].get() != person) ++place;
        groups.back().push_back(place);
      }
    }
    return groups;
  }

 private:
  std::vector<KRRef<IKRPerson>> persons_;
  KRRef<KRIssueContext> context_;
  std::vector<double> progress_;
};
