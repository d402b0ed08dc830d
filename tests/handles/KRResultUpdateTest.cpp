// What fixes leave of a find result, against the rules written down once more as plainly as can be: without any index
// that is kept, on numbers in place of objects.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include "contacts/KRAddressBookManager.h"
#include "contacts/KRTrashAddressBook.h"
#include "contacts/model/KRSaveScope.h"
#include "tests/support/KRFindings.h"

namespace {

using Numbers = std::vector<size_t>;

bool holds(const Numbers& numbers, size_t number) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

/// Persons, findings and contexts by number.
struct PlainResult {
  struct Finding {
    Numbers persons;
    KRString handle;
    size_t context;
  };
  std::vector<Finding> findings;
  /// The findings of each context, and the contexts that are left.
  std::vector<Numbers> contexts;
  Numbers listed;
  /// The findings of each person, in the order in which they were added.
  std::map<size_t, Numbers> index;
  /// The persons that the book has, and those in the trash.
  Numbers book;
  Numbers trash;

  void unindex(size_t finding, size_t person) {
    if (index.count(person) == 0) return;
    std::erase(index[person], finding);
    if (index[person].empty()) index.erase(person);
  }

  void remove(size_t finding) {
    for (const size_t person : findings[finding].persons) unindex(finding, person);
    Numbers& context = contexts[findings[finding].context];
    std::erase(context, finding);
    if (context.empty()) std::erase(listed, findings[finding].context);
  }

  Numbers deletedBy(size_t finding) const {
    const Finding& fixed = findings[finding];
    if (fixed.handle == KRHandleNameDeleteContact) return {fixed.persons.front()};
    if (fixed.handle == KRHandleNameDeleteDuplicatePerson) return {fixed.persons.begin() + 1, fixed.persons.end()};
    if (fixed.handle == KRHandleNameMergeContact) return fixed.persons;
    return {};
  }

  void fix(size_t finding) {
    for (const size_t person : deletedBy(finding)) {
      trash.push_back(person);
      std::erase(book, person);
    }
    for (const size_t person : deletedBy(finding)) {
      const Numbers others = index.count(person) != 0 ? index[person] : Numbers();
      for (const size_t other : others) {
        if (other == finding || !holds(findings[other].persons, person)) continue;
        if (findings[other].persons.size() < 3) {
          remove(other);
        } else {
          std::erase(findings[other].persons, person);
        }
        unindex(other, person);
      }
    }
    remove(finding);
  }
};

/// A random book with a random result, and the same in plain.
class KRResultUpdateTest : public testing::Test {
 protected:
  void make(std::mt19937& random, bool hasLongGroups) {
    book_ = krMake<KRAddressBook>("random"_kr, "Random"_kr);
    KRAddressBookManager::ShareAddressBookManager()->addAddressBook(book_.get());
    trash_->clear();
    persons_.clear();
    findings_.clear();
    contexts_.clear();
    plain_ = {};
    result_ = krMake<KRIssueFindResult>();
    result_->setAddressBook(book_);
    for (size_t i = 1 + random() % (hasLongGroups ? 120 : 12); i != 0; --i) {
      plain_.book.push_back(persons_.size());
      // Persons without a name: sorting leaves the findings in the order in which they were made.
      persons_.push_back(book_->newPerson());
    }
    for (size_t i = 1 + random() % 5; i != 0; --i) addContext(random, hasLongGroups);
  }

  void expectTheSame() {
    ASSERT_EQ(numbers(krPlain(result_->contexts()), contexts_), plain_.listed);
    for (const size_t context : plain_.listed) {
      ASSERT_EQ(numbers(krPlain(contexts_[context]->objects()), findings_), plain_.contexts[context]);
      for (const size_t finding : plain_.contexts[context]) {
        ASSERT_EQ(numbers(krPlain(findings_[finding]->persons()), persons_), plain_.findings[finding].persons);
        ASSERT_EQ(findings_[finding]->context(), contexts_[context]);
      }
    }
    for (size_t person = 0; person < persons_.size(); ++person) {
      const auto* indexed = result_->issueObjectByPerson(KRIssueHandle::personAd(persons_[person].get()));
      const auto expected = plain_.index.find(person);
      ASSERT_EQ(indexed == nullptr, expected == plain_.index.end()) << person;
      if (indexed != nullptr) ASSERT_EQ(numbers(krPlain(*indexed), findings_), expected->second);
    }
    // Merged persons stand behind those that the test has made.
    Numbers inBook;
    for (IKRPerson& person : book_->allPersons()) {
      const auto known = std::find(persons_.begin(), persons_.end(), KRRef<IKRPerson>(&person));
      if (known != persons_.end()) inBook.push_back(static_cast<size_t>(known - persons_.begin()));
    }
    ASSERT_EQ(inBook, plain_.book);
    ASSERT_EQ(trash_->allPersonsCount(), plain_.trash.size());
    for (size_t i = 0; i < plain_.trash.size(); ++i) {
      ASSERT_EQ(trash_->allPersons().at(i)->ID(), persons_[plain_.trash[i]]->ID());
    }
  }

  void fixUntilNoneIsLeft(std::mt19937& random) {
    while (!plain_.listed.empty()) {
      const size_t context = plain_.listed[random() % plain_.listed.size()];
      const Numbers& open = plain_.contexts[context];
      const size_t finding = open[random() % open.size()];
      findings_[finding]->fix();
      plain_.fix(finding);
      ASSERT_NO_FATAL_FAILURE(expectTheSame());
    }
    ASSERT_TRUE(plain_.index.empty());
  }

 private:
  void addContext(std::mt19937& random, bool hasLongGroups) {
    static const KRString kHandles[] = {KRHandleNameIgnore,
                                        KRHandleNameEdit,
                                        KRHandleNameDeleteProperty,
                                        KRHandleNameDeleteContact,
                                        KRHandleNameDeleteContact,
                                        KRHandleNameDeleteDuplicatePerson,
                                        KRHandleNameDeleteDuplicatePerson,
                                        KRHandleNameMergeContact,
                                        "unknown"_kr};
    const size_t number = contexts_.size();
    contexts_.push_back(krContext({}));
    plain_.contexts.emplace_back();
    plain_.listed.push_back(number);
    for (size_t i = 1 + random() % 8; i != 0; --i) {
      PlainResult::Finding plain{{}, kHandles[random() % std::size(kHandles)], number};
      const size_t most = hasLongGroups && random() % 2 == 0 ? 150 : 5;
      std::vector<KRRef<IKRPerson>> listed;
      for (size_t j = 1 + random() % most; j != 0; --j) {
        const size_t person = random() % persons_.size();
        // One that stands three times could leave a finding without persons, which no handle takes.
        if (std::count(plain.persons.begin(), plain.persons.end(), person) == 2) continue;
        plain.persons.push_back(person);
        listed.push_back(persons_[person]);
      }
      findings_.push_back(krFinding(listed));
      findings_.back()->setHandle(KRIssueHandle::issueHandleWithName(plain.handle));
      contexts_.back()->addIssueObject(findings_.back().get());
      plain_.contexts.back().push_back(plain_.findings.size());
      for (const size_t person : plain.persons) {
        Numbers& indexed = plain_.index[person];
        if (!holds(indexed, plain_.findings.size())) indexed.push_back(plain_.findings.size());
      }
      plain_.findings.push_back(plain);
    }
    result_->addContext(contexts_.back().get());
  }

  template <class T>
  static Numbers numbers(const std::vector<T*>& objects, const std::vector<KRRef<T>>& all) {
    Numbers found;
    for (const T* object : objects) {
      const auto place = std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.get() == object; });
      found.push_back(static_cast<size_t>(place - all.begin()));
    }
    return found;
  }

  // Merges save; nothing of it is to reach the disk.
  const KRSaveScope unwritten_;
  KRTrashAddressBook* const trash_ = KRTrashAddressBook::ShareTrashAddressBook();
  KRRef<KRAddressBook> book_;
  KRRef<KRIssueFindResult> result_;
  std::vector<KRRef<IKRPerson>> persons_;
  std::vector<KRRef<KRIssueObject>> findings_;
  std::vector<KRRef<KRIssueContext>> contexts_;
  PlainResult plain_;
};

TEST_F(KRResultUpdateTest, RandomFixesLeaveWhatTheRulesSay) {
  std::mt19937 random(20240719);
  for (int round = 0; round < 400; ++round) {
    make(random, false);
    ASSERT_NO_FATAL_FAILURE(expectTheSame()) << round;
    ASSERT_NO_FATAL_FAILURE(fixUntilNoneIsLeft(random)) << round;
  }
}

TEST_F(KRResultUpdateTest, SoDoThoseOfLongGroups) {
  std::mt19937 random(20240720);
  for (int round = 0; round < 40; ++round) {
    make(random, true);
    ASSERT_NO_FATAL_FAILURE(expectTheSame()) << round;
    ASSERT_NO_FATAL_FAILURE(fixUntilNoneIsLeft(random)) << round;
  }
}

}  // namespace
