#include "detectors/KRPersonGroups.h"

#include <gmock/gmock.h>

#include <atomic>
#include <cstdlib>
#include <map>
#include <new>
#include <random>
#include <string>

#include "contacts/model/ABPerson.h"
#include "issues/KRIssueFind.h"
#include "issues/KRIssueNames.h"
#include "platform/KRHash.h"

namespace {

std::atomic<size_t> allocations{0};

}  // namespace

// Counts the allocations of the whole test program. Not inlined: compilers would take the pair for a mismatch.
[[gnu::noinline]] void* operator new(size_t size) {
  ++allocations;
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Adds the places of the letters of a text, each under its letter.
KRPersonGroups grouped(std::string_view letters, uint64_t (*hash)(char)) {
  KRPersonGroups groups;
  std::string keys;
  for (uint32_t place = 0; place < letters.size(); ++place) {
    const size_t before = groups.keyCount();
    groups.add(hash(letters[place]), place, [&](uint32_t key) { return keys[key] == letters[place]; });
    if (groups.keyCount() > before) keys += letters[place];
  }
  return groups;
}

uint64_t spread(char letter) {
  return krHashMix(1, static_cast<unsigned char>(letter));
}
uint64_t same(char) {
  return 7;
}

std::vector<uint32_t> places(const KRPersonGroups& groups, uint32_t key) {
  std::vector<uint32_t> places;
  groups.forPlaces(key, [&](uint32_t place) { places.push_back(place); });
  return places;
}

TEST(KRPersonGroups, NumbersKeysByFirstAppearanceAndGroupsBySecond) {
  const KRPersonGroups groups = grouped("abcbcaac", spread);
  EXPECT_EQ(groups.keyCount(), 3U);
  EXPECT_THAT(groups.groupKeys(), ElementsAre(1, 2, 0));
  EXPECT_THAT(places(groups, 0), ElementsAre(0, 5, 6));
  EXPECT_THAT(places(groups, 1), ElementsAre(1, 3));
  EXPECT_THAT(places(groups, 2), ElementsAre(2, 4, 7));
  EXPECT_EQ(groups.firstPlace(2), 2U);
  EXPECT_EQ(groups.lastPlace(2), 7U);
}

TEST(KRPersonGroups, KeepsKeysOfOnePlaceApart) {
  const KRPersonGroups groups = grouped("abc", spread);
  EXPECT_THAT(groups.groupKeys(), IsEmpty());
  EXPECT_FALSE(groups.isGroup(1));
  EXPECT_THAT(places(groups, 1), ElementsAre(1));
  EXPECT_EQ(groups.lastPlace(1), 1U);
}

TEST(KRPersonGroups, NeverGroupsByTheHashAlone) {
  const KRPersonGroups groups = grouped("abcabz", same);
  EXPECT_THAT(groups.groupKeys(), ElementsAre(0, 1));
  EXPECT_THAT(places(groups, 0), ElementsAre(0, 3));
  EXPECT_EQ(groups.keyCount(), 4U);
}

TEST(KRPersonGroups, AgreesWithAMap) {
  std::mt19937 random(1);
  for (int round = 0; round < 50; ++round) {
    std::string letters;
    for (int i = 0; i < 200; ++i) letters += static_cast<char>(random() % 100);
    const KRPersonGroups groups = grouped(letters, spread);
    std::map<char, std::vector<uint32_t>> expected;
    for (uint32_t i = 0; i < letters.size(); ++i) expected[letters[i]].push_back(i);
    ASSERT_EQ(groups.keyCount(), expected.size());
    for (uint32_t key = 0; key < groups.keyCount(); ++key) {
      EXPECT_EQ(places(groups, key), expected[letters[groups.firstPlace(key)]]);
    }
  }
}

/// Cards of which no two have anything in common that a detector looks at.
void addDistinctCards(int count, KRPersonList& persons) {
  for (int i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    const std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\nN:Lee" + number + ";Ann;Mary;;\r\nORG:Company " + number +
                             "\r\nTEL;TYPE=HOME:+44 " + number + "\r\nTEL;TYPE=WORK:+49 " + number + "\r\nEMAIL:a" +
                             number + "@example.org\r\nADR;TYPE=HOME:;;1 Main Road;Exeter;;;United Kingdom\r\n" +
                             "ADR;TYPE=WORK:;;2 Main Road;Exeter\\, Devon;;;United Kingdom\r\nBDAY:1990-03-02\r\n" +
                             "IMPP:xmpp:ann\r\nCATEGORIES:a,b\r\nNOTE:x\r\n" +
                             (i % 5 == 0 ? "X-ABShowAs:COMPANY\r\n" : "") + "END:VCARD\r\n";
    persons.append(ABPerson::initWithVCardRepresentation(KRText(std::string_view(card))).get());
  }
}

/// The groups of persons whose notes are the letters of a text.
std::vector<std::vector<uint32_t>> groupsByNote(const std::string& letters) {
  KRPersonList persons;
  for (const char letter : letters) {
    std::string card = "BEGIN:VCARD\r\nVERSION:3.0\r\nNOTE:-\r\nEND:VCARD\r\n";
    card[card.find('-')] = letter;
    persons.append(ABPerson::initWithVCardRepresentation(KRText(std::string_view(card))).get());
  }
  std::vector<double> reports;
  const KRPersonGroups groups = krGroupPersons(
      persons, [&](double percent) { reports.push_back(percent); },
      [](const IKRPerson& person, KRHold& hold, std::string& key) {
        key += person.readText(KROrdinal::Note, hold).view();
        return key.back() != '-';
      });
  EXPECT_EQ(reports.size(), letters.size());
  for (size_t i = 0; i < reports.size(); ++i) EXPECT_EQ(reports[i], krPercent(i, letters.size()));
  std::vector<std::vector<uint32_t>> all;
  for (uint32_t key = 0; key < groups.keyCount(); ++key) all.push_back(places(groups, key));
  return all;
}

TEST(KRPersonGroups, GathersPersonsWhereverTheyStand) {
  std::mt19937 random(2);
  // Persons are taken some dozens at a time: around the borders of what is taken together nothing may differ.
  for (const size_t count : {0U, 1U, 2U, 63U, 64U, 65U, 127U, 128U, 129U, 500U}) {
    std::string letters;
    for (size_t i = 0; i < count; ++i) letters += "-abcdefghijklmnopqrstuvwxyz"[random() % 27];
    std::vector<std::vector<uint32_t>> expected;
    std::map<char, size_t> known;
    for (uint32_t i = 0; i < count; ++i) {
      if (letters[i] == '-') continue;
      const auto [key, isNew] = known.try_emplace(letters[i], expected.size());
      if (isNew) expected.emplace_back();
      expected[key->second].push_back(i);
    }
    EXPECT_EQ(groupsByNote(letters), expected) << count;
  }
}

TEST(KRPersonGroupsMemory, CostsNoAllocationForAContactWithoutAFinding) {
  constexpr int kContacts = 3000;
  KRPersonList persons;
  addDistinctCards(kContacts, persons);
  for (const KRString& issueName :
       {KRIssueDuplicateNames, KRIssueDuplicateInfo, KRIssueDuplicatePhoneNumber, KRIssueDuplicateEmailAddress,
        KRIssueDuplicateAddress, KRIssuePhonesDuplicatedAmongMultipleContacts,
        KRIssueEmailsDuplicatedAmongMultipleContacts}) {
    const auto issue = krMake<KRIssue>(issueName, ""_kr);
    const auto detector = KRIssueFind::issueFindWithIssue(issue.get());
    const KRProgress ignored([](double) {});
    const size_t before = allocations;
    const auto context = detector->find(&persons, ignored);
    const size_t made = allocations - before;
    EXPECT_FALSE(context) << issueName.view();
    EXPECT_LT(made, 200U) << issueName.view();
  }
}

}  // namespace
