#pragma once

#include <memory>
#include <string>
#include <vector>

#include "contacts/stores/KRDesktopService.h"
#include "contacts/stores/desktop/KREBookSession.h"

class KREBookService;

/// One address book of evolution-data-server. Outlives its session as something whose calls fail.
class KREBookAddressBook : public KRDesktopBook {
 public:
  /// The connection to the book. It belongs to the session's thread, but for what is set while it is opened.
  struct Client {
    KRGObject<EBookClient> client;
    bool isReadOnly = false;

    KRDesktopFailure connect(ESource* source, GCancellable* cancellable);
  };

  KREBookAddressBook(const KREBookService& service, std::shared_ptr<KREBookSession> session,
                     std::shared_ptr<Client> client);
  ~KREBookAddressBook() override;

  bool isReadOnly() const override { return client_->isReadOnly; }
  KRDesktopFailure count(size_t& count) override;
  KRDesktopFailure readAll(std::vector<std::string>& cards) override;
  KRDesktopFailure read(const std::vector<std::string>& IDs, std::vector<std::string>& cards) override;
  KRDesktopFailure add(const std::vector<std::string>& cards, std::vector<std::string>& IDs) override;
  KRDesktopFailure change(const std::vector<std::string>& cards) override;
  KRDesktopFailure remove(const std::vector<std::string>& IDs) override;

 private:
  using Texts = std::vector<std::string>;
  using ClientJob = KRDesktopFailure(EBookClient* client, GCancellable* cancellable, Texts& out);

  /// Does the job on the session's thread, for that many contacts, and hands its texts out when it succeeds.
  KRDesktopFailure run(size_t contacts, std::function<ClientJob> job, Texts& out);
  KRDesktopFailure query(const std::string& query, size_t contacts, Texts& cards);

  const KREBookService& service_;
  const std::shared_ptr<KREBookSession> session_;
  std::shared_ptr<Client> client_;
};
