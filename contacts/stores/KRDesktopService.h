#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/KRResult.h"

/// What went wrong, or nothing. Not a `KRResult`: a plug-in links nothing of this library, so only types that need no
/// code of it cross the edge.
using KRDesktopFailure = std::optional<KRError>;

/// One address book of the desktop's own service, as a plug-in reaches it. Texts are UTF-8; contacts and contact lists
/// are vCards as the service keeps them, named by the identifier that the service knows them by.
///
/// Every call ends within the service's time limit (`KRDesktopService::setTimeLimit`), reading and writing many
/// contacts within a limit that grows with their number: `Busy` when the service has not answered by then. After a
/// failure the results are as they were. Calls come one at a time, from any thread.
class KRDesktopBook {
 public:
  KRDesktopBook() = default;
  KRDesktopBook(const KRDesktopBook&) = delete;
  KRDesktopBook& operator=(const KRDesktopBook&) = delete;
  virtual ~KRDesktopBook() = default;

  /// Whether the service lets nobody change the book.
  virtual bool isReadOnly() const = 0;
  /// How many contacts there are, contact lists not counted.
  virtual KRDesktopFailure count(size_t& count) = 0;
  /// All contacts and contact lists.
  virtual KRDesktopFailure readAll(std::vector<std::string>& cards) = 0;
  /// Those of these identifiers that there are, in no order.
  virtual KRDesktopFailure read(const std::vector<std::string>& IDs, std::vector<std::string>& cards) = 0;
  /// Adds all or none; `IDs` are the identifiers that the service gave them, in the same order.
  virtual KRDesktopFailure add(const std::vector<std::string>& cards, std::vector<std::string>& IDs) = 0;
  /// Puts the cards in the place of those of the same UID, all or none.
  virtual KRDesktopFailure change(const std::vector<std::string>& cards) = 0;
  /// Removes all or none; one that is not there is a failure.
  virtual KRDesktopFailure remove(const std::vector<std::string>& IDs) = 0;

  /// How much a caller best hands over at once: so many contacts, or the one with which the cards have so many bytes.
  /// One message of the service's bus holds 128 MB.
  static constexpr size_t kBatch = 400;
  static constexpr size_t kBatchBytes = size_t{8} << 20U;
};

/// The desktop's own address book service, as a plug-in reaches it. Safe from any thread.
class KRDesktopService {
 public:
  KRDesktopService() = default;
  KRDesktopService(const KRDesktopService&) = delete;
  KRDesktopService& operator=(const KRDesktopService&) = delete;
  virtual ~KRDesktopService() = default;

  struct Book {
    /// The service's identifier of the book.
    std::string ID;
    /// The name shown to the user.
    std::string name;
    /// Where the book is kept, in the user's words, such as the account's name.
    std::string place;
  };

  /// The address books of the user that are switched on. `NotFound` when this desktop has no such service at all.
  virtual KRDesktopFailure books(std::vector<Book>& books) = 0;
  /// Opens one of them. `NotFound` when there is no book of that identifier.
  virtual KRDesktopFailure open(const std::string& ID, std::unique_ptr<KRDesktopBook>& book) = 0;

  static constexpr std::chrono::milliseconds kTimeLimit = std::chrono::seconds(30);
  /// How long one call may take; `kTimeLimit` at first.
  virtual void setTimeLimit(std::chrono::milliseconds limit) = 0;
};

/// What a plug-in exports under the name `krDesktopService`: its only instance, which is never destroyed, or null when
/// it was built for another version of this interface.
using KRDesktopServiceFunction = KRDesktopService*(uint32_t version);
/// Grows with every change of the two classes.
inline constexpr uint32_t kKRDesktopServiceVersion = 1;
