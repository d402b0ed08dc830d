#include "handles/KRMergeAccount.h"

#include <gmock/gmock.h>

#include "contacts/stores/KRStoredBook.h"
#include "tests/contacts/KRTrashSetting.h"
#include "tests/contacts/vcard/VCardSamples.h"
#include "tests/contacts/vcard/WrittenPersons.h"
#include "tests/support/KRBookMakers.h"
#include "tests/support/KRFindings.h"

namespace {

using testing::ElementsAre;
using Fate = KRMergedValue::Fate;

class KRMergeAccountTest : public KRTrashSetting {
 protected:
  KRMergeAccountTest() : book_(krLibraryBook(folder_)) {}

  KRStoredBook& book() { return dynamic_cast<KRStoredBook&>(*book_); }

  KRRef<ABPerson> add(const std::vector<std::string>& lines) {
    const auto person = ABPerson::initWithVCardRepresentation(KRText(std::string_view(krCard(lines))));
    book_->addPerson(person.get());
    return person;
  }

  /// What the merge of all persons of the book makes, "kept 0 Phone 1".
  std::vector<std::string> told() {
    std::vector<KRRef<IKRPerson>> persons;
    for (IKRPerson& person : book_->allPersons()) persons.emplace_back(&person);
    const auto result = krMake<KRIssueFindResult>();
    result->setAddressBook(book_);
    const auto finding = krFinding(persons);
    result->addContext(krContext({finding}, KRIssueDuplicateNames).get());
    merged_ = KRIssueHandle::issueHandleWithName(KRHandleNameMergeContact)->indirectFix(finding.get());
    account_ = krMergeAccount(KRPersonArray(persons), *merged_);
    std::vector<std::string> lines;
    for (const KRMergedValue& each : account_) {
      static constexpr const char* kFates[] = {"kept", "equal", "left"};
      std::string line = kFates[static_cast<size_t>(each.fate)] + (" " + std::to_string(each.person)) + " ";
      line += each.group ? "group" : each.property != nullptr ? std::string(each.property->displayName().view()) : "-";
      line += " " + std::string(each.value.description().view());
      if (each.keptLabel) line += " as " + std::string(each.keptLabel->name().view());
      lines.push_back(line);
    }
    return lines;
  }

  /// The values of one property in plain texts.
  static std::vector<std::string> texts(const IKRPerson& person, const KRProperty& property) {
    std::vector<std::string> all;
    const KRRef<KRStoredValue> stored = person.valueByProperty(&property);
    if (const auto* multiple = dynamic_cast<const KRMutableMultipleValue*>(stored.get())) {
      for (size_t i = 0; i < multiple->count(); ++i) {
        all.emplace_back(multiple->valueAtIndex(i)->value().description().view());
      }
    } else if (const auto* single = dynamic_cast<const KRMutableSingleValue*>(stored.get())) {
      const auto* tags = single->value().as<KRValueList>();
      if (tags == nullptr) all.emplace_back(single->value().description().view());
      if (tags != nullptr) {
        for (const KRValue& tag : tags->values()) all.emplace_back(tag.description().view());
      }
    }
    return all;
  }

  KRRef<KRAddressBook> book_;
  KRRef<IKRPerson> merged_;
  std::vector<KRMergedValue> account_;
};

TEST_F(KRMergeAccountTest, OfSingleValuesTheFirstIsKept) {
  add({"N:Barrow;Ann;;;", "NOTE:one", "ORG:Acme"});
  add({"N:Barrow;Ann;;;", "NOTE:two", "TITLE:boss"});
  add({"N:Barrow;Annie;;;", "NOTE:one"});
  const auto lines = told();
  const std::vector<KRString> names = {KRProPertyName, KRProPertyNote, KRProPertyCompany, KRProPertyJobTitle};
  std::vector<std::pair<size_t, Fate>> fates;
  for (const KRString& name : names) {
    for (const KRMergedValue& each : account_) {
      if (each.property != nullptr && each.property->name() == name) fates.emplace_back(each.person, each.fate);
    }
  }
  EXPECT_THAT(fates, ElementsAre(std::pair(size_t{0}, Fate::Kept), std::pair(size_t{1}, Fate::Equal),
                                 std::pair(size_t{2}, Fate::Left), std::pair(size_t{0}, Fate::Kept),
                                 std::pair(size_t{1}, Fate::Left), std::pair(size_t{2}, Fate::Equal),
                                 std::pair(size_t{0}, Fate::Kept), std::pair(size_t{1}, Fate::Kept)));
  EXPECT_EQ(lines.size(), fates.size());
}

TEST_F(KRMergeAccountTest, OfEqualEntriesTheFirstIsKeptAndTheOthersLabelIsTold) {
  add({"N:a", "TEL;TYPE=home:1", "TEL;TYPE=work:1"});
  add({"N:a", "TEL;TYPE=work:1", "TEL;TYPE=cell:2", "TEL;TYPE=home:1"});
  std::vector<std::pair<Fate, std::string>> phones;
  told();
  for (const KRMergedValue& each : account_) {
    if (each.property == nullptr || each.property->ordinal() != KROrdinal::Phone) continue;
    phones.emplace_back(each.fate, each.keptLabel ? std::string(each.keptLabel->name().view()) : "-");
  }
  ASSERT_EQ(phones.size(), 5U);
  EXPECT_EQ(phones[0], std::pair(Fate::Kept, std::string("-")));
  EXPECT_EQ(phones[1].first, Fate::Equal);
  EXPECT_NE(phones[1].second, "-");
  EXPECT_EQ(phones[2].first, Fate::Equal);
  EXPECT_EQ(phones[2].second, phones[1].second);
  EXPECT_EQ(phones[3], std::pair(Fate::Kept, std::string("-")));
  EXPECT_EQ(phones[4], std::pair(Fate::Equal, std::string("-")));
}

TEST_F(KRMergeAccountTest, TagsAreToldEachByItself) {
  add({"N:a", "CATEGORIES:x,y"});
  add({"N:a", "CATEGORIES:y,z"});
  std::vector<Fate> fates;
  told();
  for (const KRMergedValue& each : account_) {
    if (each.property != nullptr && each.property->ordinal() == KROrdinal::Tags) fates.push_back(each.fate);
  }
  EXPECT_THAT(fates, ElementsAre(Fate::Kept, Fate::Kept, Fate::Equal, Fate::Kept));
}

TEST_F(KRMergeAccountTest, LinesOfCardsAndGroupsAreTold) {
  const auto ann = add({"N:a", "X-SKILL:chess", "NOTE:one", "NOTE:two"});
  const auto bob = add({"N:a", "X-SKILL:chess", "X-SKILL:go", "NOTE:three", "NOTE:four"});
  const auto friends = book().addGroup("Friends"_kr);
  const auto club = book().addGroup("Club"_kr);
  book().setGroups(*ann, {friends});
  book().setGroups(*bob, {friends, club});
  const auto lines = told();
  const std::vector<std::string> expected = {"kept 0 - x-skill:chess",  "kept 0 - note:two",   "kept 0 group Friends",
                                             "equal 1 - x-skill:chess", "kept 1 - x-skill:go", "left 1 - note:four",
                                             "equal 1 group Friends",   "kept 1 group Club"};
  std::vector<std::string> others;
  for (const std::string& line : lines) {
    if (line.find(" - ") != std::string::npos || line.find(" group ") != std::string::npos) others.push_back(line);
  }
  EXPECT_EQ(others, expected);
  EXPECT_EQ(merged_->parentGroups().size(), 2U);
  // What is told as kept is what the store has after a save.
  ASSERT_TRUE(book_->saveNow());
  const auto again = krLibraryBook(folder_);
  const auto* saved = dynamic_cast<const ABPerson*>(again->allPersons().at(2));
  const std::string_view card = saved->card();
  for (const char* line : {"X-SKILL:chess", "X-SKILL:go", "NOTE:one", "NOTE:two"}) {
    EXPECT_NE(card.find(line), std::string_view::npos) << line << card;
  }
  EXPECT_EQ(card.find("four"), std::string_view::npos);
  EXPECT_EQ(saved->parentGroups().size(), 2U);
}

TEST_F(KRMergeAccountTest, PicturesToBeFetchedAreKeptBehindARealOne) {
  add({"N:a", "PHOTO;VALUE=uri:http://a.example/1"});
  add({"N:a", "PHOTO;ENCODING=b;TYPE=PNG:iVBORw0KGgo="});
  for (const std::string& line : told()) EXPECT_EQ(line.find("left"), std::string::npos) << line;
  ASSERT_TRUE(book_->saveNow());
  const auto again = krLibraryBook(folder_);
  const auto* saved = dynamic_cast<const ABPerson*>(again->allPersons().at(2));
  EXPECT_TRUE(saved->imageData());
  EXPECT_NE(saved->card().find("http://a.example/1"), std::string_view::npos);
}

TEST_F(KRMergeAccountTest, OfRandomPersonsEveryValueIsToldAndTheMergedOneHasWhatIsKept) {
  KRWrittenPersons random(7);
  for (int round = 0; round < 50; ++round) {
    book_ = krMake<KRAddressBook>("memory"_kr, "Memory"_kr);
    const size_t count = 2 + random.below(3);
    std::vector<KRRef<KRTempPerson>> sources;
    for (size_t i = 0; i < count; ++i) {
      sources.push_back(random.person());
      const auto person = book_->newPerson();
      for (const KRProperty* property : KRProperty::StandardPropertyArray()) {
        const auto& from = i != 0 && random.chance(3) ? sources[random.below(i)] : sources[i];
        if (const auto value = from->valueByProperty(property)) person->setValue(value, property);
      }
    }
    told();
    // Plainly: a value is where it is told to be.
    std::vector<std::vector<std::string>> ofMerged;
    for (const KRProperty* property : KRProperty::StandardPropertyArray())
      ofMerged.push_back(texts(*merged_, *property));
    std::vector<size_t> kept(kKROrdinalCount);
    for (const KRMergedValue& each : account_) {
      ASSERT_NE(each.property, nullptr);
      const auto place = static_cast<size_t>(each.property->ordinal());
      const std::string text(each.value.description().view());
      const bool isThere = std::count(ofMerged[place].begin(), ofMerged[place].end(), text) != 0;
      ASSERT_EQ(isThere, each.fate != Fate::Left) << each.property->name().view() << text;
      if (each.fate == Fate::Kept) ++kept[place];
    }
    for (size_t place = 0; place < kept.size(); ++place) ASSERT_EQ(kept[place], ofMerged[place].size()) << place;
  }
}

}  // namespace
