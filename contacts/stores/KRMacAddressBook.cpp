#include "contacts/stores/KRMacAddressBook.h"

#include <mutex>
#include <string>
#include <unordered_set>
#include <utility>

#include "contacts/stores/KRAddedBooks.h"
#include "contacts/stores/KRDesktopBooks.h"
#include "contacts/stores/KRSQLiteLibrary.h"
#include "contacts/stores/KRUnavailableBook.h"
#include "platform/KRHostInfo.h"

namespace {

using Providers = std::vector<std::shared_ptr<KRAddressBookProvider>>;

/// The books of the user's library, wherever it is when they are asked for.
class LibraryBooks : public KRAddressBookProvider {
 public:
  std::vector<KRBookSource> sources() override {
    const KRString path = KRMacAddressBook::libraryPath();
    return path.isNothing() ? std::vector<KRBookSource>() : KRSQLiteBookProvider(path).sources();
  }
};

struct State {
  std::mutex lock;
  Providers providers{std::make_shared<LibraryBooks>(), std::make_shared<KRDesktopBooks>(),
                      std::make_shared<KRAddedBooks>()};
  KRMacAddressBook::Books shared;
  /// Held while sources are asked, which happens for one caller at a time.
  std::mutex asking;
};

State& state() {
  static auto* const only = new State;
  return *only;
}

std::vector<KRBookSource> allSources() {
  Providers providers;
  {
    const std::lock_guard lock(state().lock);
    providers = state().providers;
  }
  std::vector<KRBookSource> all;
  // Hidden books are passed over like those that are known already.
  const KRStringList hidden = KRAddedBooks::hiddenIDs();
  std::unordered_set<KRString> known(hidden.begin(), hidden.end());
  const std::lock_guard lock(state().asking);
  for (const auto& provider : providers) {
    for (KRBookSource& source : provider->sources()) {
      if (source.ID.isNothing() || known.insert(source.ID).second) all.push_back(std::move(source));
    }
  }
  return all;
}

KRRef<KRAddressBook> opened(const KRBookSource& source) {
  if (!source.open) return krMake<KRUnavailableBook>(source, KRError{KRErrorCode::Failed, "nothing opens the book"});
  KRResult<KRRef<KRAddressBook>> book = source.open();
  if (!book) return krMake<KRUnavailableBook>(source, book.error());
  return *std::move(book);
}

}  // namespace

KRMacAddressBook::Books KRMacAddressBook::addressBookArrayWithProgressBlock(const KRProgress& progress) {
  const std::vector<KRBookSource> sources = allSources();
  Books books;
  books.reserve(sources.size());
  progress(0);
  for (size_t i = 0; i < sources.size(); ++i) {
    if (KRRef<KRAddressBook> book = opened(sources[i])) books.push_back(std::move(book));
    progress(krPercent(i + 1, sources.size()));
  }
  if (sources.empty()) progress(100);
  return books;
}

void KRMacAddressBook::resetGAddressArray(const KRProgress& progress) {
  // The old books go before the new ones come: a store may allow one holder only.
  Books former;
  {
    const std::lock_guard lock(state().lock);
    former.swap(state().shared);
  }
  former.clear();
  Books books = addressBookArrayWithProgressBlock(progress);
  const std::lock_guard lock(state().lock);
  state().shared.swap(books);
}

KRMacAddressBook::Books KRMacAddressBook::addressBookArray() {
  const std::lock_guard lock(state().lock);
  return state().shared;
}

KRString KRMacAddressBook::libraryPath() {
  const KRString folder = KRHostInfo::dataFolder();
  return folder.isNothing() ? KRString() : krConcat({folder, "/contacts.sqlite"});
}

void KRMacAddressBook::addProvider(std::shared_ptr<KRAddressBookProvider> provider) {
  if (!provider) return;
  const std::lock_guard lock(state().lock);
  state().providers.push_back(std::move(provider));
}

Providers KRMacAddressBook::setProviders(Providers providers) {
  std::erase(providers, nullptr);
  const std::lock_guard lock(state().lock);
  state().providers.swap(providers);
  return providers;
}
