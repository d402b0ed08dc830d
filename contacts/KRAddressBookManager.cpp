#include "contacts/KRAddressBookManager.h"

#include "contacts/KRTrashAddressBook.h"
#include "contacts/stores/KRMacAddressBook.h"
#include "contacts/undo/KRUndoRecorder.h"
#include "platform/KRMainQueue.h"
#include "platform/KRPreferences.h"
#include "platform/KRThread.h"

namespace {

/// The share of the adaptor in the progress: the number of single precision, not the double next to 0.97.
double adaptorShare(double percent) {
  return percent * static_cast<double>(0.97F);
}

}  // namespace

KRAddressBookManager* KRAddressBookManager::ShareAddressBookManager() {
  static auto* const manager = krMake<KRAddressBookManager>().detach();
  return manager;
}

// Loading.

void KRAddressBookManager::report(int flag, double percent) const {
  if (const KRFlagProgress progress = progressBlock_.get()) progress(flag, percent);
}

void KRAddressBookManager::loadWithProgressBlock(KRFlagProgress progress) {
  progressBlock_.set(std::move(progress));
  {
    const std::lock_guard lock(loadLock_);
    ++runningLoads_;
  }
  if (!krDetach(KRRef<const KRObject>(this), [this] { runLoad(); })) runLoad();
}

void KRAddressBookManager::runLoad() {
  loadThreed();
  const std::lock_guard lock(loadLock_);
  --runningLoads_;
  loadEnded_.notify_all();
}

void KRAddressBookManager::waitUntilLoaded() const {
  std::unique_lock lock(loadLock_);
  loadEnded_.wait(lock, [this] { return runningLoads_ == 0; });
}

void KRAddressBookManager::loadThreed() {
  const KRProgress adaptor = [self = KRRef<KRAddressBookManager>(this)](double percent) {
    KRMainQueue::shared().post([self, percent] { self->report(0, adaptorShare(percent)); });
  };
  for (const auto& book : KRMacAddressBook::addressBookArrayWithProgressBlock(adaptor)) addAddressBook(book.get());
  addTrash();
  resetAddressBook();
}

void KRAddressBookManager::addTrash() {
  report(0, 99.0);
  KRAddressBook* trash = KRTrashAddressBook::ShareTrashAddressBook();
  report(0, 100.0);
  addAddressBook(trash);
  report(1, 100.0);
}

void KRAddressBookManager::reloadWithProgressBlock(const KRFlagProgress&) {}

void KRAddressBookManager::reloadThreed() {
  addressBookArray_.removeAll();
  addressBookDic_.clear();
  KRMacAddressBook::resetGAddressArray([this](double percent) {
    const KRFlagProgress progress = progressBlock_.get();
    if (!progress) KRFatal("a reload of the address books requires the progress callback of an earlier load");
    progress(0, adaptorShare(percent));
  });
  for (const auto& book : KRMacAddressBook::addressBookArray()) addAddressBook(book.get());
  addTrash();
}

// The default book.

KRAddressBook* KRAddressBookManager::defaultAddressBook() {
  const KRRef<KRPreferences> preferences = KRPreferences::standard();
  const KRString ID = preferences->value(KRDefaultAddressBookIDKey).text();
  if (!ID.isNothing()) {
    if (KRAddressBook* book = addressBookByID(ID)) return book;
    const KRUndoRecorder::Pause pause;
    preferences->remove(KRDefaultAddressBookIDKey);
    // Nobody is told when that fails: the preference is then dropped again by the next call.
    static_cast<void>(preferences->flush());
  }
  return addressBookArray_.first();
}

void KRAddressBookManager::setDefaultAddressBook(KRAddressBook* book) {
  const KRString ID = book != nullptr ? book->ID() : KRString();
  if (ID.isNothing()) return;
  KRPreferences::standard()->setValue(ID, KRDefaultAddressBookIDKey);
  resetAddressBook();
}

void KRAddressBookManager::resetAddressBook() {
  const KRRef<KRAddressBook> book(defaultAddressBook());
  if (addressBookArray_.indexOf(book.get()) == 0) return;
  addressBookArray_.remove(book.get());
  addressBookArray_.insert(book.get(), 0);
}

// The list.

KRAddressBook* KRAddressBookManager::addressBookAtIndex(size_t index) const {
  return index < addressBookArray_.count() ? addressBookArray_.at(index) : nullptr;
}

KRAddressBook* KRAddressBookManager::addressBookByID(const KRString& ID) const {
  const auto found = addressBookDic_.find(ID);
  return found != addressBookDic_.end() ? found->second.get() : nullptr;
}

void KRAddressBookManager::addAddressBook(KRAddressBook* book) {
  if (book == nullptr) return;
  addressBookArray_.append(book);
  if (const KRString ID = book->ID(); !ID.isNothing()) addressBookDic_.insert_or_assign(ID, KRRef<KRAddressBook>(book));
}

void KRAddressBookManager::abckABDatabaseChangedExternallyNotification(const KRValueMap* userInfo) const {
  if (userInfo == nullptr || userInfo->find("ABAccountsChanged") == nullptr) return;
  static_cast<void>(reloadDelegate());
}
