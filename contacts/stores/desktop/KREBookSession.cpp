#include "contacts/stores/desktop/KREBookSession.h"

#include "contacts/stores/desktop/KREBookFailure.h"

namespace {

constexpr const char* kService = "org.gnome.evolution.dataserver.Sources";
constexpr const char* kNoService = "this desktop has no address book service";

/// Whether the answer to one of the bus's questions for names has the service's. The number behind the name differs
/// from version to version.
bool isNamed(GDBusConnection* bus, const char* question, GCancellable* cancellable, GError** error) {
  GVariant* answer = g_dbus_connection_call_sync(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                 "org.freedesktop.DBus", question, nullptr, G_VARIANT_TYPE("(as)"),
                                                 G_DBUS_CALL_FLAGS_NONE, -1, cancellable, error);
  if (answer == nullptr) return false;
  GVariantIter* names = nullptr;
  const gchar* name = nullptr;
  bool isFound = false;
  g_variant_get(answer, "(as)", &names);
  while (g_variant_iter_next(names, "&s", &name)) isFound = isFound || g_str_has_prefix(name, kService);
  g_variant_iter_free(names);
  g_variant_unref(answer);
  return isFound;
}

using Keeper = std::weak_ptr<KREBookSession::Inside>;

void noteClosed(GDBusConnection* /*bus*/, gboolean /*isRemote*/, GError* /*error*/, gpointer keeper) {
  if (const auto inside = static_cast<Keeper*>(keeper)->lock()) inside->isClosed.store(true);
}

void dropKeeper(gpointer keeper, GClosure* /*closure*/) {
  delete static_cast<Keeper*>(keeper);
}

}  // namespace

KRDesktopFailure KREBookSession::Inside::connect(GCancellable* cancellable) {
  if (registry && g_dbus_connection_is_closed(bus.get()) == FALSE) return {};
  GError* error = nullptr;
  if (!bus) {
    bus.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, cancellable, &error));
    if (!bus) return krEBookFailure(error, "reach the session's message bus");
    // A program that this library is loaded into does not end because the desktop's session does.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    g_signal_connect_data(bus.get(), "closed", G_CALLBACK(noteClosed), new Keeper(shared_from_this()), dropKeeper,
                          static_cast<GConnectFlags>(0));
  }
  // The process has one connection for all, and keeps a closed one as long as anybody holds it.
  if (g_dbus_connection_is_closed(bus.get()) != FALSE) {
    isClosed.store(true);
    return KRError{KRErrorCode::Failed, "the session's message bus has gone"};
  }
  bool isThere = isNamed(bus.get(), "ListActivatableNames", cancellable, &error);
  if (!isThere && error == nullptr) isThere = isNamed(bus.get(), "ListNames", cancellable, &error);
  if (error != nullptr) return krEBookFailure(error, "ask the session's message bus");
  if (!isThere) return KRError{KRErrorCode::NotFound, kNoService};
  registry.reset(e_source_registry_new_sync(cancellable, &error));
  if (!registry) return krEBookFailure(error, "reach the desktop's address book service");
  return {};
}

KRGObject<ESource> KREBookSession::Inside::source(const std::string& ID) const {
  KRGObject<ESource> found(e_source_registry_ref_source(registry.get(), ID.c_str()));
  if (found && !e_source_has_extension(found.get(), E_SOURCE_EXTENSION_ADDRESS_BOOK)) found.reset();
  return found;
}

KREBookSession::~KREBookSession() {
  thread.post([objects = inside] {
    objects->registry.reset();
    objects->bus.reset();
  });
}

bool KREBookSession::isOver() const {
  return thread.isLost() || inside->isClosed.load();
}
