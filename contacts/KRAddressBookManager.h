#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "contacts/KRAddressBookReloadDelegate.h"
#include "contacts/model/KRAddressBook.h"
#include "platform/KRAtomic.h"
#include "platform/KRList.h"
#include "platform/KRProgress.h"
#include "platform/KRValue.h"

/// The name of a notification between parts of a host; the library neither posts nor observes it.
inline constexpr KRString KRAddressBookNeedReloadNotification = "KRAddressBookNeedReloadNotification"_kr;
/// The preference that holds the identifier of the default book.
inline constexpr KRString KRDefaultAddressBookIDKey = "KR_Default_AddressBookID"_kr;

/// The list of the address books that the user can scan: those that the adaptor `KRMacAddressBook` lists, then the
/// trash; after a load with the user's default book in front.
///
/// Progress callbacks take a finished flag, 1 on the last call only, and a percentage from 0 to 100. They are kept
/// until another load replaces them.
///
/// Threads: a load runs on a thread of its own. The list is not locked: from the start of a load until
/// `waitUntilLoaded` returns, nobody else reads or changes it or starts a second load. `reloadDelegate` is atomic.
class KRAddressBookManager : public KRObject {
 public:
  /// The manager of the process, never destroyed.
  static KRAddressBookManager* ShareAddressBookManager();

  /// No books.
  KRAddressBookManager() = default;

  /// Keeps the callback, or none, and runs `loadThreed` on a new thread (written form: `loadWithProgressBlock:`). When
  /// the system gives no thread, it runs before this returns.
  void loadWithProgressBlock(KRFlagProgress progress);
  /// Returns when no load runs that `loadWithProgressBlock` started: the default book is in front then, which it is not
  /// yet at the last call of the callback. Not to be called from the callback.
  void waitUntilLoaded() const;
  /// The load itself, on this thread: appends the books of the adaptor, then the trash, and moves the default book to
  /// the front. What is in the list stays there, so that a second load appends the books again, on purpose. The
  /// adaptor's progress, scaled to 0 up to 97, comes through the main queue; 99, 100, and 100 with the flag come on
  /// this thread, the last one when the trash is in the list and the default book not yet in front. Hosts that show
  /// progress hand these over themselves.
  void loadThreed();
  /// Does nothing, and never calls the callback: kept so that hosts can call it (written form:
  /// `reloadWithProgressBlock:`).
  void reloadWithProgressBlock(const KRFlagProgress& progress);
  /// Builds the list anew on this thread, with the callback of an earlier load, which must be there (`KRFatal`). All
  /// progress comes on this thread, and the default book is not moved to the front; both differ from the load on
  /// purpose.
  void reloadThreed();

  /// Moves the default book to the front; inserts it there when it is not in the list.
  void resetAddressBook();
  /// The book that the user's preference names; a preference that names no book of the list is removed. Without one the
  /// first book; an empty list is a programming error then (`KRFatal`). Borrowed.
  KRAddressBook* defaultAddressBook();
  /// Makes a book the default and moves it to the front (written form: `setDefaultAddressBook:`). A book without
  /// identifier, or none, changes nothing.
  void setDefaultAddressBook(KRAddressBook* book);

  /// The live list, and its length.
  KRList<KRAddressBook>& addressBookArray() noexcept { return addressBookArray_; }
  size_t addressBookCount() const noexcept { return addressBookArray_.count(); }
  /// The book at that place, or nothing (written form: `addressBookAtIndex:`). Borrowed.
  KRAddressBook* addressBookAtIndex(size_t index) const;
  /// The book of that identifier that was added last, or nothing (written form: `addressBookByID:`). Borrowed.
  KRAddressBook* addressBookByID(const KRString& ID) const;
  /// Appends a book (written form: `addAddressBook:`). One with an identifier that is there already is the one found by
  /// it from then on; both stay in the list. Nothing is ignored.
  void addAddressBook(KRAddressBook* book);

  std::shared_ptr<KRAddressBookReloadDelegate> reloadDelegate() const { return reloadDelegate_.get(); }
  void setReloadDelegate(std::shared_ptr<KRAddressBookReloadDelegate> delegate) {
    reloadDelegate_.set(std::move(delegate));
  }

  /// For a host that observes changes of the books from outside: takes the notification's user information, or nothing
  /// (written form: `abckABDatabaseChangedExternallyNotification:`). It reads `reloadDelegate` when the entry
  /// "ABAccountsChanged" is there, and does no more, on purpose: what follows from a change is the host's to say.
  void abckABDatabaseChangedExternallyNotification(const KRValueMap* userInfo) const;

 private:
  /// Calls the callback if there is one.
  void report(int flag, double percent) const;
  void addTrash();
  void runLoad();

  KRList<KRAddressBook> addressBookArray_;
  std::unordered_map<KRString, KRRef<KRAddressBook>> addressBookDic_;
  KRAtomic<KRFlagProgress> progressBlock_;
  mutable std::mutex loadLock_;
  mutable std::condition_variable loadEnded_;
  size_t runningLoads_ = 0;
  KRAtomic<std::shared_ptr<KRAddressBookReloadDelegate>> reloadDelegate_;
};
