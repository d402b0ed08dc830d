#include "contacts/KRAddressBookManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "contacts/KRTrashAddressBook.h"
#include "platform/KRMainQueue.h"
#include "tests/contacts/KRListedBooks.h"
#include "tests/support/KRPrivatePreferences.h"

namespace {

using testing::ElementsAre;

struct Call {
  int flag;
  double percent;
  std::thread::id thread;
};

class KRAddressBookManagerTest : public testing::Test {
 protected:
  KRAddressBookManagerTest() { KRMainQueue::shared().drain(); }

  std::vector<std::string> IDs() const {
    std::vector<std::string> all;
    for (const KRAddressBook& book : manager_->addressBookArray()) all.emplace_back(book.ID().view());
    return all;
  }
  KRFlagProgress recording() {
    return [this](int flag, double percent) {
      const std::lock_guard lock(lock_);
      calls_.push_back({flag, percent, std::this_thread::get_id()});
    };
  }
  void load(KRFlagProgress progress = {}) {
    manager_->loadWithProgressBlock(std::move(progress));
    manager_->waitUntilLoaded();
  }
  void add(std::initializer_list<KRString> IDs) {
    for (const KRString& ID : IDs) manager_->addAddressBook(krMake<KRAddressBook>(ID, ID).get());
  }
  std::vector<double> percents() const {
    std::vector<double> all;
    for (const Call& call : calls_) all.push_back(call.percent);
    return all;
  }

  KRPrivatePreferences preferences_;
  KRListedBooks listed_{{KRListedBooks::book("a"_kr), KRListedBooks::book("b"_kr)}};
  KRRef<KRAddressBookManager> manager_ = krMake<KRAddressBookManager>();
  std::mutex lock_;
  std::vector<Call> calls_;
};

const double kShare = static_cast<double>(0.97F);

TEST_F(KRAddressBookManagerTest, StartsEmptyAndThereIsOneOfTheProcess) {
  EXPECT_EQ(manager_->addressBookCount(), 0U);
  EXPECT_EQ(manager_->addressBookAtIndex(0), nullptr);
  EXPECT_EQ(KRAddressBookManager::ShareAddressBookManager(), KRAddressBookManager::ShareAddressBookManager());
  EXPECT_EQ(KRAddressBookNeedReloadNotification, "KRAddressBookNeedReloadNotification"_kr);
}

TEST_F(KRAddressBookManagerTest, ALoadListsTheBooksAndThenTheTrash) {
  load();
  EXPECT_THAT(IDs(), ElementsAre("a", "b", "trash_addressbook"));
  EXPECT_EQ(manager_->addressBookByID("trash_addressbook"_kr), KRTrashAddressBook::ShareTrashAddressBook());
  EXPECT_EQ(manager_->addressBookByID("b"_kr), manager_->addressBookAtIndex(1));
  EXPECT_EQ(manager_->addressBookAtIndex(3), nullptr);
}

TEST_F(KRAddressBookManagerTest, ALoadMovesTheDefaultBookToTheFront) {
  KRPreferences::standard()->setValue("trash_addressbook"_kr, "KR_Default_AddressBookID");
  load();
  EXPECT_THAT(IDs(), ElementsAre("trash_addressbook", "a", "b"));
}

TEST_F(KRAddressBookManagerTest, TheAdaptorsProgressComesThroughTheMainQueueAndTheRestOnTheLoadingThread) {
  load(recording());
  ASSERT_EQ(calls_.size(), 3U);
  EXPECT_THAT(percents(), ElementsAre(99.0, 100.0, 100.0));
  EXPECT_EQ(calls_[0].flag, 0);
  EXPECT_EQ(calls_[1].flag, 0);
  EXPECT_EQ(calls_[2].flag, 1);
  for (const Call& call : calls_) EXPECT_NE(call.thread, std::this_thread::get_id());

  calls_.clear();
  KRMainQueue::shared().drain();
  EXPECT_THAT(percents(), ElementsAre(0.0, 50.0 * kShare, 100.0 * kShare));
  EXPECT_NE(100.0 * kShare, 97.0);
  for (const Call& call : calls_) {
    EXPECT_EQ(call.flag, 0);
    EXPECT_EQ(call.thread, std::this_thread::get_id());
  }
}

TEST_F(KRAddressBookManagerTest, ProgressThatComesWhenTheCallbackIsGoneIsDropped) {
  load(recording());
  calls_.clear();
  load();
  KRMainQueue::shared().drain();
  EXPECT_TRUE(calls_.empty());
}

TEST_F(KRAddressBookManagerTest, AtTheLastCallTheTrashIsInTheListAndTheDefaultBookNotYetInFront) {
  KRPreferences::standard()->setValue("b"_kr, "KR_Default_AddressBookID");
  std::vector<std::string> before;
  std::vector<std::string> at;
  load([&](int flag, double percent) {
    if (flag == 0 && percent == 100.0) before = IDs();
    if (flag == 1) at = IDs();
  });
  EXPECT_THAT(before, ElementsAre("a", "b"));
  EXPECT_THAT(at, ElementsAre("a", "b", "trash_addressbook"));
  EXPECT_THAT(IDs(), ElementsAre("b", "a", "trash_addressbook"));
}

TEST_F(KRAddressBookManagerTest, ASecondLoadAppendsTheBooksAgain) {
  load();
  KRAddressBook* former = manager_->addressBookByID("b"_kr);
  load();
  EXPECT_THAT(IDs(), ElementsAre("a", "b", "trash_addressbook", "a", "b", "trash_addressbook"));
  EXPECT_NE(manager_->addressBookByID("b"_kr), former);
  EXPECT_EQ(manager_->addressBookByID("b"_kr), manager_->addressBookAtIndex(4));
}

TEST_F(KRAddressBookManagerTest, ABookThatCannotBeOpenedIsListedWithTheOthers) {
  listed_->given.insert(listed_->given.begin() + 1, KRListedBooks::broken("c"_kr));
  load();
  EXPECT_THAT(IDs(), ElementsAre("a", "c", "b", "trash_addressbook"));
  KRAddressBook* broken = manager_->addressBookByID("c"_kr);
  EXPECT_EQ(broken->allPersonsCount(), 0U);
  ASSERT_FALSE(broken->load());
  EXPECT_EQ(broken->load().error().sentence, "the library is damaged");
}

TEST_F(KRAddressBookManagerTest, AManagerThatNobodyHoldsStillEndsItsLoad) {
  struct Ended {
    std::mutex lock;
    std::condition_variable told;
    bool is = false;
  };
  const auto ended = std::make_shared<Ended>();
  krMake<KRAddressBookManager>()->loadWithProgressBlock([ended](int flag, double) {
    const std::lock_guard lock(ended->lock);
    ended->is = ended->is || flag == 1;
    ended->told.notify_all();
  });
  std::unique_lock lock(ended->lock);
  ended->told.wait(lock, [&] { return ended->is; });
}

// Reload.

TEST_F(KRAddressBookManagerTest, TheReloadThatHostsCallDoesNothing) {
  add({"x"_kr});
  manager_->reloadWithProgressBlock(recording());
  KRMainQueue::shared().drain();
  EXPECT_THAT(IDs(), ElementsAre("x"));
  EXPECT_TRUE(calls_.empty());
}

TEST_F(KRAddressBookManagerTest, AReloadBuildsTheListAnewOnThisThreadAndLeavesTheDefaultBookInItsPlace) {
  load(recording());
  KRMainQueue::shared().drain();
  KRPreferences::standard()->setValue("b"_kr, "KR_Default_AddressBookID");
  listed_->given = {KRListedBooks::book("n"_kr), KRListedBooks::book("b"_kr)};
  calls_.clear();
  manager_->reloadThreed();
  EXPECT_THAT(IDs(), ElementsAre("n", "b", "trash_addressbook"));
  EXPECT_EQ(manager_->addressBookByID("a"_kr), nullptr);
  EXPECT_THAT(percents(), ElementsAre(0.0, 50.0 * kShare, 100.0 * kShare, 99.0, 100.0, 100.0));
  EXPECT_EQ(calls_.back().flag, 1);
  for (const Call& call : calls_) EXPECT_EQ(call.thread, std::this_thread::get_id());
  EXPECT_EQ(KRMainQueue::shared().drain(), 0U);
}

TEST_F(KRAddressBookManagerTest, AReloadWithoutACallbackOfAnEarlierLoadIsAProgrammingError) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(manager_->reloadThreed(), "a reload of the address books requires the progress callback");
}

// The default book.

TEST_F(KRAddressBookManagerTest, WithoutAPreferenceTheFirstBookIsTheDefault) {
  add({"a"_kr, "b"_kr});
  EXPECT_EQ(manager_->defaultAddressBook()->ID(), "a"_kr);
  EXPECT_EQ(preferences_->writes(), 0);
}

TEST_F(KRAddressBookManagerTest, ADefaultThatDisappearedIsForgottenAndWrittenOut) {
  add({"a"_kr, "b"_kr});
  KRPreferences::standard()->setValue("gone"_kr, "KR_Default_AddressBookID");
  EXPECT_EQ(manager_->defaultAddressBook()->ID(), "a"_kr);
  EXPECT_TRUE(KRPreferences::standard()->value("KR_Default_AddressBookID").isNothing());
  EXPECT_EQ(preferences_->flushes(), 1);
  manager_->defaultAddressBook();
  EXPECT_EQ(preferences_->flushes(), 1);
}

TEST_F(KRAddressBookManagerTest, ANewDefaultMovesToTheFrontAndTheOthersKeepTheirOrder) {
  add({"a"_kr, "b"_kr, "c"_kr, "d"_kr});
  manager_->setDefaultAddressBook(manager_->addressBookAtIndex(2));
  EXPECT_THAT(IDs(), ElementsAre("c", "a", "b", "d"));
  EXPECT_EQ(KRPreferences::standard()->value("KR_Default_AddressBookID").text(), "c"_kr);
  EXPECT_EQ(preferences_->flushes(), 0);
  EXPECT_EQ(manager_->defaultAddressBook()->ID(), "c"_kr);
  manager_->setDefaultAddressBook(manager_->addressBookAtIndex(0));
  EXPECT_THAT(IDs(), ElementsAre("c", "a", "b", "d"));
}

TEST_F(KRAddressBookManagerTest, ABookWithoutIdentifierCannotBecomeTheDefault) {
  add({"a"_kr});
  const auto nameless = krMake<KRAddressBook>(KRString(), "Nameless"_kr);
  manager_->addAddressBook(nameless.get());
  manager_->setDefaultAddressBook(nameless.get());
  manager_->setDefaultAddressBook(nullptr);
  EXPECT_EQ(manager_->defaultAddressBook()->ID(), "a"_kr);
  EXPECT_EQ(manager_->addressBookCount(), 2U);
  EXPECT_EQ(preferences_->writes(), 0);
}

TEST_F(KRAddressBookManagerTest, ADefaultThatIsNotInTheListIsInsertedInFront) {
  add({"a"_kr, "b"_kr});
  const KRRef<KRAddressBook> b(manager_->addressBookByID("b"_kr));
  manager_->addressBookArray().remove(b.get());
  manager_->setDefaultAddressBook(b.get());
  EXPECT_THAT(IDs(), ElementsAre("b", "a"));
}

TEST_F(KRAddressBookManagerTest, WithoutBooksAskingForTheDefaultIsAProgrammingError) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(manager_->defaultAddressBook(), "");
  EXPECT_DEATH(manager_->resetAddressBook(), "");
}

// Look-ups.

TEST_F(KRAddressBookManagerTest, FindsBooksByPlaceAndIdentifierAndNothingOtherwise) {
  add({"a"_kr, "b"_kr});
  EXPECT_EQ(manager_->addressBookAtIndex(1)->ID(), "b"_kr);
  EXPECT_EQ(manager_->addressBookAtIndex(2), nullptr);
  EXPECT_EQ(manager_->addressBookAtIndex(static_cast<size_t>(-1)), nullptr);
  EXPECT_EQ(manager_->addressBookByID("A"_kr), nullptr);
  EXPECT_EQ(manager_->addressBookByID({}), nullptr);
}

TEST_F(KRAddressBookManagerTest, OfTwoBooksWithOneIdentifierBothAreListedAndTheLaterIsFound) {
  const auto first = krMake<KRAddressBook>("same"_kr, "First"_kr);
  const auto second = krMake<KRAddressBook>("same"_kr, "Second"_kr);
  manager_->addAddressBook(first.get());
  manager_->addAddressBook(second.get());
  manager_->addAddressBook(nullptr);
  EXPECT_EQ(manager_->addressBookCount(), 2U);
  EXPECT_EQ(manager_->addressBookByID("same"_kr), second.get());
}

// The delegate.

class HostDelegate : public KRAddressBookReloadDelegate {};

TEST_F(KRAddressBookManagerTest, TheDelegateIsHeldUntilItIsReplaced) {
  EXPECT_EQ(manager_->reloadDelegate(), nullptr);
  auto delegate = std::make_shared<HostDelegate>();
  const std::weak_ptr<HostDelegate> watched = delegate;
  manager_->setReloadDelegate(delegate);
  EXPECT_EQ(manager_->reloadDelegate(), delegate);
  delegate.reset();
  EXPECT_FALSE(watched.expired());
  manager_->setReloadDelegate(nullptr);
  EXPECT_TRUE(watched.expired());
}

TEST_F(KRAddressBookManagerTest, ANotificationFromOutsideChangesNothing) {
  add({"a"_kr});
  manager_->setReloadDelegate(std::make_shared<HostDelegate>());
  KRValueMap information;
  manager_->abckABDatabaseChangedExternallyNotification(nullptr);
  manager_->abckABDatabaseChangedExternallyNotification(&information);
  information.set("ABAccountsChanged"_kr, KRValue::truth(true));
  manager_->abckABDatabaseChangedExternallyNotification(&information);
  EXPECT_THAT(IDs(), ElementsAre("a"));
  EXPECT_NE(manager_->reloadDelegate(), nullptr);
}

}  // namespace
