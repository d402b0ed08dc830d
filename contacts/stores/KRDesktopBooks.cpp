#include "contacts/stores/KRDesktopBooks.h"

#include <memory>
#include <string>
#include <utility>

#include "contacts/stores/KRDesktopBookStore.h"
#include "contacts/stores/KRDesktopModule.h"
#include "contacts/stores/KRStoredBook.h"

namespace {

constexpr KRText kKind = "desktop";

KRBookSource sourceOf(const KRDesktopService::Book& book) {
  KRBookSource source = {
      KRString(KRDesktopModule::bookID(book.ID)), KRString(book.name), KRString(kKind), KRString(book.place), {}};
  source.open = [ID = source.ID, name = source.name, place = source.place]() -> KRResult<KRRef<KRAddressBook>> {
    KRResult<std::unique_ptr<KRDesktopBook>> opened = KRDesktopModule::open(ID);
    if (!opened) {
      KRError error = opened.error();
      error.sentence.append(" (desktop address book \"").append(name.view()).append("\")");
      return error;
    }
    auto store = std::make_unique<KRDesktopBookStore>(ID, name, place, *std::move(opened));
    return KRRef<KRAddressBook>(krMake<KRStoredBook>(std::move(store)));
  };
  return source;
}

KRBookSource failedSource(KRError error) {
  KRBookSource source = {"desktop"_kr, "Desktop"_kr, KRString(kKind), {}, {}};
  source.open = [error = std::move(error)]() -> KRResult<KRRef<KRAddressBook>> { return error; };
  return source;
}

}  // namespace

KRDesktopBooks::Support KRDesktopBooks::support() {
  if (!KRDesktopModule::isBuilt()) return Support::NotBuilt;
  return KRDesktopModule::path().isNothing() ? Support::NotInstalled : Support::Ready;
}

KRResult<void> KRDesktopBooks::setTimeLimit(std::chrono::milliseconds limit) {
  const KRResult<KRDesktopService*> service = KRDesktopModule::service();
  if (!service) return service.error();
  (*service)->setTimeLimit(limit);
  return {};
}

std::vector<KRBookSource> KRDesktopBooks::sources() {
  if (!KRDesktopModule::hasSessionBus() || support() != Support::Ready) return {};
  std::vector<KRBookSource> sources;
  const KRResult<KRDesktopService*> service = KRDesktopModule::service();
  if (!service) {
    sources.push_back(failedSource(service.error()));
    return sources;
  }
  std::vector<KRDesktopService::Book> books;
  if (KRDesktopFailure failure = (*service)->books(books)) {
    if (failure->code != KRErrorCode::NotFound) sources.push_back(failedSource(*std::move(failure)));
    return sources;
  }
  for (const KRDesktopService::Book& book : books) sources.push_back(sourceOf(book));
  return sources;
}
