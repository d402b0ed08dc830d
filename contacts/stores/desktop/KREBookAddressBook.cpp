#include "contacts/stores/desktop/KREBookAddressBook.h"

#include <algorithm>
#include <utility>

#include "contacts/stores/desktop/KREBookFailure.h"
#include "contacts/stores/desktop/KREBookService.h"

namespace {

/// What each contact adds to the time limit.
constexpr std::chrono::milliseconds kEach{10};
/// The book is not asked to reach the server behind it first: it answers with what it keeps.
constexpr guint32 kNoWaiting = static_cast<guint32>(-1);
/// Beyond this many contacts the book is read in pieces: one message of the bus holds 128 MB.
constexpr size_t kMostAtOnce = 50'000;

/// The service's database takes no longer question than one for some hundreds of identifiers.
constexpr size_t kMostInQuery = 100;

constexpr const char* kEverything = "(contains \"x-evolution-any-field\" \"\")";
constexpr const char* kContacts = "(not (is \"x-evolution-list\" \"TRUE\"))";

struct ContactsFree {
  void operator()(GSList* contacts) const noexcept { g_slist_free_full(contacts, g_object_unref); }
};
using Contacts = std::unique_ptr<GSList, ContactsFree>;
struct TextsFree {
  void operator()(GSList* texts) const noexcept { g_slist_free_full(texts, g_free); }
};
using TextList = std::unique_ptr<GSList, TextsFree>;

/// Takes the texts over as they are: libebook looks into a card only when it is asked about it.
Contacts contactsOf(const std::vector<std::string>& cards) {
  GSList* contacts = nullptr;
  for (auto card = cards.rbegin(); card != cards.rend(); ++card)
    contacts = g_slist_prepend(contacts, e_contact_new_from_vcard(card->c_str()));
  return Contacts(contacts);
}

void takeCards(GSList* contacts, std::vector<std::string>& cards) {
  for (const GSList* each = contacts; each != nullptr; each = each->next) {
    const KRGText text(e_vcard_to_string(E_VCARD(each->data), EVC_FORMAT_VCARD_30));
    if (text) cards.emplace_back(text.get());
  }
}

void takeTexts(GSList* list, std::vector<std::string>& texts) {
  for (const GSList* each = list; each != nullptr; each = each->next)
    texts.emplace_back(static_cast<const gchar*>(each->data));
}

KRDesktopFailure readIDs(EBookClient* client, const char* query, GCancellable* stop, std::vector<std::string>& IDs) {
  GSList* found = nullptr;
  GError* error = nullptr;
  if (e_book_client_get_contacts_uids_sync(client, query, &found, stop, &error) == FALSE)
    return krEBookFailure(error, "count the contacts");
  const TextList owned(found);
  takeTexts(found, IDs);
  return {};
}

void appendQuoted(const std::string& text, std::string& query) {
  query += '"';
  for (const char letter : text) {
    if (letter == '"' || letter == '\\') query += '\\';
    query += letter;
  }
  query += '"';
}

using IDIterator = std::vector<std::string>::const_iterator;

std::string queryFor(IDIterator begin, IDIterator end) {
  std::string query = "(or";
  for (; begin != end; ++begin) {
    query += " (is \"id\" ";
    appendQuoted(*begin, query);
    query += ')';
  }
  return query + ')';
}

}  // namespace

KRDesktopFailure KREBookAddressBook::Client::connect(ESource* source, GCancellable* cancellable) {
  GError* error = nullptr;
  EClient* opened = e_book_client_connect_sync(source, kNoWaiting, cancellable, &error);
  if (opened == nullptr) return krEBookFailure(error, "open the address book");
  client.reset(E_BOOK_CLIENT(opened));
  isReadOnly = e_client_is_readonly(opened) != FALSE;
  return {};
}

KREBookAddressBook::KREBookAddressBook(const KREBookService& service, std::shared_ptr<KREBookSession> session,
                                       std::shared_ptr<Client> client)
    : service_(service), session_(std::move(session)), client_(std::move(client)) {}

KREBookAddressBook::~KREBookAddressBook() {
  session_->thread.post([client = std::move(client_)] { client->client.reset(); });
}

KRDesktopFailure KREBookAddressBook::run(size_t contacts, std::function<ClientJob> job, Texts& out) {
  if (session_->isOver()) return KRError{KRErrorCode::Busy, "the desktop's address book service has gone"};
  const auto texts = std::make_shared<Texts>();
  const auto limit = service_.timeLimit() + kEach * contacts;
  KRDesktopFailure failure =
      session_->thread.run(limit, [client = client_, job = std::move(job), texts](GCancellable* stop) {
        return job(client->client.get(), stop, *texts);
      });
  if (!failure) out = std::move(*texts);
  return failure;
}

KRDesktopFailure KREBookAddressBook::count(size_t& count) {
  Texts IDs;
  KRDesktopFailure failure = run(
      0, [](EBookClient* client, GCancellable* stop, Texts& out) { return readIDs(client, kContacts, stop, out); },
      IDs);
  if (!failure) count = IDs.size();
  return failure;
}

KRDesktopFailure KREBookAddressBook::query(const std::string& query, size_t contacts, Texts& cards) {
  const auto job = [query](EBookClient* client, GCancellable* stop, Texts& out) -> KRDesktopFailure {
    GSList* found = nullptr;
    GError* error = nullptr;
    if (e_book_client_get_contacts_sync(client, query.c_str(), &found, stop, &error) == FALSE)
      return krEBookFailure(error, "read the contacts");
    const Contacts owned(found);
    takeCards(found, out);
    return {};
  };
  return run(contacts, job, cards);
}

KRDesktopFailure KREBookAddressBook::readAll(Texts& cards) {
  Texts IDs;
  const auto all = [](EBookClient* client, GCancellable* stop, Texts& out) {
    return readIDs(client, kEverything, stop, out);
  };
  if (KRDesktopFailure failure = run(0, all, IDs)) return failure;
  return IDs.size() <= kMostAtOnce ? query(kEverything, IDs.size(), cards) : read(IDs, cards);
}

KRDesktopFailure KREBookAddressBook::read(const Texts& IDs, Texts& cards) {
  Texts all;
  for (size_t start = 0; start < IDs.size(); start += kMostInQuery) {
    const size_t count = std::min(kMostInQuery, IDs.size() - start);
    const auto begin = IDs.begin() + static_cast<std::ptrdiff_t>(start);
    Texts some;
    KRDesktopFailure failure = query(queryFor(begin, begin + static_cast<std::ptrdiff_t>(count)), count, some);
    if (failure) return failure;
    std::move(some.begin(), some.end(), std::back_inserter(all));
  }
  cards = std::move(all);
  return {};
}

KRDesktopFailure KREBookAddressBook::add(const Texts& cards, Texts& IDs) {
  if (cards.empty()) return {};
  const auto job = [cards](EBookClient* client, GCancellable* stop, Texts& out) -> KRDesktopFailure {
    const Contacts contacts = contactsOf(cards);
    GSList* added = nullptr;
    GError* error = nullptr;
    if (e_book_client_add_contacts_sync(client, contacts.get(), E_BOOK_OPERATION_FLAG_NONE, &added, stop, &error) ==
        FALSE)
      return krEBookFailure(error, "add contacts");
    const TextList owned(added);
    takeTexts(added, out);
    return {};
  };
  return run(cards.size(), job, IDs);
}

KRDesktopFailure KREBookAddressBook::change(const Texts& cards) {
  if (cards.empty()) return {};
  const auto job = [cards](EBookClient* client, GCancellable* stop, Texts& /*out*/) -> KRDesktopFailure {
    const Contacts contacts = contactsOf(cards);
    GError* error = nullptr;
    if (e_book_client_modify_contacts_sync(client, contacts.get(), E_BOOK_OPERATION_FLAG_NONE, stop, &error) == FALSE)
      return krEBookFailure(error, "change contacts");
    return {};
  };
  Texts nothing;
  return run(cards.size(), job, nothing);
}

KRDesktopFailure KREBookAddressBook::remove(const Texts& IDs) {
  if (IDs.empty()) return {};
  const auto job = [IDs](EBookClient* client, GCancellable* stop, Texts& /*out*/) -> KRDesktopFailure {
    GSList* list = nullptr;
    for (const std::string& ID : IDs) list = g_slist_prepend(list, g_strdup(ID.c_str()));
    const TextList owned(list);
    GError* error = nullptr;
    if (e_book_client_remove_contacts_sync(client, list, E_BOOK_OPERATION_FLAG_NONE, stop, &error) == FALSE)
      return krEBookFailure(error, "remove contacts");
    return {};
  };
  Texts nothing;
  return run(IDs.size(), job, nothing);
}
