#include "app/PlanRun.h"

#include <algorithm>

#include "app/DisplayText.h"
#include "app/PlanValues.h"
#include "app/Unusable.h"
#include "issues/KRFindingKey.h"
#include "issues/KRIssueContext.h"
#include "platform/KRProgress.h"

namespace {

std::string infoOf(const KRIssueObject& finding) {
  const KRValue info = finding.info();
  return info.isNothing() ? std::string() : std::string(info.description().view());
}

/// Everything that makes a fix what it is. Where no values are set, the order of the contacts tells nothing new.
std::string contentOf(const Plan::Fix& fix) {
  std::vector<std::vector<std::string>> persons;
  for (const Plan::Person& person : fix.persons) persons.push_back({person.ID, person.digest});
  if (fix.values.is_null()) std::sort(persons.begin(), persons.end());
  return nlohmann::json{std::string(fix.choice.issue->name().view()), std::string(fix.choice.handle->name().view()),
                        fix.info ? nlohmann::json(*fix.info) : nlohmann::json(), persons, fix.values}
      .dump();
}

std::vector<bool> repeatedIn(const Plan& plan) {
  std::vector<bool> isRepeated;
  std::unordered_set<std::string> known;
  for (const Plan::Fix& fix : plan.fixes) isRepeated.push_back(!known.insert(contentOf(fix)).second);
  return isRepeated;
}

std::vector<PlanRun::Group> groupsOf(const Plan& plan, const std::vector<bool>& isRepeated) {
  std::vector<PlanRun::Group> groups;
  for (size_t i = 0; i < plan.fixes.size(); ++i) {
    if (isRepeated[i]) continue;
    const FixChoice& choice = plan.fixes[i].choice;
    const auto known = std::find_if(groups.begin(), groups.end(), [&](const PlanRun::Group& each) {
      return each.choice.issue == choice.issue && sameText(each.choice.handle->name(), choice.handle->name());
    });
    if (known == groups.end()) {
      groups.push_back({choice, {i}, 0});
    } else {
      known->fixes.push_back(i);
    }
  }
  return groups;
}

/// Among the fixes of one group: what the fix is about.
std::string subjectOf(const KRIssueObject& finding) {
  std::vector<std::string> persons;
  const KRPersonArray all = finding.persons();
  for (const IKRPerson* person : all) persons.emplace_back(person->ID().view());
  std::sort(persons.begin(), persons.end());
  return nlohmann::json{infoOf(finding), persons}.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

KRStringList issuesOf(const std::vector<PlanRun::Group>& groups) {
  KRStringList names;
  for (const PlanRun::Group& group : groups) {
    const KRString name = group.choice.issue->name();
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  }
  return names;
}

}  // namespace

PlanRun::PlanRun(const Plan& plan, const std::string& file, FixRun& run)
    : plan_(plan),
      run_(run),
      isRepeated_(repeatedIn(plan)),
      groups_(groupsOf(plan, isRepeated_)),
      settled_(static_cast<size_t>(std::count(isRepeated_.begin(), isRepeated_.end(), true))) {
  run.scan(issuesOf(groups_), PersonFilter());
  for (IKRPerson& person : run.book().allPersons()) {
    persons_.emplace(person.ID().view(), KRRef<IKRPerson>(&person));
  }
  std::string first;
  size_t others = 0;
  for (size_t i = 0; i < plan.fixes.size(); ++i) {
    const Plan::Fix& fix = plan.fixes[i];
    const std::string wrong = isRepeated_[i] ? std::string() : lookUp(fix);
    // One for each fix, also where there is none.
    findings_.resize(i + 1);
    if (wrong.empty()) continue;
    if (!first.empty()) ++others;
    if (first.empty()) first = fix.place + ": " + wrong;
  }
  findFurther();
  if (first.empty()) return;
  throw Unusable(file + ": " + first + (others > 0 ? "; likewise " + counted(others, "other fix", "other fixes") : "") +
                 "; nothing is applied");
}

/// New values of one finding may stand in several fixes.
void PlanRun::findFurther() {
  isFurther_.resize(findings_.size());
  for (Group& group : groups_) {
    std::unordered_set<std::string> known;
    for (const size_t place : group.fixes) {
      isFurther_[place] = findings_[place] && !known.insert(subjectOf(*findings_[place])).second;
    }
    group.findings = known.size();
  }
}

/// What is wrong with the fix, or "" when its finding stands in `findings_`.
std::string PlanRun::lookUp(const Plan::Fix& fix) {
  std::vector<KRRef<IKRPerson>> persons;
  for (const Plan::Person& planned : fix.persons) {
    const auto person = persons_.find(planned.ID);
    const std::string called = "the contact \"" + fittedText(shownText(planned.ID), 80) + "\"";
    if (person == persons_.end()) return called + " is not in the book any more";
    std::string& digest = digests_[person->second.get()];
    if (digest.empty()) digest = krPersonDigest(*person->second).view();
    if (digest != planned.digest) return called + " has changed since the plan was made";
    persons.push_back(person->second);
  }
  KRRef<KRIssueObject> finding = findingOf(fix, persons);
  if (!finding) return "a scan does not find this any more";
  const std::string wrong = fix.values.is_null() ? std::string() : PlanValues::check(fix.values, *persons.front());
  if (!wrong.empty()) return "values: " + wrong;
  findings_.push_back(std::move(finding));
  return {};
}

/// The finding that is about these persons, perhaps among others: then it is about these alone from now on, and what
/// the plan says of the others is a finding of its own.
KRRef<KRIssueObject> PlanRun::findingOf(const Plan::Fix& fix, const std::vector<KRRef<IKRPerson>>& persons) {
  KRIssueFindResult& result = *run_.result();
  for (const KRRef<KRIssueObject>& finding : result.copyOfIssueObjects(persons.front().get())) {
    if (finding->issue() != fix.choice.issue || (fix.info && infoOf(*finding) != *fix.info)) continue;
    const bool listsAll = std::all_of(persons.begin(), persons.end(),
                                      [&](const auto& person) { return finding->listsPerson(person.get()); });
    if (!listsAll || used_.count(finding.get()) != 0) continue;
    auto own = krMake<KRIssueObject>();
    own->setInfo(finding->info());
    own->setDescribe(finding->describe());
    own->setPersons(KRPersonArray(persons));
    finding->issueContext()->addIssueObject(own.get());
    for (const auto& person : persons) result.addObjectForPerson(own.get(), person.get());
    used_.insert(own.get());
    return own;
  }
  return {};
}

FixEffect PlanRun::applyOne(const Plan::Fix& fix, KRIssueObject& finding, FixWatch::Detail detail) {
  if (fix.values.is_null()) return run_.fix(finding, fix.choice.handle, detail);
  const KRRef<IKRPerson> person(finding.persons().first());
  std::vector<PersonRow> before = PersonRows::whole(*person);
  PlanValues::set(fix.values, *person);
  FixEffect effect = run_.fix(finding, fix.choice.handle, detail);
  effect.kind = FixKind::Values;
  effect.before = std::move(before);
  effect.after = PersonRows::whole(*person);
  return effect;
}

FixAccount PlanRun::apply(const Group& group, const FixRun::Observer& observer) {
  FixAccount account;
  const auto detail = observer ? FixWatch::Detail::All : FixWatch::Detail::Counts;
  std::unordered_set<const IKRPerson*> changed;
  for (const size_t place : group.fixes) {
    const KRRef<KRIssueObject> finding = findings_[place];
    const KRRef<KRIssueContext> context = finding->issueContext();
    if (!context->objects().contains(finding.get())) {
      ++settled_;
      continue;
    }
    const FixEffect effect = applyOne(plan_.fixes[place], *finding, detail);
    account.add(effect);
    if (isFurther_[place]) --account.findings;
    if (effect.changesValues()) changed.insert(effect.persons.first());
    if (observer) observer(effect);
  }
  account.changed = changed.size();
  return account;
}
