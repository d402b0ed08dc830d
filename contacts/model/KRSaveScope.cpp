#include "contacts/model/KRSaveScope.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace {

struct OpenScopes {
  std::mutex lock;
  KRSaveScope* innermost = nullptr;
};

OpenScopes& openScopes() {
  static auto* const scopes = new OpenScopes;
  return *scopes;
}

}  // namespace

KRSaveScope::KRSaveScope() {
  OpenScopes& open = openScopes();
  const std::lock_guard lock(open.lock);
  outer_ = std::exchange(open.innermost, this);
}

KRSaveScope::~KRSaveScope() {
  OpenScopes& open = openScopes();
  const std::lock_guard lock(open.lock);
  // Not always the innermost: a host may end its scopes in any order.
  KRSaveScope** link = &open.innermost;
  while (*link != this) link = &(*link)->outer_;
  *link = outer_;
}

void KRSaveScope::add(KRAddressBook* book) {
  const bool isKnown =
      std::any_of(books_.begin(), books_.end(), [&](const KRRef<KRAddressBook>& each) { return each.get() == book; });
  if (!isKnown) books_.emplace_back(book);
}

bool KRSaveScope::gather(KRAddressBook* book) {
  OpenScopes& open = openScopes();
  const std::lock_guard lock(open.lock);
  if (open.innermost == nullptr) return false;
  open.innermost->add(book);
  return true;
}

std::vector<KRRef<KRAddressBook>> KRSaveScope::gathered() const {
  const std::lock_guard lock(openScopes().lock);
  return books_;
}

bool KRSaveScope::write(const KRRef<KRAddressBook>& book) {
  const KRResult<void> saved = book->saveNow();
  if (saved) return true;
  failures_.push_back({book, saved.error()});
  const std::lock_guard lock(openScopes().lock);
  add(book.get());
  return false;
}

void KRSaveScope::takeBack(KRAddressBook& keeper, KRAddressBook& failed) {
  if (!keeper.takeBack(failed)) return;
  const std::lock_guard lock(openScopes().lock);
  add(&keeper);
}

KRResult<void> KRSaveScope::commit() {
  failures_.clear();
  std::vector<KRRef<KRAddressBook>> books;
  {
    const std::lock_guard lock(openScopes().lock);
    books.swap(books_);
    if (outer_ != nullptr) {
      for (const auto& book : books) outer_->add(book.get());
      return {};
    }
  }
  const auto others = std::stable_partition(books.begin(), books.end(),
                                            [](const KRRef<KRAddressBook>& book) { return book->isSavedFirst(); });
  for (auto each = books.begin(); each != books.end(); ++each) {
    if (each == others && !failures_.empty()) {
      // What left these books is not safe yet.
      const std::lock_guard lock(openScopes().lock);
      for (; each != books.end(); ++each) add(each->get());
      break;
    }
    if (write(*each) || each < others) continue;
    for (auto keeper = books.begin(); keeper != others; ++keeper) takeBack(**keeper, **each);
  }
  if (failures_.empty()) return {};
  return failures_.front().error;
}
