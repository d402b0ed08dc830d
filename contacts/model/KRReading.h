#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

#include "contacts/model/KRAddressField.h"
#include "contacts/model/KRObjectAddress.h"
#include "platform/KRObject.h"
#include "platform/KRText.h"

/// Keeps alive what the views of one reading look at. A person whose texts stand in its record needs nothing kept; one
/// that makes its values when asked puts them here. One hold a walk, emptied before each person, costs nothing.
///
/// Views are valid until the hold is emptied or dies, or the person is changed.
class KRHold {
 public:
  template <class T>
  T* keep(KRRef<T> object) {
    T* kept = object.get();
    if (kept != nullptr) objects_.push_back(std::move(object));
    return kept;
  }
  KRText keep(const KRString& text) {
    texts_.push_back(std::make_unique<KRString>(text));
    return texts_.back()->text();
  }
  void empty() {
    if (!objects_.empty()) objects_.clear();
    if (!texts_.empty()) texts_.clear();
  }

 private:
  std::vector<KRRef<const KRObject>> objects_;
  std::vector<std::unique_ptr<KRString>> texts_;
};

/// A person's name as views. `isPresent` is false when the person has no name object at all (also when it has a stored
/// value under the name that holds none); a part may be nothing or empty even when it is true.
struct KRNameView {
  bool isPresent = false;
  KRText first;
  KRText middle;
  KRText last;
};

/// A postal address as views; equal exactly when the `KRObjectAddress` of both would be.
struct KRAddressView {
  /// The code given with the address, or nothing. What follows from the country as written is not filled in here.
  KRText countryCode;
  std::array<KRText, kKRAddressFieldCount> fields;
  /// Fields beyond the standard ones, sorted by name; nothing when there are none.
  const std::vector<KRObjectAddress::Field>* further = nullptr;

  friend bool operator==(const KRAddressView& a, const KRAddressView& b);
};

/// One entry of a multiple value, as views. Which members are filled depends on the property.
struct KREntryView {
  /// The label's name, or nothing.
  KRText label;
  /// Phone number, e-mail address, text, user name of an account, or a date's text form; nothing for an entry without a
  /// value.
  KRText text;
  /// The name of an account's service, or nothing.
  KRText server;
  /// The address of an address entry, else null. Valid during the call that hands the entry out.
  const KRAddressView* address = nullptr;
};

/// A borrowed function that is called with one view after the other; a false answer ends the walk.
template <class View>
class KRVisitor {
 public:
  template <class Function>
  requires(!std::is_same_v<Function, KRVisitor>) KRVisitor(const Function& function)
  noexcept
      : function_(std::addressof(function)), call_([](const void* object, const View& view) -> bool {
          return (*static_cast<const Function*>(object))(view);
        }) {}

  bool operator()(const View& view) const { return call_(function_, view); }

 private:
  const void* function_;
  bool (*call_)(const void*, const View&);
};
using KREntryVisitor = KRVisitor<KREntryView>;
using KRTextVisitor = KRVisitor<KRText>;
