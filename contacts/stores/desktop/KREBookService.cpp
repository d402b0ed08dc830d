#include "contacts/stores/desktop/KREBookService.h"

#include <utility>

#include "contacts/stores/desktop/KREBookAddressBook.h"
#include "contacts/stores/desktop/KREBookFailure.h"

namespace {

std::string textOf(const gchar* text) {
  return text == nullptr ? std::string() : std::string(text);
}

/// The name of the account or the place that the source belongs to.
std::string placeOf(ESourceRegistry* registry, ESource* source) {
  const gchar* parent = e_source_get_parent(source);
  if (parent != nullptr) {
    const KRGObject<ESource> owner(e_source_registry_ref_source(registry, parent));
    if (owner) return textOf(e_source_get_display_name(owner.get()));
  }
  auto* backend = static_cast<ESourceBackend*>(e_source_get_extension(source, E_SOURCE_EXTENSION_ADDRESS_BOOK));
  return textOf(e_source_backend_get_backend_name(backend));
}

}  // namespace

std::shared_ptr<KREBookSession> KREBookService::session() {
  const std::lock_guard guard(lock_);
  if (!session_ || session_->isOver()) session_ = std::make_shared<KREBookSession>();
  return session_;
}

KRDesktopFailure KREBookService::books(std::vector<Book>& books) {
  const auto session = this->session();
  const auto found = std::make_shared<std::vector<Book>>();
  KRDesktopFailure failure = session->thread.run(timeLimit(), [inside = session->inside, found](GCancellable* stop) {
    // A registry hears of changes some time later; a new one knows of all that were made before.
    inside->registry.reset();
    if (KRDesktopFailure failed = inside->connect(stop)) return failed;
    GList* sources = e_source_registry_list_enabled(inside->registry.get(), E_SOURCE_EXTENSION_ADDRESS_BOOK);
    for (const GList* each = sources; each != nullptr; each = each->next) {
      auto* source = static_cast<ESource*>(each->data);
      found->push_back({textOf(e_source_get_uid(source)), textOf(e_source_get_display_name(source)),
                        placeOf(inside->registry.get(), source)});
    }
    g_list_free_full(sources, g_object_unref);
    return KRDesktopFailure();
  });
  if (!failure) books = std::move(*found);
  return failure;
}

KRDesktopFailure KREBookService::open(const std::string& ID, std::unique_ptr<KRDesktopBook>& book) {
  const auto session = this->session();
  const auto client = std::make_shared<KREBookAddressBook::Client>();
  KRDesktopFailure failure =
      session->thread.run(timeLimit(), [inside = session->inside, client, ID](GCancellable* stop) {
        if (KRDesktopFailure failed = inside->connect(stop)) return failed;
        const KRGObject<ESource> source = inside->source(ID);
        if (!source) return KRDesktopFailure({KRErrorCode::NotFound, "the desktop has no such address book"});
        return client->connect(source.get(), stop);
      });
  if (!failure) book = std::make_unique<KREBookAddressBook>(*this, session, client);
  return failure;
}

extern "C" __attribute__((visibility("default"))) KRDesktopService* krDesktopService(uint32_t version) {
  if (version != kKRDesktopServiceVersion) return nullptr;
  static auto* const only = new KREBookService;
  return only;
}
