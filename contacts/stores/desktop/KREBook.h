#pragma once

// The only place that includes libebook, and GLib with it.

#include <libebook/libebook.h>

#include <memory>

/// Gives up one reference.
struct KRGObjectRelease {
  void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
/// Owns one reference to an object.
template <class T>
using KRGObject = std::unique_ptr<T, KRGObjectRelease>;

struct KRGFree {
  void operator()(gpointer memory) const noexcept { g_free(memory); }
};
using KRGText = std::unique_ptr<gchar, KRGFree>;

struct KRGErrorFree {
  void operator()(GError* error) const noexcept { g_error_free(error); }
};
using KRGError = std::unique_ptr<GError, KRGErrorFree>;
