#include "issues/KRIssueFindResult.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>

#include "tests/support/KRFindings.h"

namespace {

using Findings = std::vector<KRIssueObject*>;
using Contexts = std::vector<KRIssueContext*>;

KRString key(const KRRef<IKRPerson>& person) {
  return KRIssueHandle::personAd(person.get());
}

Findings plain(const std::vector<KRRef<KRIssueObject>>& findings) {
  Findings plain;
  for (const auto& finding : findings) plain.push_back(finding.get());
  return plain;
}

TEST(KRIssueFindResult, IsMadeEmpty) {
  const auto result = krMake<KRIssueFindResult>();
  EXPECT_FALSE(result->addressBook());
  EXPECT_TRUE(result->contexts().isEmpty());
  EXPECT_EQ(&result->contextArray(), &result->contexts());
  EXPECT_EQ(result->issueObjectByPerson("1"_kr), nullptr);
  EXPECT_EQ(result->issueObjectByPerson(nullptr), nullptr);
  EXPECT_TRUE(result->copyOfIssueObjects(krNamed("Ann").get()).empty());
}

TEST(KRIssueFindResult, IndexesTheFindingsOfAContextBeforeItSortsThem) {
  const auto person = krNamed("P");
  const auto zoe = krFinding({krNamed("Zoe"), person});
  const auto ann = krFinding({krNamed("Ann"), person});
  const auto context = krContext({zoe, ann});
  const auto result = krResult({context});
  EXPECT_EQ(krPlain(result->issueObjectByPerson(key(person))), (Findings{zoe.get(), ann.get()}));
  EXPECT_EQ(krPlain(context->objects()), (Findings{ann.get(), zoe.get()}));
  EXPECT_EQ(context->result(), result);
}

TEST(KRIssueFindResult, IndexesContextByContext) {
  const auto person = krNamed("P");
  const auto first = krFinding({person});
  const auto second = krFinding({person});
  const auto result = krResult({krContext({second}), krContext({first})});
  EXPECT_EQ(krPlain(result->issueObjectByPerson(key(person))), (Findings{second.get(), first.get()}));
  EXPECT_EQ(result->issueObjectByPerson(key(person)), result->issueObjectsOfPerson(person.get()));
}

TEST(KRIssueFindResult, IndexesAPersonListedTwiceInAFindingOnce) {
  const auto person = krNamed("P");
  const auto result = krResult({krContext({krFinding({person, person})})});
  EXPECT_EQ(result->issueObjectsOfPerson(person.get())->count(), 1U);
}

TEST(KRIssueFindResult, PersonsAreToldApartByIdentity) {
  const KRRef<IKRPerson> one = krMake<KRSamePerson>("1"_kr);
  const KRRef<IKRPerson> again = krMake<KRSamePerson>("1"_kr);
  const auto result = krResult({krContext({krFinding({one})})});
  EXPECT_NE(result->issueObjectsOfPerson(one.get()), nullptr);
  EXPECT_EQ(result->issueObjectsOfPerson(again.get()), nullptr);
}

TEST(KRIssueFindResult, AFindingStandsOnceUnderAKey) {
  const auto result = krMake<KRIssueFindResult>();
  const auto finding = krFinding({krNamed("Ann")});
  result->addObject(finding.get(), "12"_kr);
  result->addObject(finding.get(), "12"_kr);
  EXPECT_EQ(krPlain(result->issueObjectByPerson("12"_kr)), Findings{finding.get()});
}

TEST(KRIssueFindResult, AKeyGoesWithItsLastFinding) {
  const auto result = krMake<KRIssueFindResult>();
  const auto first = krFinding({krNamed("Ann")});
  const auto second = krFinding({krNamed("Ann")});
  result->addObject(first.get(), "12"_kr);
  result->addObject(second.get(), "12"_kr);
  result->removeObject(first.get(), "12"_kr);
  EXPECT_EQ(krPlain(result->issueObjectByPerson("12"_kr)), Findings{second.get()});
  result->removeObject(first.get(), "12"_kr);
  result->removeObject(second.get(), "12"_kr);
  EXPECT_EQ(result->issueObjectByPerson("12"_kr), nullptr);
  result->addObject(first.get(), "12"_kr);
  EXPECT_EQ(result->issueObjectByPerson("12"_kr)->count(), 1U);
}

TEST(KRIssueFindResult, UnknownKeysAndAbsentArgumentsChangeNothing) {
  const auto result = krMake<KRIssueFindResult>();
  const auto finding = krFinding({krNamed("Ann")});
  result->addObject(nullptr, "12"_kr);
  result->addObject(finding.get(), nullptr);
  result->addObjectForPerson(finding.get(), nullptr);
  result->removeObject(finding.get(), "13"_kr);
  result->removeObject(nullptr, "12"_kr);
  result->removeObject(finding.get(), nullptr);
  result->removeObjectForPerson(finding.get(), nullptr);
  result->addContext(nullptr);
  result->insertContext(nullptr, 0);
  result->removeContext(nullptr);
  for (const KRString& each : {KRString("12"), KRString("13"), KRString()}) {
    EXPECT_EQ(result->issueObjectByPerson(each), nullptr);
  }
  EXPECT_TRUE(result->contexts().isEmpty());
}

TEST(KRIssueFindResult, KeysAreComparedAsTexts) {
  // Only the first is written as a person's key is; the others are keys of their own all the same.
  const std::vector<KRString> keys = {"12"_kr,  "+12"_kr, "012"_kr, " 12"_kr,
                                      "-12"_kr, "12a"_kr, ""_kr,    "99999999999999999999"_kr,
                                      "0"_kr,   "-0"_kr,  "-"_kr,   "-9223372036854775808"_kr};
  const auto result = krMake<KRIssueFindResult>();
  std::vector<KRRef<KRIssueObject>> findings;
  for (const KRString& each : keys) {
    findings.push_back(krFinding({krNamed("Ann")}));
    result->addObject(findings.back().get(), each);
  }
  for (size_t i = 0; i < keys.size(); ++i) {
    EXPECT_EQ(krPlain(result->issueObjectByPerson(keys[i])), Findings{findings[i].get()}) << keys[i].view();
    result->removeObject(findings[i].get(), keys[i]);
    EXPECT_EQ(result->issueObjectByPerson(keys[i]), nullptr) << keys[i].view();
  }
}

TEST(KRIssueFindResult, TheListOfAKeyIsTheLiveOne) {
  const auto person = krNamed("P");
  const auto first = krFinding({person});
  const auto result = krResult({krContext({first})});
  KRList<KRIssueObject>* list = result->issueObjectByPerson(key(person));
  const auto second = krFinding({person});
  result->addObject(second.get(), key(person));
  for (int i = 0; i < 1000; ++i) result->addObject(second.get(), KRString(std::to_string(i)));
  EXPECT_EQ(krPlain(list), (Findings{first.get(), second.get()}));
}

TEST(KRIssueFindResult, InsertsAContextAtItsPlaceOrTheEnd) {
  const auto person = krNamed("P");
  const auto result = krResult({krContext({}), krContext({})});
  const auto context = krContext({krFinding({krNamed("Zoe"), person}), krFinding({krNamed("Ann")})});
  result->insertContext(context.get(), 99);
  EXPECT_EQ(result->contexts().at(2), context.get());
  EXPECT_EQ(context->result(), result);
  EXPECT_EQ(result->issueObjectByPerson(key(person)), nullptr);
  EXPECT_EQ(context->objects().first()->persons().first()->displayName(), "Zoe");
  const auto front = krContext({});
  result->insertContext(front.get(), 0);
  EXPECT_EQ(result->contexts().first(), front.get());
}

TEST(KRIssueFindResult, RemovingAContextLeavesItsFindingsInTheIndex) {
  const auto person = krNamed("P");
  const auto context = krContext({krFinding({person})});
  const auto result = krResult({context, krContext({})});
  result->removeContext(context.get());
  result->removeContext(context.get());
  EXPECT_EQ(result->contexts().count(), 1U);
  EXPECT_EQ(result->issueObjectByPerson(key(person))->count(), 1U);
  EXPECT_EQ(context->result(), result);
}

TEST(KRIssueFindResult, SetContextsReplacesTheListOnly) {
  const auto result = krResult({krContext({})});
  const auto context = krContext({});
  KRList<KRIssueContext> contexts;
  contexts.append(context);
  result->setContexts(contexts);
  EXPECT_EQ(krPlain(result->contexts()), Contexts{context.get()});
  EXPECT_FALSE(context->result());
}

TEST(KRIssueFindResult, TheIndexAgreesWithASlowOne) {
  std::mt19937 random(11);
  std::vector<KRRef<IKRPerson>> persons;
  for (int i = 0; i < 300; ++i) persons.push_back(krNamed("P"));
  std::vector<KRRef<KRIssueObject>> findings;
  for (int i = 0; i < 60; ++i) findings.push_back(krFinding({persons[0]}));
  const auto result = krMake<KRIssueFindResult>();
  std::map<IKRPerson*, Findings> judge;
  for (int step = 0; step < 60'000; ++step) {
    const auto& person = persons[random() % persons.size()];
    KRIssueObject* finding = findings[random() % findings.size()].get();
    Findings& expected = judge[person.get()];
    const auto found = std::find(expected.begin(), expected.end(), finding);
    const bool byText = random() % 2 == 0;
    if (random() % 2 == 0) {
      byText ? result->addObject(finding, key(person)) : result->addObjectForPerson(finding, person.get());
      if (found == expected.end()) expected.push_back(finding);
    } else {
      byText ? result->removeObject(finding, key(person)) : result->removeObjectForPerson(finding, person.get());
      if (found != expected.end()) expected.erase(found);
    }
    if (random() % 20 == 0) ASSERT_EQ(plain(result->copyOfIssueObjects(person.get())), expected);
    // Not always, since asking makes the list.
    if (random() % 200 != 0) continue;
    ASSERT_EQ(result->issueObjectsOfPerson(person.get()) == nullptr, expected.empty());
    ASSERT_EQ(krPlain(result->issueObjectByPerson(key(person))), expected);
  }
  for (const auto& person : persons) {
    ASSERT_EQ(krPlain(result->issueObjectsOfPerson(person.get())), judge[person.get()]);
  }
}

}  // namespace
