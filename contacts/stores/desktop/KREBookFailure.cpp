#include "contacts/stores/desktop/KREBookFailure.h"

namespace {

struct Meaning {
  GQuark (*domain)();
  int code;
  KRErrorCode means;
};

constexpr Meaning kMeanings[] = {
    {e_client_error_quark, E_CLIENT_ERROR_BUSY, KRErrorCode::Busy},
    {e_client_error_quark, E_CLIENT_ERROR_SOURCE_NOT_LOADED, KRErrorCode::NotFound},
    {e_client_error_quark, E_CLIENT_ERROR_PERMISSION_DENIED, KRErrorCode::NotAllowed},
    {e_client_error_quark, E_CLIENT_ERROR_AUTHENTICATION_FAILED, KRErrorCode::NotAllowed},
    {e_client_error_quark, E_CLIENT_ERROR_AUTHENTICATION_REQUIRED, KRErrorCode::NotAllowed},
    {e_client_error_quark, E_CLIENT_ERROR_OUT_OF_SYNC, KRErrorCode::Changed},
    {e_book_client_error_quark, E_BOOK_CLIENT_ERROR_CONTACT_NOT_FOUND, KRErrorCode::Changed},
    {e_book_client_error_quark, E_BOOK_CLIENT_ERROR_CONTACT_ID_ALREADY_EXISTS, KRErrorCode::Changed},
    {e_book_client_error_quark, E_BOOK_CLIENT_ERROR_NO_SUCH_BOOK, KRErrorCode::NotFound},
    {e_book_client_error_quark, E_BOOK_CLIENT_ERROR_NO_SPACE, KRErrorCode::NoSpace},
    {g_io_error_quark, G_IO_ERROR_TIMED_OUT, KRErrorCode::Busy},
    {g_io_error_quark, G_IO_ERROR_NO_SPACE, KRErrorCode::NoSpace},
    {g_io_error_quark, G_IO_ERROR_PERMISSION_DENIED, KRErrorCode::NotAllowed},
    {g_dbus_error_quark, G_DBUS_ERROR_NO_REPLY, KRErrorCode::Busy},
    {g_dbus_error_quark, G_DBUS_ERROR_TIMEOUT, KRErrorCode::Busy},
    {g_dbus_error_quark, G_DBUS_ERROR_ACCESS_DENIED, KRErrorCode::NotAllowed},
};

}  // namespace

KRError krEBookSilence() {
  return {KRErrorCode::Busy, "the desktop's address book service does not answer"};
}

KRError krEBookFailure(GError* error, std::string_view doing) {
  const KRGError owned(error);
  if (!owned) return {KRErrorCode::Failed, "cannot " + std::string(doing)};
  if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) ||
      g_error_matches(error, E_CLIENT_ERROR, E_CLIENT_ERROR_CANCELLED)) {
    return krEBookSilence();
  }
  g_dbus_error_strip_remote_error(error);
  KRError failure{KRErrorCode::Failed, "cannot " + std::string(doing)};
  if (error->message != nullptr && *error->message != '\0') failure.sentence.append(": ").append(error->message);
  for (const Meaning& each : kMeanings) {
    if (g_error_matches(error, each.domain(), each.code)) failure.code = each.means;
  }
  return failure;
}
