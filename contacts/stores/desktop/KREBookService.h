#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "contacts/stores/KRDesktopService.h"
#include "contacts/stores/desktop/KREBookSession.h"

/// The desktop's address books through evolution-data-server, as the user's source registry lists them.
class KREBookService : public KRDesktopService {
 public:
  KRDesktopFailure books(std::vector<Book>& books) override;
  KRDesktopFailure open(const std::string& ID, std::unique_ptr<KRDesktopBook>& book) override;
  void setTimeLimit(std::chrono::milliseconds limit) override { limit_.store(limit); }

  std::chrono::milliseconds timeLimit() const noexcept { return limit_.load(); }

 private:
  /// The session in use, or a new one where that has ended or hangs.
  std::shared_ptr<KREBookSession> session();

  std::atomic<std::chrono::milliseconds> limit_{kTimeLimit};
  std::mutex lock_;
  std::shared_ptr<KREBookSession> session_;
};
