#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "contacts/stores/desktop/KREBook.h"
#include "contacts/stores/desktop/KREBookThread.h"

/// A connection to the session's bus and the source registry behind it. All but `thread` belongs to that thread.
struct KREBookSession {
  KREBookThread thread;

  /// What lives on the thread; jobs share it, so that it outlives the session where one still runs.
  struct Inside : std::enable_shared_from_this<Inside> {
    KRGObject<GDBusConnection> bus;
    KRGObject<ESourceRegistry> registry;
    /// The bus has gone. Any thread.
    std::atomic<bool> isClosed{false};

    /// Connects, unless that was done before. `NotFound` when the session has no such service.
    KRDesktopFailure connect(GCancellable* cancellable);
    /// The source of that identifier if it is an address book, or null.
    KRGObject<ESource> source(const std::string& ID) const;
  };
  const std::shared_ptr<Inside> inside = std::make_shared<Inside>();

  KREBookSession() = default;
  KREBookSession(const KREBookSession&) = delete;
  KREBookSession& operator=(const KREBookSession&) = delete;
  /// Gives everything up where it belongs.
  ~KREBookSession();

  /// Whether it is of no use any more: the thread hangs, or the bus has gone.
  bool isOver() const;
};
